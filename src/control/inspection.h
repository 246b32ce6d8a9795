// Read access to a control's private fields and session, and direct calls of its sorts:
// for the tests, the fuzz players, the benchmarks and the command line's reports, which
// link the internal libraries. Hosts never see these.
#pragma once

#include "control/control_private.h"

namespace velmora {

// What a control keeps to itself, read only, and the slots of its session.
class CtrInspector {
 public:
  explicit CtrInspector(const Ctr_VelmoraNew& c) : d_(Ctr_VelmoraNew::Private::of(c)) {}
  const Text& W_TypeAct() const { return d_.W_TypeAct; }
  const Text& W_Code() const { return d_.W_Code; }
  const Text& W_DateDeb() const { return d_.W_DateDeb; }
  const Text& W_DateFin() const { return d_.W_DateFin; }
  const Text& W_HeureDe() const { return d_.W_HeureDe; }
  const Text& W_HeureA() const { return d_.W_HeureA; }
  const Text& W_Jour() const { return d_.W_Jour; }
  const RecordRef& W_ListeSem() const { return d_.W_ListeSem; }
  const RecordRef& W_ListeFlot() const { return d_.W_ListeFlot; }
  Boolean W_CleLue() const { return d_.W_CleLue; }
  Boolean W_SemType() const { return d_.W_SemType; }
  const Text& W_DateCle() const { return d_.W_DateCle; }
  Boolean W_ClicActif() const { return d_.W_ClicActif; }
  Boolean W_ChangeActif() const { return d_.W_ChangeActif; }
  Boolean W_Flot() const { return d_.W_Flot; }

  // The control's session, and its slots (R_Obs, the working tables, the handles).
  Session& session() const { return d_.session; }
  SessionVariables& Variable() const { return d_.session.state().Variable; }
  ErrObject& Err() const { return d_.session.state().Err; }

 private:
  const Ctr_VelmoraNew::Private& d_;
};

// Calls the control's sorts directly, on lists no gesture could build quickly: for the
// tests that prove them against the documented sort and for the benchmark.
class CtrDriver {
 public:
  explicit CtrDriver(Ctr_VelmoraNew& c) : c_(c) {}
  void Trie_Possible() { Ctr_VelmoraNew::Private::trie(c_, false); }
  void Trie_Selectionne() { Ctr_VelmoraNew::Private::trie(c_, true); }

 private:
  Ctr_VelmoraNew& c_;
};

}  // namespace velmora

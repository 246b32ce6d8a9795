// The control's private fields and its session, out of the installed header so that a
// change of them leaves the library's binary interface as it is. The control's procedures
// reach them through d_.
#pragma once

#include <memory>

#include <velmora/control/ctr_velmora_new.h>
#include "control/session_state.h"

namespace velmora {

class Ctr_VelmoraNew::Private {
 public:
  explicit Private(Session& s) : session(s) {}

  // The private fields of any control, for the inspector and the driver below.
  static Private& of(const Ctr_VelmoraNew& control) { return *control.d_; }

  Session& session;

  Text W_TypeAct;
  Text W_Code;
  Text W_DateDeb;
  Text W_DateFin;
  Text W_HeureDe;
  Text W_HeureA;
  Text W_Jour;
  RecordRef W_ListeSem;
  RecordRef W_ListeFlot;
  Boolean W_CleLue = kFalse;
  Boolean W_SemType = kFalse;
  Text W_DateCle;
  Boolean W_ClicActif = kFalse;
  Boolean W_ChangeActif = kFalse;
  Boolean W_Flot = kFalse;

  std::shared_ptr<toolkit::Services> services_;
  std::shared_ptr<toolkit::FailureHandler> failureHandler_;

  // The two sorts, called with the control's session in use; for CtrDriver.
  static void trie(Ctr_VelmoraNew& control, bool selection) {
    const SessionInUse inUse(control.d_->session);
    if (selection) {
      control.Trie_Selectionne();
    } else {
      control.Trie_Possible();
    }
  }
};

}  // namespace velmora

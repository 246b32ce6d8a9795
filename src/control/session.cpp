// The session: the slots that controls on it share, the process default, and the
// session in use on each thread. Ouvre_Fichiers and Ferme_Fichiers open and release the
// files and the connection of one session.
#include <array>

#include "control/error_regime.h"
#include "control/session_state.h"
#include "store/engine/account_layout.h"

namespace velmora {

namespace {

// The session whose control runs on this thread; none outside the control's procedures.
thread_local Session::State* tInUse = nullptr;

// The handle of each of the thirteen files, in the order of the store's one list of them
// (kAccountFiles), which is the order Ouvre_Fichiers opens them in.
constexpr std::array<FileRef SessionVariables::*, kAccountFiles.size()> kHandles{
    &SessionVariables::F_BesoinsAide,   &SessionVariables::F_Soins,
    &SessionVariables::F_TypeSoins,     &SessionVariables::F_RegroupSoins,
    &SessionVariables::F_Tables,        &SessionVariables::F_SemType,
    &SessionVariables::F_DetailsInterv, &SessionVariables::F_Param,
    &SessionVariables::F_Tache,         &SessionVariables::F_GroupeTache,
    &SessionVariables::F_TypeTache,     &SessionVariables::F_AideDetail,
    &SessionVariables::F_SemTypeFlot};

// The cursors that Ferme_Fichiers releases before the handles, then the working tables
// that go with them.
constexpr std::array kCursors{
    &SessionVariables::R_Soins,         &SessionVariables::R_TypeSoins,
    &SessionVariables::R_RegroupSoins,  &SessionVariables::R_SemType,
    &SessionVariables::R_DetailsInterv, &SessionVariables::R_Param,
    &SessionVariables::R_GroupeTache,   &SessionVariables::R_Tache,
    &SessionVariables::R_AideDetail,    &SessionVariables::R_SemTypeFlot};
constexpr std::array kReleasedTables{&SessionVariables::R_TablePossible,
                                     &SessionVariables::R_TableSelection,
                                     &SessionVariables::R_ListeAide, &SessionVariables::R_Obs};

}  // namespace

Session::Session() : d_(std::make_unique<State>()) {}

Session::~Session() = default;

Session& Session::processDefault() {
  static Session session;
  return session;
}

Session::State& sessionInUse() {
  return tInUse != nullptr ? *tInUse : Session::processDefault().state();
}

SessionInUse::SessionInUse(Session& session) : previous_(tInUse) {
  tInUse = &session.state();
}

SessionInUse::~SessionInUse() {
  tInUse = previous_;
}

NorvikDates& SessionVariables::TheDates() {
  if (Dates.empty()) Dates = Ref<NorvikDates>::make();
  return *Dates;
}

void SessionProcedures::Ouvre_Fichiers() {
  for (std::size_t i = 0; i < kHandles.size(); ++i) {
    resumeNext(err_, [&] { v_.*kHandles[i] = v_.TheDatabase->OpenFile(kAccountFiles[i]); });
  }
}

void SessionProcedures::Ferme_Fichiers() {
  // Every record and file goes before the connection it came from.
  for (RecordRef SessionVariables::*cursor : kCursors) (v_.*cursor).reset();
  for (FileRef SessionVariables::*handle : kHandles) (v_.*handle).reset();
  for (RecordRef SessionVariables::*table : kReleasedTables) (v_.*table).reset();
  v_.TheDatabase.reset();
}

}  // namespace velmora

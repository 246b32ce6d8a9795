// The session: the slots that controls on it share, the process default, and the
// session in use on each thread. Ouvre_Fichiers and Ferme_Fichiers open and release the
// files and the connection of one session.
#include <array>

#include "control/error_regime.h"
#include "control/session_state.h"

namespace velmora {

namespace {

// The session whose control runs on this thread; none outside the control's procedures.
thread_local Session::State* tInUse = nullptr;

// Each file with its handle, in the order Ouvre_Fichiers opens them. The store's list of
// the thirteen files (kAccountFiles, which makes an account) names the same files, but
// it cannot name the handles of a session, which live here; the names stay beside their
// handles so that neither list has to follow the other's order.
struct FileSlot {
  const char16_t* name;
  FileRef SessionVariables::*handle;
};
constexpr std::array<FileSlot, 13> kOpeningOrder{{
    {u"BESOINSAIDE", &SessionVariables::F_BesoinsAide},
    {u"SSIADSOINS", &SessionVariables::F_Soins},
    {u"SSIADTYPESOINS", &SessionVariables::F_TypeSoins},
    {u"SSIADREGROUPSOINS", &SessionVariables::F_RegroupSoins},
    {u"TABLES", &SessionVariables::F_Tables},
    {u"TPSSEMAINETYPE", &SessionVariables::F_SemType},
    {u"TPSDETAILSINTERV", &SessionVariables::F_DetailsInterv},
    {u"TPSPARAM", &SessionVariables::F_Param},
    {u"TACHE", &SessionVariables::F_Tache},
    {u"GROUPETACHE", &SessionVariables::F_GroupeTache},
    {u"TYPETACHE", &SessionVariables::F_TypeTache},
    {u"AIDEDETAILTACHE", &SessionVariables::F_AideDetail},
    {u"TPSSEMAINETYPEFLOT", &SessionVariables::F_SemTypeFlot},
}};

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
  for (const FileSlot& file : kOpeningOrder) {
    resumeNext(err_, [&] { v_.*file.handle = v_.TheDatabase->OpenFile(file.name); });
  }
}

void SessionProcedures::Ferme_Fichiers() {
  // Every record and file goes before the connection it came from.
  for (RecordRef SessionVariables::*cursor : kCursors) (v_.*cursor).reset();
  for (const FileSlot& file : kOpeningOrder) (v_.*file.handle).reset();
  for (RecordRef SessionVariables::*table : kReleasedTables) (v_.*table).reset();
  v_.TheDatabase.reset();
}

}  // namespace velmora

// What a session holds, as the control's code sees it: the error object, the slots (the
// Variable face: connection, client, the thirteen handles, their cursors, the working
// tables, the observations, the dates) and the two procedures over them (the Procedure
// face: Ouvre_Fichiers, Ferme_Fichiers). The control's procedures reach the session of
// the control that runs them through Variable(), Procedure() and Err().
#pragma once

#include <velmora/control/session.h>
#include <velmora/store/database.h>
#include <velmora/store/dates.h>
#include <velmora/store/record.h>

namespace velmora {

// The platform's error object: the number of the last failure that a statement under
// continue on error met, until code clears it.
struct ErrObject {
  long Number = 0;
  Text Description;
  void Clear() {
    Number = 0;
    Description.clear();
  }
};

// The slots of a session, named as the control's procedures name them.
struct SessionVariables {
  ClientRef TheClient;
  DatabaseRef TheDatabase;

  FileRef F_BesoinsAide;
  FileRef F_RegroupSoins;
  FileRef F_TypeSoins;
  FileRef F_Soins;
  FileRef F_Tables;
  FileRef F_SemType;
  FileRef F_DetailsInterv;
  FileRef F_Param;
  FileRef F_TypeTache;
  FileRef F_GroupeTache;
  FileRef F_Tache;
  FileRef F_AideDetail;
  FileRef F_SemTypeFlot;

  RecordRef R_RegroupSoins;
  RecordRef R_TypeSoins;
  RecordRef R_Soins;
  RecordRef R_SemType;
  RecordRef R_DetailsInterv;
  RecordRef R_Param;
  RecordRef R_GroupeTache;
  RecordRef R_Tache;
  RecordRef R_AideDetail;
  RecordRef R_SemTypeFlot;

  int N_LigneObs = 0;  // 32-bit, as every row counter
  RecordRef R_Obs;
  RecordRef R_TablePossible;
  RecordRef R_TableSelection;
  RecordRef R_TableDurees;
  RecordRef R_ListeAide;

  // Made at first use and kept as long as the session.
  Ref<NorvikDates> Dates;
  NorvikDates& TheDates();
};

// The two procedures of the session, over its slots and its error object.
class SessionProcedures {
 public:
  SessionProcedures(SessionVariables& variables, ErrObject& err) : v_(variables), err_(err) {}
  // Opens the thirteen files through TheDatabase in the documented order, under continue
  // on error: a name that fails to open leaves its handle as it was and its number in Err.
  void Ouvre_Fichiers();
  // Releases the cursors, the handles, the working tables and then the connection.
  void Ferme_Fichiers();

 private:
  SessionVariables& v_;
  ErrObject& err_;
};

class Session::State {
 public:
  // Empties every slot and the error object, as a new session has them; for tools that
  // start afresh on a session they keep.
  void clear() {
    Variable = SessionVariables{};
    Err.Clear();
  }

  ErrObject Err;
  SessionVariables Variable;
  SessionProcedures Procedure{Variable, Err};
};

// The session in use on this thread: the one of the control whose procedure runs, or the
// process default when none does.
Session::State& sessionInUse();
inline SessionVariables& Variable() {
  return sessionInUse().Variable;
}
inline SessionProcedures& Procedure() {
  return sessionInUse().Procedure;
}
inline ErrObject& Err() {
  return sessionInUse().Err;
}

// Puts a session in use on this thread for its lifetime, and the one before back after.
// Every entry into the control (a public procedure, an event, a property) makes one, so
// that a procedure and everything it calls, the observations dialog included, work on
// the session of its control.
class SessionInUse {
 public:
  explicit SessionInUse(Session& session);
  ~SessionInUse();
  SessionInUse(const SessionInUse&) = delete;
  SessionInUse& operator=(const SessionInUse&) = delete;

 private:
  Session::State* previous_;
};

}  // namespace velmora

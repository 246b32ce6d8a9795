// The module-level slots: one copy for the whole component, shared by every instance
// of the control in the process. The connection, the open files, the last record read
// from each file (its cursor) and the working tables live here.
#pragma once

#include <cstdint>

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

inline ErrObject Err;

namespace Variable {

inline ClientRef TheClient;
inline DatabaseRef TheDatabase;

inline FileRef F_BesoinsAide;
inline FileRef F_RegroupSoins;
inline FileRef F_TypeSoins;
inline FileRef F_Soins;
inline FileRef F_Tables;
inline FileRef F_SemType;
inline FileRef F_DetailsInterv;
inline FileRef F_Param;
inline FileRef F_TypeTache;
inline FileRef F_GroupeTache;
inline FileRef F_Tache;
inline FileRef F_AideDetail;
inline FileRef F_SemTypeFlot;

inline RecordRef R_RegroupSoins;
inline RecordRef R_TypeSoins;
inline RecordRef R_Soins;
inline RecordRef R_SemType;
inline RecordRef R_DetailsInterv;
inline RecordRef R_Param;
inline RecordRef R_GroupeTache;
inline RecordRef R_Tache;
inline RecordRef R_AideDetail;
inline RecordRef R_SemTypeFlot;

inline std::int16_t N_LigneObs = 0;
inline RecordRef R_Obs;
inline RecordRef R_TablePossible;
inline RecordRef R_TableSelection;
inline RecordRef R_TableDurees;
inline RecordRef R_ListeAide;

// Created at first use and never released.
inline Ref<NorvikDates> Dates;
NorvikDates& TheDates();

// Empties every slot and the error object; for tests and tools that start afresh.
void resetAll();

}  // namespace Variable

namespace Procedure {
// Opens the thirteen files through TheDatabase, under continue on error.
void Ouvre_Fichiers();
// Releases the cursors, the handles, the working tables and then the connection.
void Ferme_Fichiers();
}  // namespace Procedure

}  // namespace velmora

#include "control/module_slots.h"

#include "control/error_regime.h"

namespace velmora {

namespace Variable {

NorvikDates& TheDates() {
  if (Dates.empty()) Dates = Ref<NorvikDates>::make();
  return *Dates;
}

void resetAll() {
  TheClient.reset();
  TheDatabase.reset();
  for (FileRef* f : {&F_BesoinsAide, &F_RegroupSoins, &F_TypeSoins, &F_Soins, &F_Tables, &F_SemType,
                     &F_DetailsInterv, &F_Param, &F_TypeTache, &F_GroupeTache, &F_Tache,
                     &F_AideDetail, &F_SemTypeFlot}) {
    f->reset();
  }
  for (RecordRef* r : {&R_RegroupSoins, &R_TypeSoins, &R_Soins, &R_SemType, &R_DetailsInterv,
                       &R_Param, &R_GroupeTache, &R_Tache, &R_AideDetail, &R_SemTypeFlot, &R_Obs,
                       &R_TablePossible, &R_TableSelection, &R_TableDurees, &R_ListeAide}) {
    r->reset();
  }
  N_LigneObs = 0;
  Dates.reset();
  Err.Clear();
}

}  // namespace Variable

namespace Procedure {

using namespace Variable;

void Ouvre_Fichiers() {
  // In the opening order; a name that fails to open leaves its handle as it was.
  resumeNext([] { F_BesoinsAide = TheDatabase->OpenFile(u"BESOINSAIDE"); });
  resumeNext([] { F_Soins = TheDatabase->OpenFile(u"SSIADSOINS"); });
  resumeNext([] { F_TypeSoins = TheDatabase->OpenFile(u"SSIADTYPESOINS"); });
  resumeNext([] { F_RegroupSoins = TheDatabase->OpenFile(u"SSIADREGROUPSOINS"); });
  resumeNext([] { F_Tables = TheDatabase->OpenFile(u"TABLES"); });
  resumeNext([] { F_SemType = TheDatabase->OpenFile(u"TPSSEMAINETYPE"); });
  resumeNext([] { F_DetailsInterv = TheDatabase->OpenFile(u"TPSDETAILSINTERV"); });
  resumeNext([] { F_Param = TheDatabase->OpenFile(u"TPSPARAM"); });
  resumeNext([] { F_Tache = TheDatabase->OpenFile(u"TACHE"); });
  resumeNext([] { F_GroupeTache = TheDatabase->OpenFile(u"GROUPETACHE"); });
  resumeNext([] { F_TypeTache = TheDatabase->OpenFile(u"TYPETACHE"); });
  resumeNext([] { F_AideDetail = TheDatabase->OpenFile(u"AIDEDETAILTACHE"); });
  resumeNext([] { F_SemTypeFlot = TheDatabase->OpenFile(u"TPSSEMAINETYPEFLOT"); });
}

void Ferme_Fichiers() {
  // Every record and file goes before the connection it came from.
  for (RecordRef* r : {&R_Soins, &R_TypeSoins, &R_RegroupSoins, &R_SemType, &R_DetailsInterv,
                       &R_Param, &R_GroupeTache, &R_Tache, &R_AideDetail, &R_SemTypeFlot}) {
    r->reset();
  }
  for (FileRef* f : {&F_BesoinsAide, &F_RegroupSoins, &F_TypeSoins, &F_Soins, &F_Tables, &F_SemType,
                     &F_DetailsInterv, &F_Param, &F_TypeTache, &F_GroupeTache, &F_Tache,
                     &F_AideDetail, &F_SemTypeFlot}) {
    f->reset();
  }
  for (RecordRef* r : {&R_TablePossible, &R_TableSelection, &R_ListeAide, &R_Obs}) r->reset();
  TheDatabase.reset();
}

}  // namespace Procedure

}  // namespace velmora

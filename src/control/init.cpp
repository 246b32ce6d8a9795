// Init: opens the files, resets the control, decodes what Code is (a client with the
// criteria apart, an intervention detail, a weekly template, fixed or floating), and
// starts the fill that suits it.
#include <cmath>
#include <optional>

#include <velmora/control/ctr_velmora_new.h>
#include "control/error_regime.h"
#include "control/read_snapshot.h"
#include "search/key_layouts.h"

namespace velmora {

using namespace Variable;

namespace {

// The platform's implicit conversion of a text to a number: type mismatch otherwise.
double numberOf(const Text& v) {
  const auto n = parseNumber(v);
  if (!n)
    throw Failure(errors::kTypeMismatch,
                  "type incompatible : « " + toUtf8(v) + " » n'est pas un nombre");
  return *n;
}

// The text of a number as the platform writes it back into a String ("4", "3.5").
Text textOfNumber(double n) {
  if (n == std::floor(n) && std::fabs(n) < 1e15) return numberText(static_cast<long long>(n));
  return Currency::fromDouble(n).toText();
}

// The captions of the three columns and the switch, by vocabulary.
struct Captions {
  const char16_t* first;
  const char16_t* second;
  const char16_t* third;
  const char16_t* showAll;
};
constexpr Captions kTaskCaptions{u"Type", u"Groupe", u"Tâche", u"Afficher toutes les tâches"};
constexpr Captions kCareCaptions{u"Regroupement", u"Type", u"Soin", u"Afficher tous les soins"};

// What a store that cannot be read leaves: no proposal, no selection, no total.
void emptyLists(Ctr_VelmoraNew& c) {
  Variable::R_Obs = newRecord();
  for (toolkit::ListBox* list :
       {&c.Lst_Selectionne, &c.Lst_Possible, &c.Lst_CodeSelect, &c.Lst_CodePos}) {
    list->Clear();
  }
  c.Etq_Imperativite.setVisible(false);
  c.W_Total = Currency::whole(0);
  c.Txt_Duree.setText(u"");
}

}  // namespace

void Ctr_VelmoraNew::Init(Text& TypeAct, Text& Code, Text& DateDeb, Text& DateFin, Text& HeureDe,
                          Text& HeureA, Text& Jour) {
  // One snapshot of the store for the whole of Init. A store that cannot be read (locked
  // past the wait, damaged) fails Init at once; the lists of an earlier Init are emptied
  // first, so that they are never taken for the proposal of this intervention.
  std::optional<ProcedureSnapshot> snapshot;
  try {
    snapshot.emplace();
  } catch (const Failure&) {
    emptyLists(*this);
    throw;
  }

  // 1. Files. From here on, continue on error.
  Procedure::Ouvre_Fichiers();

  // 2.
  W_ChangeActif = kTrue;

  // 3. Reset the switch with its click disarmed: the design value is ticked.
  W_ClicActif = kFalse;
  resumeNext([&] { Cac_TouteTache.setEnabled(true); });
  resumeNext([&] { Cac_TouteTache.setValue(0); });
  W_ClicActif = kTrue;

  // 4. Flags. A bare floating code loses its flag, wherever it stood.
  W_SemType = toBoolean(instr(Code, u"SEMTYPE") > 0);
  W_Flot = toBoolean(instr(Code, u"FLOT") > 0);
  if (W_SemType == kFalse && W_Flot == kTrue) {
    Code = left(Code, static_cast<std::ptrdiff_t>(Code.size()) - 4);
  }

  // 5. Parameter record; an absent one leaves the cursor as it was.
  resumeNext([] { R_Param = F_Param->ReadRecord(u"1"); });

  // 6. Reset.
  R_Obs = newRecord();
  resumeNext([&] { Lst_Selectionne.Clear(); });
  resumeNext([&] { Etq_Imperativite.setVisible(false); });
  resumeNext([&] { Lst_Possible.Clear(); });
  resumeNext([&] { Lst_CodeSelect.Clear(); });
  resumeNext([&] { Lst_CodePos.Clear(); });
  W_Total = Currency::whole(0);
  resumeNext([&] { Txt_Duree.setText(u""); });
  W_AfficheTache = kFalse;
  W_DoubleClic = kFalse;
  W_TypeAct = TypeAct;

  // 7. A bare client code: the criteria come apart.
  if (Code.size() == 5) {
    W_Code = Code;
    W_DateDeb = DateDeb;
    W_DateFin = DateFin;
    W_HeureDe = HeureDe;
    W_HeureA = HeureA;
    W_Jour = Jour;
    W_CleLue = kFalse;
  } else {
    // 8. Key forms: the date handed over names the key's day; the caller gets it back empty.
    resumeNext([&] { W_DateCle = TheDates().TexteVersDate(DateDeb); });
    DateDeb.clear();
    Err.Number = 0;

    // 9. Read the record of the form and take the criteria from the key and the record.
    NorvikDates& dates = TheDates();
    if (W_SemType == kFalse) {
      resumeNext([&] { R_DetailsInterv = F_DetailsInterv->ReadRecord(Code); });
      using Key = search::DetailKey;
      W_Code = Key::client.in(Code);
      resumeNext([&] { W_DateDeb = dates.DateVersTexte(Key::date.in(Code)); });
      resumeNext([&] { W_DateFin = dates.DateVersTexte(R_DetailsInterv->r(1)); });
      W_HeureDe = Key::start.in(Code);
      resumeNext([&] { W_HeureA = R_DetailsInterv->r(2); });
      W_Jour = Key::day.in(Code);
    } else if (W_Flot == kFalse) {
      using Key = search::FixedTemplateKey;
      resumeNext([&] { R_SemType = F_SemType->ReadRecord(Key::record.in(Code)); });
      W_Code = Key::client.in(Code);
      resumeNext([&] { W_DateDeb = dates.DateVersTexte(Key::date.in(Code)); });
      resumeNext([&] { W_DateFin = dates.DateVersTexte(R_SemType->r(1)); });
      W_HeureDe = Key::start.in(Code);
      resumeNext([&] { W_HeureA = R_SemType->r(2); });
      W_Jour = Key::day.in(Code);
    } else {
      using Key = search::FloatingTemplateKey;
      resumeNext([&] { R_SemTypeFlot = F_SemTypeFlot->ReadRecord(Key::record.in(Code)); });
      W_Code = Key::client.in(Code);
      resumeNext([&] { W_DateDeb = dates.DateVersTexte(Key::date.in(Code)); });
      resumeNext([&] { W_DateFin = dates.DateVersTexte(R_SemTypeFlot->r(1)); });
      W_HeureDe = Key::start.in(Code);
      resumeNext([&] { W_HeureA = R_SemTypeFlot->r(2); });
      resumeNext([&] { W_Jour = R_SemTypeFlot->r(10); });
    }

    // 10. The weekday mask: one day for a fixed key, the template's days for a floating one.
    Text mask;
    if (W_Flot == kFalse) {
      resumeNext([&] { W_Jour = textOfNumber(numberOf(W_Jour) + 1); });
      for (int i = 1; i <= 7; ++i) {
        // A day that is not a number fails the test, which counts as true.
        mask += testOrTrue([&] { return numberOf(W_Jour) == i; }) ? u"1" : u"0";
      }
    } else {
      for (int i = 1; i <= 6; ++i) {
        mask += instr(W_Jour, numberText(i - 1)) > 0 ? u"1" : u"0";
      }
    }
    W_Jour = mask;
    W_CleLue = kTrue;
  }

  // 11. Fill.
  if (W_CleLue == kTrue) {
    resumeNext([&] { Affiche_Tache_ClicDroit(); });
  } else if (W_Flot == kFalse) {
    Boolean remplirBas = kTrue;
    resumeNext([&] { Recherche_SemaineType(remplirBas); });
  } else {
    Boolean remplirBas = kTrue;
    resumeNext([&] { Recherche_SemaineTypeFlot(remplirBas); });
  }

  // 12. Captions of the vocabulary: only "AUTRE" is home help.
  const Captions& captions = W_TypeAct == u"AUTRE" ? kTaskCaptions : kCareCaptions;
  Etq_Pos1.setCaption(captions.first);
  Etq_Sel1.setCaption(captions.first);
  Etq_Pos2.setCaption(captions.second);
  Etq_Sel2.setCaption(captions.second);
  Etq_Pos3.setCaption(captions.third);
  Etq_Sel3.setCaption(captions.third);
  Cac_TouteTache.setCaption(captions.showAll);

  // 13.
  Cmd_SupprVelmora.setEnabled(false);
  Cmd_Obs.setEnabled(false);
  Cmd_OKVelmora.setEnabled(false);
  Cmd_AnnulerVelmora.setEnabled(false);
}

}  // namespace velmora

// Init, the control's entry for each intervention. It opens the files, resets the
// control, decodes what Code is (a client with the criteria apart, an intervention
// detail, a weekly template, fixed or floating), and starts the fill that suits it.
#include <cmath>
#include <optional>

#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"
#include "control/error_regime.h"
#include "control/read_snapshot.h"
#include "search/key_layouts.h"

namespace velmora {

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
  Variable().R_Obs = newRecord();
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
  const SessionInUse inUse(d_->session);
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

  // The files, through the session's connection. From here on, continue on error.
  Procedure().Ouvre_Fichiers();

  // The total's text box converts what it is given again.
  d_->W_ChangeActif = kTrue;

  // Reset the switch with its click disarmed: the design value is ticked.
  d_->W_ClicActif = kFalse;
  resumeNext([&] { Cac_TouteTache.setEnabled(true); });
  resumeNext([&] { Cac_TouteTache.setValue(0); });
  d_->W_ClicActif = kTrue;

  // Flags. A bare floating code loses its flag, wherever it stood.
  d_->W_SemType = toBoolean(instr(Code, u"SEMTYPE") > 0);
  d_->W_Flot = toBoolean(instr(Code, u"FLOT") > 0);
  if (d_->W_SemType == kFalse && d_->W_Flot == kTrue) {
    Code = left(Code, static_cast<std::ptrdiff_t>(Code.size()) - 4);
  }

  // The parameter record; an absent one leaves the cursor as it was.
  resumeNext([] { Variable().R_Param = Variable().F_Param->ReadRecord(u"1"); });

  // Reset the lists, the total, the host's flags and the observations.
  Variable().R_Obs = newRecord();
  resumeNext([&] { Lst_Selectionne.Clear(); });
  resumeNext([&] { Etq_Imperativite.setVisible(false); });
  resumeNext([&] { Lst_Possible.Clear(); });
  resumeNext([&] { Lst_CodeSelect.Clear(); });
  resumeNext([&] { Lst_CodePos.Clear(); });
  W_Total = Currency::whole(0);
  resumeNext([&] { Txt_Duree.setText(u""); });
  W_AfficheTache = kFalse;
  W_DoubleClic = kFalse;
  d_->W_TypeAct = TypeAct;

  // A bare client code: the criteria come apart.
  if (Code.size() == 5) {
    d_->W_Code = Code;
    d_->W_DateDeb = DateDeb;
    d_->W_DateFin = DateFin;
    d_->W_HeureDe = HeureDe;
    d_->W_HeureA = HeureA;
    d_->W_Jour = Jour;
    d_->W_CleLue = kFalse;
  } else {
    // Key forms: the date handed over names the key's day; the caller gets it back empty.
    resumeNext([&] { d_->W_DateCle = Variable().TheDates().TexteVersDate(DateDeb); });
    DateDeb.clear();
    Err().Number = 0;

    // Read the record of the form and take the criteria from the key and the record.
    NorvikDates& dates = Variable().TheDates();
    if (d_->W_SemType == kFalse) {
      resumeNext(
          [&] { Variable().R_DetailsInterv = Variable().F_DetailsInterv->ReadRecord(Code); });
      using Key = search::DetailKey;
      d_->W_Code = Key::client.in(Code);
      resumeNext([&] { d_->W_DateDeb = dates.DateVersTexte(Key::date.in(Code)); });
      resumeNext([&] { d_->W_DateFin = dates.DateVersTexte(Variable().R_DetailsInterv->r(1)); });
      d_->W_HeureDe = Key::start.in(Code);
      resumeNext([&] { d_->W_HeureA = Variable().R_DetailsInterv->r(2); });
      d_->W_Jour = Key::day.in(Code);
    } else if (d_->W_Flot == kFalse) {
      using Key = search::FixedTemplateKey;
      resumeNext(
          [&] { Variable().R_SemType = Variable().F_SemType->ReadRecord(Key::record.in(Code)); });
      d_->W_Code = Key::client.in(Code);
      resumeNext([&] { d_->W_DateDeb = dates.DateVersTexte(Key::date.in(Code)); });
      resumeNext([&] { d_->W_DateFin = dates.DateVersTexte(Variable().R_SemType->r(1)); });
      d_->W_HeureDe = Key::start.in(Code);
      resumeNext([&] { d_->W_HeureA = Variable().R_SemType->r(2); });
      d_->W_Jour = Key::day.in(Code);
    } else {
      using Key = search::FloatingTemplateKey;
      resumeNext([&] {
        Variable().R_SemTypeFlot = Variable().F_SemTypeFlot->ReadRecord(Key::record.in(Code));
      });
      d_->W_Code = Key::client.in(Code);
      resumeNext([&] { d_->W_DateDeb = dates.DateVersTexte(Key::date.in(Code)); });
      resumeNext([&] { d_->W_DateFin = dates.DateVersTexte(Variable().R_SemTypeFlot->r(1)); });
      d_->W_HeureDe = Key::start.in(Code);
      resumeNext([&] { d_->W_HeureA = Variable().R_SemTypeFlot->r(2); });
      resumeNext([&] { d_->W_Jour = Variable().R_SemTypeFlot->r(10); });
    }

    // The weekday mask: one day for a fixed key, the template's days for a floating one.
    Text mask;
    if (d_->W_Flot == kFalse) {
      resumeNext([&] { d_->W_Jour = textOfNumber(numberOf(d_->W_Jour) + 1); });
      for (int i = 1; i <= 7; ++i) {
        // A day that is not a number fails the test, which counts as true.
        mask += testOrTrue([&] { return numberOf(d_->W_Jour) == i; }) ? u"1" : u"0";
      }
    } else {
      for (int i = 1; i <= 6; ++i) {
        mask += instr(d_->W_Jour, numberText(i - 1)) > 0 ? u"1" : u"0";
      }
    }
    d_->W_Jour = mask;
    d_->W_CleLue = kTrue;
  }

  // Fill the lists: what the key holds, or the search of the client's templates.
  if (d_->W_CleLue == kTrue) {
    resumeNext([&] { Affiche_Tache_ClicDroit(); });
  } else if (d_->W_Flot == kFalse) {
    Boolean remplirBas = kTrue;
    resumeNext([&] { Recherche_SemaineType(remplirBas); });
  } else {
    Boolean remplirBas = kTrue;
    resumeNext([&] { Recherche_SemaineTypeFlot(remplirBas); });
  }

  // Captions of the vocabulary: only "AUTRE" is home help.
  const Captions& captions = d_->W_TypeAct == u"AUTRE" ? kTaskCaptions : kCareCaptions;
  Etq_Pos1.setCaption(captions.first);
  Etq_Sel1.setCaption(captions.first);
  Etq_Pos2.setCaption(captions.second);
  Etq_Sel2.setCaption(captions.second);
  Etq_Pos3.setCaption(captions.third);
  Etq_Sel3.setCaption(captions.third);
  Cac_TouteTache.setCaption(captions.showAll);

  // Nothing is selected yet: the buttons of a selected row wait for one.
  Cmd_SupprVelmora.setEnabled(false);
  Cmd_Obs.setEnabled(false);
  Cmd_OKVelmora.setEnabled(false);
  Cmd_AnnulerVelmora.setEnabled(false);
}

}  // namespace velmora

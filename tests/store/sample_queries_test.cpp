// The sample account answers every query text that the control sends with the records
// and the order that a planner expects. Expected keys are worked out from the data files.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <velmora/store/exchange.h>
#include "support/account.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;

using Rows = std::vector<std::vector<std::string>>;
using Keys = std::vector<std::string>;

// The account is built once: the files are read-only for every test below.
class SampleAccount : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    account_ = std::make_unique<testing::TempAccount>();
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(VELMORA_SAMPLE_DIR)) {
      if (entry.path().extension() == ".jsonl") files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    Batch all;
    for (const auto& file : files) {
      std::ifstream in(file);
      all.append(readExchange(in, file.filename().string()));
    }
    account_->apply(all);
  }
  static void TearDownTestSuite() { account_.reset(); }

  void SetUp() override { database_ = account_->open(); }

  // Runs a request record as the control builds it and returns every cell of the answer.
  Rows run(const std::string& query, const std::string& file, const std::string& columns) {
    const Text request =
        fromUtf8(query) + kAttributeMark + fromUtf8(file) + kAttributeMark + fromUtf8(columns);
    long count = 0;
    const RecordRef answer = database_->RunQuery(request, u"", count);
    const int columnCount = static_cast<int>(std::count(columns.begin(), columns.end(), ' ')) + 1;
    Rows rows;
    for (int i = 1; i <= answer->DCount(); ++i) {
      EXPECT_LE(answer->DCount(i), columnCount) << "row " << i << " has more cells than columns";
      std::vector<std::string> row;
      for (int j = 1; j <= columnCount; ++j) row.push_back(toUtf8(answer->r(i, j)));
      rows.push_back(row);
    }
    return rows;
  }

  Keys keys(const std::string& query, const std::string& file) {
    Keys found;
    for (const auto& row : run(query, file, "0")) found.push_back(row.at(0));
    return found;
  }

  static std::string fixedQuery(const std::string& client, const std::string& from,
                                const std::string& to, bool care) {
    std::string q = "SSELECT TPSSEMAINETYPE AVEC CodeAideSemType = \"" + client + "\"";
    if (!to.empty()) q += " AND AVEC DateDebSemType <= \"" + to + "\"";
    q += " AND AVEC 1 >= \"" + from + "\" OR = \"\" AND AVEC 4 <> \"\"";
    q += care ? " AND AVEC TypeActSemType = \"S\"" : " AND AVEC TypeActSemType <> \"S\"";
    return q;
  }

  static std::string floatingQuery(const std::string& client, const std::string& from,
                                   const std::string& to, bool care) {
    std::string q = "SSELECT TPSSEMAINETYPEFLOT AVEC CodeAideFlot = \"" + client + "\"";
    if (!to.empty()) q += " AND AVEC DateDebFlot <= \"" + to + "\"";
    q += " AND AVEC 1 >= \"" + from + "\" OR = \"\" AND AVEC 4 <> \"\"";
    q += care ? " AND AVEC TypeActFlot = \"S\"" : " AND AVEC TypeActFlot <> \"S\"";
    return q;
  }

  static std::unique_ptr<testing::TempAccount> account_;
  DatabaseRef database_;
};

std::unique_ptr<testing::TempAccount> SampleAccount::account_;

// 23/11/2026, 31/12/2026 and 01/09/2026 as internal dates.
const std::string kMonday = "21512";
const std::string kYearEnd = "21550";
const std::string kFirstSeptember = "21429";

TEST_F(SampleAccount, CareActCatalogueIsSortedByLabelWithTheKeyBreakingTies) {
  const Rows rows = run("SSELECT SSIADSOINS PAR 1", "SSIADSOINS", "0 1 4");
  const Keys expected = {
      "070101", "010202", "040104", "060201", "020302", "060101", "010105", "010201", "030202",
      "010303", "050202", "040102", "010104", "010302", "050101", "020204", "010301", "010306",
      "020202", "020201", "040201", "040202", "020303", "040101", "050203", "020102", "020103",
      "020101", "030103", "020304", "010203", "010304", "030102", "030101", "020203", "020301",
      "030203", "030201", "010107", "010305", "040203", "040204", "010106", "029901", "010108",
      "010109", "010110", "050102", "060102", "030105", "060202", "030104", "020104", "030106",
      "010204", "010102", "010101", "010103", "040105", "040103", "050201", "050103", "030204"};
  Keys found;
  for (const auto& row : rows) found.push_back(row[0]);
  EXPECT_EQ(found, expected);

  // Label and default duration travel with each key; an act without a duration reads "".
  ASSERT_EQ(rows.size(), 63u);
  EXPECT_EQ(rows[0], (std::vector<std::string>{"070101", "Accompagnement en fin de vie", "45"}));
  EXPECT_EQ(rows[6], (std::vector<std::string>{
                         "010105", "Bain au lit pour patient alité et dépendant", "50"}));
  EXPECT_EQ(rows[49], (std::vector<std::string>{"030105", "Surveillance de l'hydratation", "5"}));
  EXPECT_EQ(rows[50], (std::vector<std::string>{"060202", "Surveillance de l'hydratation", "5"}));
  EXPECT_EQ(rows[60],
            (std::vector<std::string>{"050201", "Transmissions avec l'infirmier libéral", ""}));
  EXPECT_EQ(rows[62], (std::vector<std::string>{"030204", "Évaluation de la douleur", "10"}));
}

TEST_F(SampleAccount, TaskTypesSortOnTheirCriterionAsNumbers) {
  const Rows expected = {{"Démarches administratives", "5"}, {"Entretien du logement", "10"},
                         {"Entretien du linge", "20"},       {"Aide à la personne", "30"},
                         {"Courses et repas", "40"},         {"Vie sociale et loisirs", "50"}};
  EXPECT_EQ(run("SSELECT TYPETACHE PAR 1", "TYPETACHE", "0 1"), expected);
}

TEST_F(SampleAccount, TaskGroupsSortByTypeThenCriterion) {
  const Rows expected = {{"Toilette et habillage", "10", "Aide à la personne"},
                         {"Lever et coucher", "20", "Aide à la personne"},
                         {"Aide aux repas", "30", "Aide à la personne"},
                         {"Courses", "10", "Courses et repas"},
                         {"Préparation des repas", "20", "Courses et repas"},
                         {"Papiers et courrier", "10", "Démarches administratives"},
                         {"Lavage", "10", "Entretien du linge"},
                         {"Repassage et rangement", "20", "Entretien du linge"},
                         {"Couture", "30", "Entretien du linge"},
                         {"Ménage courant", "10", "Entretien du logement"},
                         {"Gros ménage", "20", "Entretien du logement"},
                         {"Cuisine et vaisselle", "30", "Entretien du logement"},
                         {"Jardinage", "10", "Extérieurs"},
                         {"Sorties et promenades", "10", "Vie sociale et loisirs"},
                         {"Activités et stimulation", "20", "Vie sociale et loisirs"}};
  EXPECT_EQ(run("SSELECT GROUPETACHE PAR 2 PAR 1", "GROUPETACHE", "0 1 2"), expected);
}

TEST_F(SampleAccount, TasksSortByGroupThenCriterionThenKey) {
  const Rows expected = {
      {"Lecture du journal", "10", "Activités et stimulation", "15"},
      {"Jeux de société", "20", "Activités et stimulation", "30"},
      {"Conversation", "30", "Activités et stimulation", ""},
      {"Atelier mémoire", "40", "Activités et stimulation", "30"},
      {"Aide à l'utilisation du téléphone", "50", "Activités et stimulation", "10"},
      {"Écoute musicale", "60", "Activités et stimulation", "20"},
      {"Aide à la prise du petit-déjeuner", "10", "Aide aux repas", "20"},
      {"Aide à la prise du déjeuner", "20", "Aide aux repas", "30"},
      {"Aide à la prise du dîner", "30", "Aide aux repas", "30"},
      {"Hydratation", "40", "Aide aux repas", "5"},
      {"Rappel de la prise des médicaments", "50", "Aide aux repas", "5"},
      {"Promenade du chien", "10", "Animaux domestiques", "20"},
      {"Nourrir le chat", "20", "Animaux domestiques", "5"},
      {"Accompagnement aux courses alimentaires", "10", "Courses", "60"},
      {"Accompagnement aux courses de pharmacie", "20", "Courses", "30"},
      {"Courses seul(e) au supermarché", "30", "Courses", "45"},
      {"Rangement des courses", "40", "Courses", "15"},
      {"Liste de courses", "50", "Courses", "10"},
      {"Retrait d'argent", "60", "Courses", "20"},
      {"Vaisselle", "10", "Cuisine et vaisselle", "15"},
      {"Rangement de la vaisselle", "20", "Cuisine et vaisselle", "10"},
      {"Nettoyage du plan de travail", "30", "Cuisine et vaisselle", "10"},
      {"Nettoyage des plaques de cuisson", "40", "Cuisine et vaisselle", "10"},
      {"Vérification des dates de péremption", "50", "Cuisine et vaisselle", "10"},
      {"Nettoyage des vitres", "10", "Gros ménage", "45"},
      {"Nettoyage du réfrigérateur", "20", "Gros ménage", "30"},
      {"Nettoyage du four", "30", "Gros ménage", "30"},
      {"Lessivage des portes et placards", "40", "Gros ménage", "45"},
      {"Changement des draps", "50", "Gros ménage", "20"},
      {"Arrosage des plantes", "10", "Jardinage", "10"},
      {"Tonte de la pelouse", "20", "Jardinage", "45"},
      {"Ramassage des feuilles", "30", "Jardinage", "30"},
      {"Lancement d'une machine", "10", "Lavage", "10"},
      {"Étendage du linge", "20", "Lavage", "15"},
      {"Lavage à la main", "30", "Lavage", "20"},
      {"Pliage du linge", "40", "Lavage", "15"},
      {"Détachage du linge", "50", "Lavage", "10"},
      {"Tri du linge sale", "50", "Lavage", "5"},
      {"Aide au lever", "10", "Lever et coucher", "15"},
      {"Aide au coucher", "20", "Lever et coucher", "15"},
      {"Transfert lit-fauteuil", "30", "Lever et coucher", "10"},
      {"Aide à la marche dans le logement", "40", "Lever et coucher", "10"},
      {"Installation au fauteuil", "50", "Lever et coucher", "5"},
      {"Aspirateur", "10", "Ménage courant", "20"},
      {"Lavage des sols", "20", "Ménage courant", "30"},
      {"Dépoussiérage des meubles", "30", "Ménage courant", "15"},
      {"Nettoyage de la salle de bain", "40", "Ménage courant", "20"},
      {"Nettoyage des toilettes", "50", "Ménage courant", "10"},
      {"Sortie des poubelles", "60", "Ménage courant", "5"},
      {"Réfection du lit", "70", "Ménage courant", "10"},
      {"Aération du logement", "80", "Ménage courant", "5"},
      {"Nettoyage de la cuisine", "90", "Ménage courant", "20"},
      {"Rangement du logement", "100", "Ménage courant", "15"},
      {"Tri du courrier", "10", "Papiers et courrier", "10"},
      {"Aide aux démarches administratives", "20", "Papiers et courrier", "30"},
      {"Prise de rendez-vous médicaux", "30", "Papiers et courrier", "15"},
      {"Classement des papiers", "40", "Papiers et courrier", "20"},
      {"Aide au remplissage de formulaires", "50", "Papiers et courrier", "30"},
      {"Préparation du petit-déjeuner", "10", "Préparation des repas", "15"},
      {"Préparation du déjeuner", "20", "Préparation des repas", "45"},
      {"Préparation du dîner", "30", "Préparation des repas", "30"},
      {"Réchauffage d'un plat", "40", "Préparation des repas", "10"},
      {"Préparation de repas pour plusieurs jours", "50", "Préparation des repas", "60"},
      {"Épluchage des légumes", "60", "Préparation des repas", "15"},
      {"Mise en place du plateau-repas", "70", "Préparation des repas", "10"},
      {"Repassage", "10", "Repassage et rangement", "30"},
      {"Repassage des chemises", "20", "Repassage et rangement", "30"},
      {"Rangement du linge", "30", "Repassage et rangement", "10"},
      {"Petit raccommodage", "40", "Repassage et rangement", "20"},
      {"Promenade à pied", "10", "Sorties et promenades", "30"},
      {"Promenade en fauteuil roulant", "20", "Sorties et promenades", "30"},
      {"Accompagnement chez le médecin", "30", "Sorties et promenades", "60"},
      {"Accompagnement chez le coiffeur", "40", "Sorties et promenades", "60"},
      {"Accompagnement à la messe", "50", "Sorties et promenades", "60"},
      {"Visite au cimetière", "60", "Sorties et promenades", "45"},
      {"Aide à la toilette", "10", "Toilette et habillage", "30"},
      {"Aide à l'habillage", "20", "Toilette et habillage", "15"},
      {"Aide au déshabillage", "30", "Toilette et habillage", "10"},
      {"Aide à la douche", "40", "Toilette et habillage", "30"},
      {"Change de protection", "50", "Toilette et habillage", "10"},
      {"Coiffage", "60", "Toilette et habillage", "5"},
      {"Soins des mains et des ongles", "70", "Toilette et habillage", "15"}};
  EXPECT_EQ(run("SSELECT TACHE PAR 2 PAR 1", "TACHE", "0 1 2 5"), expected);
}

TEST_F(SampleAccount, ClientTaskListsComeLatestFirst) {
  EXPECT_EQ(keys("SSELECT AIDEDETAILTACHE AVEC @ID = \"00001]\" PAR-DECR @ID", "AIDEDETAILTACHE"),
            (Keys{"0000121519", "0000121491", "0000121064", "0000120700"}));
  // The empty list of 01/03/2026 is a record like the others.
  EXPECT_EQ(keys("SSELECT AIDEDETAILTACHE AVEC @ID = \"00005]\" PAR-DECR @ID", "AIDEDETAILTACHE"),
            (Keys{"0000521491", "0000521245", "0000521064"}));
  EXPECT_EQ(keys("SSELECT AIDEDETAILTACHE AVEC @ID = \"00009]\" PAR-DECR @ID", "AIDEDETAILTACHE"),
            Keys{});
}

TEST_F(SampleAccount, ConsultationLeavesOutTaskListsDatedAfterTheIntervention) {
  EXPECT_EQ(keys("SELECT AIDEDETAILTACHE AVEC 0 = \"00001]\" AND AVEC 0 <= \"[21512\" PAR-DECR 0",
                 "AIDEDETAILTACHE"),
            (Keys{"0000121491", "0000121064", "0000120700"}));
  // A bound before the oldest list keeps none; a bound on a list's own date keeps it.
  EXPECT_EQ(keys("SELECT AIDEDETAILTACHE AVEC 0 = \"00001]\" AND AVEC 0 <= \"[20699\" PAR-DECR 0",
                 "AIDEDETAILTACHE"),
            Keys{});
  EXPECT_EQ(keys("SELECT AIDEDETAILTACHE AVEC 0 = \"00012]\" AND AVEC 0 <= \"[21186\" PAR-DECR 0",
                 "AIDEDETAILTACHE"),
            Keys{"0001221186"});
}

TEST_F(SampleAccount, FixedTemplatesOfAHomeHelpClientWithinThePeriod) {
  const Keys mondayFridayWednesday = {"00001211860085001", "00001211862140001",
                                      "00001211864085001"};
  EXPECT_EQ(keys(fixedQuery("00001", kMonday, kYearEnd, false), "TPSSEMAINETYPE"),
            mondayFridayWednesday);
  EXPECT_EQ(keys(fixedQuery("00001", kMonday, "", false), "TPSSEMAINETYPE"), mondayFridayWednesday);
  // Home help only: asking for care finds nothing.
  EXPECT_EQ(keys(fixedQuery("00001", kMonday, kYearEnd, true), "TPSSEMAINETYPE"), Keys{});
}

TEST_F(SampleAccount, FixedTemplatesKeepToTheirPeriodOfValidity) {
  // Ended on 01/09/2026 and starting on 01/01/2027: only the current one is in the period.
  EXPECT_EQ(keys(fixedQuery("00004", kMonday, kYearEnd, false), "TPSSEMAINETYPE"),
            Keys{"00004214593090001"});
  // Without an end of period the one starting next year comes too.
  EXPECT_EQ(keys(fixedQuery("00004", kMonday, "", false), "TPSSEMAINETYPE"),
            (Keys{"00004214593090001", "00004215513090001"}));
  // A period starting on the day the old one ended still sees it.
  EXPECT_EQ(keys(fixedQuery("00004", kFirstSeptember, kYearEnd, false), "TPSSEMAINETYPE"),
            (Keys{"00004208213090001", "00004214593090001"}));
}

TEST_F(SampleAccount, FixedTemplatesOfACareClient) {
  EXPECT_EQ(
      keys(fixedQuery("00002", kMonday, "", true), "TPSSEMAINETYPE"),
      (Keys{"00002210640080001", "00002210641180001", "00002210642080001", "00002210644080001"}));
  EXPECT_EQ(keys(fixedQuery("00002", kMonday, kYearEnd, false), "TPSSEMAINETYPE"), Keys{});
}

TEST_F(SampleAccount, TheKindOfActivitySeparatesOneClientsTemplates) {
  EXPECT_EQ(keys(fixedQuery("00003", kMonday, kYearEnd, true), "TPSSEMAINETYPE"),
            Keys{"00003211861090001"});
  EXPECT_EQ(keys(fixedQuery("00003", kMonday, "", false), "TPSSEMAINETYPE"),
            Keys{"00003211861100001"});
  EXPECT_EQ(keys(floatingQuery("00003", kMonday, kYearEnd, true), "TPSSEMAINETYPEFLOT"),
            Keys{"0000321186080001"});
  EXPECT_EQ(keys(floatingQuery("00003", kMonday, "", false), "TPSSEMAINETYPEFLOT"),
            Keys{"0000321186140001"});
}

TEST_F(SampleAccount, TemplatesWithoutItemsAndClientsWithoutTemplatesGiveNothing) {
  EXPECT_EQ(keys(fixedQuery("00006", kMonday, "", false), "TPSSEMAINETYPE"),
            Keys{"00006211860110001"});
  for (const std::string client : {"00005", "00009", "00010"}) {
    for (const bool care : {true, false}) {
      EXPECT_EQ(keys(fixedQuery(client, kMonday, kYearEnd, care), "TPSSEMAINETYPE"), Keys{})
          << client;
      EXPECT_EQ(keys(floatingQuery(client, kMonday, "", care), "TPSSEMAINETYPEFLOT"), Keys{})
          << client;
    }
  }
}

TEST_F(SampleAccount, FloatingTemplatesWithinThePeriod) {
  EXPECT_EQ(keys(floatingQuery("00001", kMonday, kYearEnd, false), "TPSSEMAINETYPEFLOT"),
            (Keys{"0000121186100001", "0000121186170001"}));
  EXPECT_EQ(keys(floatingQuery("00001", kMonday, kYearEnd, true), "TPSSEMAINETYPEFLOT"), Keys{});
  EXPECT_EQ(keys(floatingQuery("00004", kMonday, kYearEnd, false), "TPSSEMAINETYPEFLOT"),
            Keys{"0000421459140001"});
  EXPECT_EQ(keys(floatingQuery("00004", kFirstSeptember, "", false), "TPSSEMAINETYPEFLOT"),
            (Keys{"0000420821140001", "0000421459140001"}));
  EXPECT_EQ(keys(floatingQuery("00007", kMonday, "", true), "TPSSEMAINETYPEFLOT"),
            (Keys{"0000721186080001", "0000721186200001"}));
  EXPECT_EQ(keys(floatingQuery("00002", kMonday, kYearEnd, true), "TPSSEMAINETYPEFLOT"),
            Keys{"0000221064190001"});
  EXPECT_EQ(keys(floatingQuery("00002", kMonday, kYearEnd, false), "TPSSEMAINETYPEFLOT"), Keys{});
}

TEST_F(SampleAccount, ATemplateReadsBackWithItsParallelItems) {
  const RecordRef floating =
      database_->OpenFile(u"TPSSEMAINETYPEFLOT")->ReadRecord(u"0000221064190001");
  EXPECT_EQ(floating->r(2), u"1925");
  EXPECT_EQ(floating->r(3), u"S");
  EXPECT_EQ(floating->DCount(4), 2);
  EXPECT_EQ(floating->r(4, 1), u"020204");
  EXPECT_EQ(floating->r(5, 2), u"10");
  EXPECT_EQ(floating->r(8, 2),
            u"Insuline selon prescription\nNoter la dose dans le cahier de liaison");
  EXPECT_EQ(floating->r(10), u"0123456");

  const RecordRef param = database_->OpenFile(u"TPSPARAM")->ReadRecord(u"1");
  EXPECT_EQ(param->DCount(), 20);
  EXPECT_EQ(param->r(20), u"0");
}

}  // namespace
}  // namespace velmora

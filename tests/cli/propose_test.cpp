// velmora propose and velmora consult, run as a user runs them, on a small account made
// for them: one home-help client with a Monday template of two tasks.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <tuple>
#include <vector>

#include "cli/run_velmora.h"
#include "support/rows.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using cli_test::Outcome;
using testing::col;
using testing::right;

class Propose : public cli_test::Tool {
 protected:
  void SetUp() override {
    account.put("BESOINSAIDE", "00001", {{"Mme Test"}});
    account.put("TPSPARAM", "1", {{""}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {""},
                                  {""}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {"0"}});
    account.put("TYPETACHE", "T-LINGE", {{"1"}});
    account.put("TYPETACHE", "T-PERSONNE", {{"2"}});
    account.put("GROUPETACHE", "G-LINGE", {{"1"}, {"T-LINGE"}});
    account.put("GROUPETACHE", "G-SOINS", {{"1"}, {"T-PERSONNE"}});
    account.put("TACHE", "Repassage", {{"1"}, {"G-LINGE"}, {""}, {"N"}, {"30"}});
    account.put("TACHE", "Aide à la toilette", {{"1"}, {"G-SOINS"}, {""}, {"O"}, {"20"}});
    // Monday (day 0) from 23/11/2026, 08:30 to 10:00, open-ended, home help.
    account.put("TPSSEMAINETYPE", "00001215120085001",
                {{""},
                 {"1000"},
                 {"A"},
                 {"Aide à la toilette", "Repassage"},
                 {"25", "10000"},  // five digits: one blank before them in a row of the selection
                 {""},
                 {""},
                 {"Gants", ""}});
  }

  const std::string linge = col("T-LINGE") + col("G-LINGE") + col("Repassage");
  const std::string toilette = col("T-PERSONNE") + col("G-SOINS") + col("Aide à la toilette");
};

TEST_F(Propose, PrintsWhatThePlannerSees) {
  const auto o = run({"propose", "--db", account.path(), "--client", "00001", "--from",
                      "23/11/2026", "--time", "08:30-10:00"});
  ASSERT_EQ(o.status, 0) << o.err;
  EXPECT_EQ(o.err, "");
  const std::string expected = R"(Etq_Pos1 "Type"  Etq_Pos2 "Groupe"  Etq_Pos3 "Tâche"
Etq_Sel1 "Type"  Etq_Sel2 "Groupe"  Etq_Sel3 "Tâche"
Cac_TouteTache "Afficher toutes les tâches" value 0

Lst_Possible (2 rows), Lst_CodePos (2 codes):
  0 |)" + linge + right("10000", 7) +
                               "  |  Repassage\n  1 |" + toilette + right("25", 7) +
                               R"(  |  Aide à la toilette

Lst_Selectionne (2 rows), Lst_CodeSelect (2 codes):
  0 |)" + linge + " " + right("10000", 6) +
                               "|  Repassage\n  1 |" + toilette + "X" + right("25", 6) +
                               R"(|  Aide à la toilette  obs "Gants"

Txt_Duree "167h05"
W_Total 10025
W_AfficheTache True
Etq_Imperativite shown
)";
  EXPECT_EQ(o.out, expected);
}

// What --json gives a program, for other days, slots, kinds and templates, and for a key.
TEST_F(Propose, JsonForProgramsAndForEachCase) {
  using Json = nlohmann::json;
  const auto on = [&](const std::string& from, const std::vector<std::string>& more) {
    std::vector<std::string> args = {"propose", "--db", account.path(), "--client",    "00001",
                                     "--from",  from,   "--time",       "08:30-10:00", "--json"};
    args.insert(args.end(), more.begin(), more.end());
    return args;
  };
  const std::string key = "00001215120085001SEMTYPE";
  const std::vector<std::tuple<std::vector<std::string>, const char*, Json>> cases{
      {on("2026-11-23", {"--days", "1000000"}), "/captions/Etq_Sel3", "Tâche"},
      // Tuesday: the template is proposed all the same.
      {on("24/11/2026", {}), "/Lst_CodePos", Json{"Repassage", "Aide à la toilette"}},
      {on("23/11/2026", {"--floating"}), "/W_AfficheTache", false},
      {on("23/11/2026", {"--kind", "SSIAD"}), "/captions/Cac_TouteTache",
       "Afficher tous les soins"},
      {{"consult", "--db", account.path(), "--key", key, "--json"},
       "/Lst_Selectionne",
       Json{linge + " " + right("10000", 6), toilette + "X" + right("25", 6)}},
  };
  for (const auto& [args, field, expected] : cases) {
    SCOPED_TRACE(std::string(field) + " of " + args[args.size() - 2]);
    const auto o = run(args);
    ASSERT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(Json::parse(o.out).at(Json::json_pointer(field)), expected);
  }
}

}  // namespace
}  // namespace velmora

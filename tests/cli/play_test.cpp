// velmora play, run as a planner's tester runs it: scripts in files, the tool as a
// process, its output read back whole.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "cli/run_velmora.h"
#include "support/account.h"

namespace velmora::testing {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using cli_test::Outcome;

class Play : public ::testing::Test {
 protected:
  fs::path file(const std::string& name, const std::string& text) {
    fs::path path = fs::path(account.directory()) / name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }

  // The tool with these words for arguments (the paths of the tests have no blanks).
  Outcome velmora(const std::string& arguments) {
    std::vector<std::string> args;
    std::istringstream words(arguments);
    for (std::string word; words >> word;) args.push_back(word);
    return cli_test::runVelmora(args, account.directory());
  }

  Outcome play(const std::string& script, const std::string& options = "") {
    return playOn(account.path(), script, options);
  }

  Outcome playOn(const std::string& db, const std::string& script,
                 const std::string& options = "") {
    const fs::path path = file("script.play", script);
    return velmora("play --db " + db + " " + path.string() + " " + options);
  }

  TempAccount account;
};

TEST_F(Play, AMistakeNamesItsLineAndWordAndNothingRuns) {
  struct Case {
    std::string script;
    std::string message;
  };
  const std::vector<Case> cases{
      {"init AUTRE 00001\nshow\npres select\n", R"(script.play:3: unknown word "pres")"},
      {"show\npress selct\n", R"(script.play:2: unknown button "selct")"},
      {"click possible x\n", R"(script.play:1: "x" is not a row number)"},
      {"click possible -1\n", R"(script.play:1: "-1" is not a row number)"},
      {"mark selected 0\n", R"(script.play:1: unknown list "selected")"},
      {"# fine\n\ninit\n", "script.play:3: missing kind of activity"},
      {"observation \"Sonner\n", "script.play:1: unterminated quote"},
      {"observation \"Sonner\" close\n", R"(script.play:1: missing dialog button after "close")"},
      {"observation \"Sonner\" ok ok\n", R"(script.play:1: unexpected word "ok")"},
      {"host maj_enr\n", R"(script.play:1: unknown host call "maj_enr")"},
      {"show now\n", R"(script.play:1: unexpected word "now")"},
      {"type duree 5\n", R"(script.play:1: unknown text box "duree")"},
      {"host affiche A\n",
       "script.play:1: an item of host affiche needs CODE DURATION OBSERVATION"},
      {"host affiche A 10\n",
       "script.play:1: an item of host affiche needs CODE DURATION OBSERVATION"},
  };
  for (const Case& c : cases) {
    const Outcome run = play(c.script);
    EXPECT_EQ(run.status, 2) << c.script;
    EXPECT_EQ(run.out, "") << c.script;  // not even the show before the mistake
    EXPECT_NE(run.err.find(c.message), std::string::npos) << c.script << "\n" << run.err;
  }
}

TEST_F(Play, AMissingScriptOrDatabaseIsAnError) {
  EXPECT_EQ(velmora("play --db " + account.path() + " /nonexistent/script.play").status, 1);
  EXPECT_EQ(velmora("play " + file("s.play", "show\n").string()).status, 2);
}

// A small account of its own: a client whose dated task list proposes three tasks.
class PlayOnAccount : public Play {
 protected:
  void SetUp() override {
    account.put("TPSPARAM", "1", {{""}});
    account.put("GROUPETACHE", "Ménage", {{"10"}, {"Entretien"}});
    account.put("TACHE", "Aspirateur", {{"10"}, {"Ménage"}, {""}, {"N"}, {"20"}});
    account.put("TACHE", "Vaisselle", {{"20"}, {"Ménage"}, {""}, {"O"}, {"15"}});
  }
};

TEST_F(PlayOnAccount, DisabledButtonsAndUnansweredQuestionsAreNoted) {
  const Outcome run = play(
      "init AUTRE 00009\n"
      "press ok\n"
      "click selected 3\n"
      "host affiche\n");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            "line 2: Cmd_OKVelmora is disabled: nothing happens\n"
            "line 3: Lst_Selectionne has no row 3: nothing happens\n"
            "line 4: error 91: object not set: no W_Enr to show; run host maj-enr first\n");
}

// The example journey on the sample account, step by step.
class Journey : public Play {
 protected:
  void SetUp() override {
    sample = (fs::path(account.directory()) / "sample.db").string();
    ASSERT_EQ(velmora("sample --db " + sample).status, 0);
  }
  std::string sample;
};

TEST_F(Journey, TheExampleJourneyPlaysOnTheSample) {
  const Outcome run =
      velmora("play --db " + sample + " " + VELMORA_SAMPLE_DIR + "/journey.play --json");
  ASSERT_EQ(run.status, 0) << run.err;
  const Json j = Json::parse(run.out);
  const Json& shows = j["shows"];
  ASSERT_EQ(shows.size(), 6u);

  // After Init, the Monday template's items of the time slot; then two more.
  EXPECT_EQ(shows[0]["state"]["W_Total"], 70);
  EXPECT_EQ(shows[1]["state"]["Lst_CodeSelect"],
            (Json{"Aide au lever", "Aide à la toilette", "Préparation du petit-déjeuner",
                  "Repassage", "Aspirateur", "Réfection du lit"}));
  EXPECT_EQ(shows[1]["state"]["Txt_Duree"], "2h10");

  // Ironing edited to 25, an observation on the vacuuming, a paste refused.
  const Json& edited = shows[2]["state"];
  EXPECT_EQ(
      edited["Lst_Selectionne"][3],
      "Entretien du linge        Repassage et rangement    Repassage                      25");
  EXPECT_EQ(
      edited["Lst_Selectionne"][4],
      "Entretien du logement     Ménage courant            Aspirateur                X    20");
  EXPECT_EQ(edited["R_Obs"][4], "Sonner deux fois\nCode 1234");
  EXPECT_EQ(edited["W_Total"], 115);
  EXPECT_EQ(
      j["messages"],
      (Json{{{"line", 31},
             {"text",
              "error 13: type incompatible : la durée « 1h » n'est pas un nombre de minutes ; la "
              "ligne n'a pas changé"}}}));

  // The made bed removed after a No and a Yes.
  const Json& removed = shows[3]["state"];
  EXPECT_EQ(removed["Lst_CodeSelect"][4], "Aspirateur");
  EXPECT_EQ(removed["W_Total"], 105);

  // MAJ_Enr then Vider_Tache: the record holds the selection, the lists are empty.
  const Json& stored = shows[4]["state"];
  const Json enr =
      Json{{"Aide au lever", "15", ""},
           {"Aide à la toilette", "30", "Savon doux uniquement\nVérifier l'état de la peau du dos"},
           {"Préparation du petit-déjeuner", "15", ""},
           {"Repassage", "25", ""},
           {"Aspirateur", "20", "Sonner deux fois\nCode 1234"}};
  EXPECT_EQ(stored["W_Enr"], enr);
  EXPECT_EQ(stored["Lst_Selectionne"], Json::array());

  // Affiche of the stored record brings the same rows back.
  const Json& back = shows[5]["state"];
  EXPECT_EQ(back["Lst_Selectionne"], removed["Lst_Selectionne"]);
  EXPECT_EQ(back["R_Obs"], removed["R_Obs"]);
  EXPECT_EQ(back["Txt_Duree"], "1h45");

  // The same journey in text form marks each show and each error.
  const Outcome text = velmora("play --db " + sample + " " + VELMORA_SAMPLE_DIR + "/journey.play");
  ASSERT_EQ(text.status, 0) << text.err;
  for (const char* expected :
       {"== line 9 ==\n", "== line 15 ==\n", "== line 48 ==\n",
        "line 31: error 13: type incompatible : la durée « 1h » n'est pas un nombre de minutes",
        "W_Enr (5 items)\n  1 \"Aide au lever\" \"15\" \"\"\n",
        "enabled: Cmd_Select Cmd_Obs(off) Cmd_SupprVelmora(off) Cmd_OKVelmora(off) "
        "Cmd_AnnulerVelmora(off) Txt_DureeSoin Lst_Selectionne\n",
        "Lst_Possible marked: none\n",
        R"(dialog Txt_Type "Entretien du logement    " Txt_Groupe "Ménage courant           " )"
        "Txt_Tache \"Aspirateur               \" Txt_Obs \"\"\n",
        R"(question "Message TALVERANE" "Etes-vous sûr de vouloir supprimer cette tâche ?" )"
        "style 36 answer 7\n"}) {
    EXPECT_NE(text.out.find(expected), std::string::npos) << expected;
  }
}

TEST_F(Journey, TheCloseBoxDoesNotCloseTheDialogAndAQuestionNeedsAnAnswer) {
  const Outcome run = playOn(sample,
                             "init AUTRE 00001 23/11/2026 \"\" 08:30 10:00 1000000\n"
                             "mark\tpossible 1\t# tabs part words as spaces do\n"
                             "click selected 0\n"
                             "observation \"Par la porte de derrière\" close ok\n"
                             "press obs\n"
                             "press remove\n"
                             "show\n"
                             "host vider-tache\n"
                             "host affiche \"Aide au lever\" 25 \"Linge\" Inconnue 5 \"\"\n"
                             "show\n",
                             "--json");
  ASSERT_EQ(run.status, 0) << run.err;
  const Json j = Json::parse(run.out);
  const Json& state = j["shows"][0]["state"];
  EXPECT_EQ(state["R_Obs"][0], "Par la porte de derrière");
  EXPECT_EQ(
      state["Lst_Selectionne"][0],
      "Aide à la personne        Lever et coucher          Aide au lever             X    15");
  ASSERT_EQ(j["messages"].size(), 1u);
  EXPECT_EQ(j["messages"][0]["line"], 6);
  EXPECT_NE(j["messages"][0]["text"].get<std::string>().find("no answer was scripted"),
            std::string::npos);
  EXPECT_EQ(state["Lst_CodeSelect"].size(), 4u);  // the removal did not happen
  // What the planner saw: the mark, the question left unanswered, the dialog's boxes.
  EXPECT_EQ(state["marked"], Json::array({1}));
  EXPECT_EQ(state["questions"],
            Json::parse(R"([{"text": "Etes-vous sûr de vouloir supprimer cette tâche ?",
                             "title": "Message TALVERANE", "style": 36, "answer": null}])"));
  EXPECT_EQ(state["dialogs"], Json::parse(R"([{"Txt_Type": "Aide à la personne       ",
                                                "Txt_Groupe": "Lever et coucher         ",
                                                "Txt_Tache": "Aide au lever            ",
                                                "Txt_Obs": ""}])"));
  // The host's own W_Aff: the unknown item is left out.
  const Json& shown = j["shows"][1]["state"];
  EXPECT_EQ(shown["Lst_CodeSelect"], Json::array({"Aide au lever"}));
  EXPECT_EQ(shown["R_Obs"], Json::array({"Linge"}));
  EXPECT_EQ(shown["Txt_Duree"], "0h25");
}

}  // namespace
}  // namespace velmora::testing

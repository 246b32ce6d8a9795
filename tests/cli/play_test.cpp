// velmora play, run as a planner's tester runs it: scripts in files, the tool as a
// process, its output read back whole.

#include "cli/run_velmora.h"

namespace velmora::testing {
namespace {

using Json = nlohmann::json;
using cli_test::Outcome;

// Scripts played on the sample account.
class Journey : public cli_test::Tool {
 protected:
  void SetUp() override { ASSERT_EQ(run({"sample", "--db", at("sample.db")}).status, 0); }
  Outcome playJson(const std::string& script) {
    cli_test::spit(at("script.play"), script);
    return run({"play", "--db", at("sample.db"), at("script.play"), "--json"});
  }
};

TEST_F(Journey, TheExampleJourneyPlaysOnTheSample) {
  const Outcome o =
      run({"play", "--db", at("sample.db"), std::string(VELMORA_SAMPLE_DIR) + "/journey.play"});
  ASSERT_EQ(o.status, 0) << o.err;
  // Each show, from its heading to the next.
  std::vector<std::string> shows;
  for (std::size_t pos = o.out.find("== line "); pos != std::string::npos;) {
    const std::size_t next = o.out.find("== line ", pos + 1);
    shows.push_back(o.out.substr(pos, next - pos));
    pos = next;
  }
  ASSERT_EQ(shows.size(), 6u) << o.out;
  const auto selection = [&](std::size_t show) {
    const std::size_t start = shows[show].find("Lst_Selectionne (");
    return shows[show].substr(start, shows[show].find("\n\n", start) - start);
  };
  const std::vector<std::pair<std::size_t, std::string>> expected{
      // After Init, the Monday template's items of the time slot; then two more.
      {0, "== line 9 ==\n"},
      {0,
       "enabled: Cmd_Select(off) Cmd_Obs(off) Cmd_SupprVelmora(off) Cmd_OKVelmora(off) "
       "Cmd_AnnulerVelmora(off) Txt_DureeSoin Lst_Selectionne\n"},
      {1, "Lst_Selectionne (6 rows)"},
      {1,
       "line 31: error 13: as planners read it: \"type incompatible : la durée « 1h » n'est pas "
       "un nombre de minutes"},
      // Ironing edited to 25, an observation on the vacuuming, a paste refused (noted before
      // the next show).
      {2,
       "  3 |Entretien du linge        Repassage et rangement    Repassage                      "
       "25|"},
      {2, "Aspirateur  obs \"Sonner deux fois\\nCode 1234\"\n"},
      {2, R"(dialog Txt_Type "Entretien du logement    " Txt_Groupe "Ménage courant           " )"
          "Txt_Tache \"Aspirateur               \" Txt_Obs \"\"\n"},
      // The made bed removed after a No and a Yes.
      {3, "W_Total 105\n"},
      {3, "cette tâche ?\" style 36 answer 7\nquestion \"Message TALVERANE\""},
      {3, "cette tâche ?\" style 36 answer 6\n"},
      // MAJ_Enr then Vider_Tache: the record holds the selection, the lists are empty.
      {4, "Lst_Selectionne (0 rows)"},
      {4, "W_Enr (5 items)\n  1 \"Aide au lever\" \"15\" \"\"\n"},
      {4, "  5 \"Aspirateur\" \"20\" \"Sonner deux fois\\nCode 1234\"\n"},
      // Affiche of the stored record brings the same rows back.
      {5, "Txt_Duree \"1h45\"\n"},
  };
  for (const auto& [show, text] : expected) {
    EXPECT_NE(shows[show].find(text), std::string::npos) << text << "\nin\n" << shows[show];
  }
  EXPECT_EQ(selection(5), selection(3));
}

// Gestures that cannot happen are noted and skipped: a disabled button, a row past the
// list, the close box of the dialog, a question nobody answered.
TEST_F(Journey, TheCloseBoxDoesNotCloseTheDialogAndAQuestionNeedsAnAnswer) {
  const Outcome o = playJson(
      "host affiche\n"
      "init AUTRE 00001 23/11/2026 \"\" 08:30 10:00 1000000\n"
      "press ok\n"
      "mark\tpossible 1\t# tabs part words as spaces do\n"
      "mark possible 0\n"
      "click selected 9\n"
      "click selected 0\n"
      "observation \"Par la porte de derrière\" close ok\n"
      "press obs\n"
      "press remove\n"
      "show\n"
      "host maj-enr\n"
      "host vider-tache\n"
      "host affiche \"Aide au lever\" 25 \"Linge\" Inconnue 5 \"\"\n"
      "show\n");
  ASSERT_EQ(o.status, 0) << o.err;
  const Json j = Json::parse(o.out);
  const Json& state = j["shows"][0]["state"];
  EXPECT_EQ(state["R_Obs"][0], "Par la porte de derrière");
  EXPECT_EQ(
      state["Lst_Selectionne"][0],
      "Aide à la personne        Lever et coucher          Aide au lever             X    15");
  const auto message = [&](std::size_t i) { return j["messages"][i]["text"].get<std::string>(); };
  ASSERT_EQ(j["messages"].size(), 4u);
  EXPECT_EQ(message(0), "error 91: object not set: no W_Enr to show; run host maj-enr first");
  EXPECT_EQ(message(1), "Cmd_OKVelmora is disabled: nothing happens");
  EXPECT_EQ(message(2), "Lst_Selectionne has no row 9: nothing happens");
  EXPECT_EQ(j["messages"][3]["line"], 10);
  EXPECT_NE(message(3).find("no answer was scripted"), std::string::npos);
  EXPECT_EQ(state["Lst_CodeSelect"].size(), 4u);  // the removal did not happen
  // What the planner saw: the mark, the question left unanswered, the dialog's boxes.
  EXPECT_EQ(state["marked"], Json::array({0, 1}));
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
  EXPECT_EQ(shown["W_Enr"][0], (Json{"Aide au lever", "15", "Par la porte de derrière"}));
}

}  // namespace
}  // namespace velmora::testing

// The texts the searches send to the store, and the conversion of the host's times.
#include <gtest/gtest.h>

#include <velmora/base/failure.h>
#include "control/search/search_fixture.h"
#include "search/time_conversion.h"

namespace velmora::testing {
namespace {

using Rows = std::vector<std::string>;

// A connection that keeps the text of every query it passes on.
class RecordingDatabase : public NorvikDatabase {
 public:
  explicit RecordingDatabase(DatabaseRef inner) : inner_(std::move(inner)) {}
  FileRef OpenFile(const Text& Nom) override { return inner_->OpenFile(Nom); }
  RecordRef RunQuery(const Text& Requete, const Text& Options, long& Nombre) override {
    queries.push_back(toUtf8(Requete));
    return inner_->RunQuery(Requete, Options, Nombre);
  }
  std::unique_ptr<Snapshot> holdSnapshot() override { return inner_->holdSnapshot(); }
  Rows queries;

 private:
  DatabaseRef inner_;
};

std::string request(const std::string& query, const std::string& file, const std::string& columns) {
  const std::string mark = toUtf8(Text(1, kAttributeMark));
  return query + mark + file + mark + columns;
}

class Queries : public SearchJourney {
 protected:
  Rows run(const std::string& typeAct, const std::string& code, const std::string& dateFin,
           const std::string& heureA = "10:00") {
    auto recording = std::make_shared<RecordingDatabase>(account.open());
    ctl.TheDatabase(DatabaseRef(recording));
    InitArguments a{fromUtf8(typeAct), fromUtf8(code),   u"23/11/2026", fromUtf8(dateFin),
                    u"09:00",          fromUtf8(heureA), u"0010000"};
    ctl.Init(a);
    return recording->queries;
  }
  std::string d1() const { return internal("23/11/2026"); }
  std::string d2() const { return internal("30/11/2026"); }
};

TEST_F(Queries, HomeHelpWithAnEndDateAsksBothTemplateFilesThenTheClientsLists) {
  const Rows sent = run("AUTRE", kClient, "30/11/2026");
  EXPECT_EQ(sent,
            (Rows{request("SSELECT TPSSEMAINETYPEFLOT AVEC CodeAideFlot = \"00001\" AND AVEC "
                          "DateDebFlot <= \"" +
                              d2() + "\" AND AVEC 1 >= \"" + d1() +
                              "\" OR = \"\" AND AVEC 4 <> \"\" AND AVEC TypeActFlot <> \"S\"",
                          "TPSSEMAINETYPEFLOT", "0"),
                  request("SSELECT TPSSEMAINETYPE AVEC CodeAideSemType = \"00001\" AND AVEC "
                          "DateDebSemType <= \"" +
                              d2() + "\" AND AVEC 1 >= \"" + d1() +
                              "\" OR = \"\" AND AVEC 4 <> \"\" AND AVEC TypeActSemType <> \"S\"",
                          "TPSSEMAINETYPE", "0"),
                  request("SSELECT AIDEDETAILTACHE AVEC @ID = \"00001]\" PAR-DECR @ID",
                          "AIDEDETAILTACHE", "0")}));
}

TEST_F(Queries, CareWithoutEndDateSendsNoStartDateTestThenTheCatalogue) {
  const Rows sent = run("SSIAD", kClient, "");
  EXPECT_EQ(sent,
            (Rows{request("SSELECT TPSSEMAINETYPEFLOT AVEC CodeAideFlot = \"00001\" AND "
                          "AVEC 1 >= \"" +
                              d1() + "\" OR = \"\" AND AVEC 4 <> \"\" AND AVEC TypeActFlot = \"S\"",
                          "TPSSEMAINETYPEFLOT", "0"),
                  request("SSELECT TPSSEMAINETYPE AVEC CodeAideSemType = \"00001\" AND AVEC "
                          "1 >= \"" +
                              d1() +
                              "\" OR = \"\" AND AVEC 4 <> \"\" AND AVEC TypeActSemType = "
                              "\"S\"",
                          "TPSSEMAINETYPE", "0"),
                  request("SSELECT SSIADSOINS PAR 1", "SSIADSOINS", "0 1 4")}));
}

TEST_F(Queries, AFloatingCodeAsksTheFloatingFileAlone) {
  const Rows sent = run("OTHER", kClient + "FLOT", "");
  ASSERT_EQ(sent.size(), 2u);
  EXPECT_EQ(sent[0],
            request("SSELECT TPSSEMAINETYPEFLOT AVEC CodeAideFlot = \"00001\" AND AVEC 1 >= \"" +
                        d1() + "\" OR = \"\" AND AVEC 4 <> \"\" AND AVEC TypeActFlot <> \"S\"",
                    "TPSSEMAINETYPEFLOT", "0"));
  // Neither "SSIAD" nor "AUTRE": the care catalogue stands in.
  EXPECT_EQ(sent[1], request("SSELECT SSIADSOINS PAR 1", "SSIADSOINS", "0 1 4"));
}

TEST_F(Queries, AnEndDateThatIsNoDateDropsBothDateClauses) {
  const Rows sent = run("AUTRE", kClient, "pas une date");
  ASSERT_GE(sent.size(), 2u);
  EXPECT_EQ(sent[1], request("SSELECT TPSSEMAINETYPE AVEC CodeAideSemType = \"00001\" AND AVEC "
                             "4 <> \"\" AND AVEC TypeActSemType <> \"S\"",
                             "TPSSEMAINETYPE", "0"));
}

TEST_F(Queries, TheGuardSendsNothing) {
  EXPECT_EQ(run("AUTRE", kClient, "", ""), Rows{});
}

TEST_F(Queries, TheShowAllSwitchAsksTypesGroupsAndTasks) {
  auto recording = std::make_shared<RecordingDatabase>(account.open());
  ctl.TheDatabase(DatabaseRef(recording));
  InitArguments a{u"AUTRE", fromUtf8(kClient), u"23/11/2026", u"", u"09:00", u"10:00", u"0010000"};
  ctl.Init(a);
  recording->queries.clear();
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(recording->queries,
            (Rows{request("SSELECT TYPETACHE PAR 1", "TYPETACHE", "0 1"),
                  request("SSELECT GROUPETACHE PAR 2 PAR 1", "GROUPETACHE", "0 1 2"),
                  request("SSELECT TACHE PAR 2 PAR 1", "TACHE", "0 1 2 5")}));
}

TEST_F(Queries, TheConsultationLimitsTheListsToTheKeysDate) {
  auto recording = std::make_shared<RecordingDatabase>(account.open());
  ctl.TheDatabase(DatabaseRef(recording));
  const std::string key = "INT01" + kClient + internal("23/11/2026") + "XXXXXX20900";
  InitArguments a{u"AUTRE", fromUtf8(key), u"20/11/2026", u"", u"", u"", u""};
  ctl.Init(a);
  EXPECT_EQ(recording->queries,
            (Rows{request("SELECT AIDEDETAILTACHE AVEC 0 = \"00001]\" AND AVEC 0 <= \"[" +
                              internal("20/11/2026") + "\" PAR-DECR 0",
                          "AIDEDETAILTACHE", "0")}));
}

TEST(TimeConversion, MinutesBecomeHundredthsOfAnHour) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"08:00", "0800"}, {"08:01", "0802"}, {"08:15", "0825"}, {"08:20", "0833"},
      {"08:30", "0850"}, {"08:40", "0867"}, {"08:45", "0875"}, {"08:59", "0898"},
      {"23:10", "2317"}, {"07h05", "0708"}};
  for (const auto& [in, out] : cases) {
    EXPECT_EQ(toUtf8(search::minutesToFourDigit(fromUtf8(in))), out) << in;
  }
}

TEST(TimeConversion, DecimalHoursAreTimesAHundred) {
  EXPECT_EQ(search::decimalToFourDigit(u"8.5"), u"0850");
  EXPECT_EQ(search::decimalToFourDigit(u"8,5"), u"0850");
  EXPECT_EQ(search::decimalToFourDigit(u"12"), u"1200");
  EXPECT_EQ(search::decimalToFourDigit(u"9.25"), u"0925");
}

TEST(TimeConversion, DigitsThatAreNoNumberFail) {
  for (const Text bad : {u"08:xx", u"8", u""}) {
    try {
      (void)search::minutesToFourDigit(bad);
      ADD_FAILURE() << toUtf8(bad) << " was converted";
    } catch (const Failure& f) {
      EXPECT_EQ(f.number(), errors::kTypeMismatch);
    }
  }
  EXPECT_THROW((void)search::decimalToFourDigit(u"huit"), Failure);
}

}  // namespace
}  // namespace velmora::testing

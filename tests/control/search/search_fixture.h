// A small purpose-built account for the template searches, in both vocabularies, and a
// control started on it through Init. Rows are written out by hand so that the
// expectations do not lean on the code under test.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include <velmora/control/ctr_velmora_new.h>
#include <velmora/store/dates.h>
#include <velmora/toolkit/services.h>
#include "control/module_slots.h"
#include "support/account.h"

namespace velmora::testing {

inline std::string col(std::string_view v) {
  Text t = fromUtf8(v);
  if (t.size() > 25) t.resize(25);
  t.resize(26, u' ');
  return toUtf8(t);
}
inline std::string right(std::string_view v, std::size_t width) {
  return std::string(width - fromUtf8(v).size(), ' ') + std::string(v);
}
// A proposal row of a catalogue fill (85 characters), of a search for an item of a
// fixed template (87) or with the floating mark (88).
inline std::string catalogueRow(std::string_view c1, std::string_view c2, std::string_view c3,
                                std::string_view minutes) {
  return col(c1) + col(c2) + col(c3) + right(minutes, 7);
}
inline std::string fixedRow(std::string_view c1, std::string_view c2, std::string_view c3,
                            std::string_view minutes) {
  return catalogueRow(c1, c2, c3, minutes) + "  ";
}
inline std::string floatingRow(std::string_view c1, std::string_view c2, std::string_view c3,
                               std::string_view minutes) {
  return catalogueRow(c1, c2, c3, minutes) + "  *";
}
inline std::string selectedRow(std::string_view c1, std::string_view c2, std::string_view c3,
                               bool observation, std::string_view minutes) {
  return col(c1) + col(c2) + col(c3) + (observation ? "X" : " ") + right(minutes, 6);
}

inline std::vector<std::string> items(const toolkit::ListBox& list) {
  std::vector<std::string> out;
  for (int i = 0; i < list.ListCount(); ++i) out.push_back(toUtf8(list.List(i)));
  return out;
}
// A record as rows of values, for comparing working tables whole.
inline std::vector<std::vector<std::string>> table(const RecordRef& r) {
  std::vector<std::vector<std::string>> out;
  if (r.empty()) return out;
  for (const auto& attribute : r->attributes()) {
    std::vector<std::string> values;
    for (const auto& v : attribute) values.push_back(toUtf8(v));
    out.push_back(values);
  }
  if (r->DCount() == 0) out.clear();
  return out;
}
inline std::vector<std::string> attributes(const RecordRef& r, int count) {
  std::vector<std::string> out;
  for (int i = 1; i <= count; ++i) out.push_back(toUtf8(r->r(i)));
  return out;
}

// The internal date of a calendar date, five digits.
inline std::string internal(const char* ddmmyyyy) {
  return toUtf8(NorvikDates().TexteVersDate(fromUtf8(ddmmyyyy)));
}

// Home-help catalogue: types MENAGE and SOINS, groups ENTRETIEN (MENAGE) and TOILETTE
// (SOINS), tasks A and B in ENTRETIEN, C and D in TOILETTE; in the care catalogue acts
// 010101, 010102 and 010103 under type 0101 and regroupment 01, 020101 under 0201 and 02.
inline void putCatalogues(TempAccount& account) {
  account.put("TPSPARAM", "1", {});
  account.put("TYPETACHE", "MENAGE", {{"1"}});
  account.put("TYPETACHE", "SOINS", {{"2"}});
  account.put("GROUPETACHE", "ENTRETIEN", {{"1"}, {"MENAGE"}});
  account.put("GROUPETACHE", "TOILETTE", {{"1"}, {"SOINS"}});
  account.put("TACHE", "A", {{"1"}, {"ENTRETIEN"}, {""}, {""}, {"20"}});
  account.put("TACHE", "B", {{"2"}, {"ENTRETIEN"}, {""}, {""}, {"25"}});
  account.put("TACHE", "C", {{"1"}, {"TOILETTE"}, {""}, {""}, {"35"}});
  account.put("TACHE", "D", {{"2"}, {"TOILETTE"}, {""}, {""}, {"40"}});
  account.put("SSIADREGROUPSOINS", "01", {{"Soins de base"}});
  account.put("SSIADREGROUPSOINS", "02", {{"Relationnel"}});
  account.put("SSIADTYPESOINS", "0101", {{"Hygiène"}});
  account.put("SSIADTYPESOINS", "0201", {{"Écoute"}});
  account.put("SSIADSOINS", "010101", {{"Toilette complète"}, {""}, {""}, {"30"}});
  account.put("SSIADSOINS", "010102", {{"Change"}, {""}, {""}, {"10"}});
  account.put("SSIADSOINS", "010103", {{"Pansement"}, {""}, {""}, {"20"}});
  account.put("SSIADSOINS", "020101", {{"Accompagnement"}, {""}, {""}, {"45"}});
}

// A template record: end date, end time, kind ("S" care), items with durations and
// observations, and for floating templates the days.
struct TemplateSpec {
  std::string end;
  std::string kind;
  std::vector<std::string> codes;
  std::vector<std::string> durations;
  std::vector<std::string> observations;
  std::string days = {};
};
inline std::vector<std::vector<std::string>> templateRecord(const TemplateSpec& t) {
  return {{""}, {t.end}, {t.kind},       t.codes, t.durations,
          {""}, {""},    t.observations, {""},    {t.days}};
}

inline const std::string kClient = "00001";

class SearchJourney : public ::testing::Test {
 protected:
  void SetUp() override {
    Variable::resetAll();
    putCatalogues(account);
    ctl.setServices(std::make_shared<toolkit::ScriptedServices>());
  }
  void TearDown() override { Variable::resetAll(); }

  std::string start() const { return internal("01/01/2026"); }
  std::string fixedKey(char day, const std::string& time) const {
    return kClient + start() + day + time + "01";
  }
  std::string floatingKey(const std::string& time) const { return kClient + start() + time + "01"; }
  void putFixed(char day, const std::string& time, const TemplateSpec& t) {
    account.put("TPSSEMAINETYPE", fixedKey(day, time), templateRecord(t));
  }
  void putFloating(const std::string& time, const TemplateSpec& t) {
    account.put("TPSSEMAINETYPEFLOT", floatingKey(time), templateRecord(t));
  }

  // Init with a bare client code: the search runs with the lower half filled.
  void init(const std::string& typeAct, const std::string& code, const std::string& heureDe,
            const std::string& heureA, const std::string& jour,
            const std::string& dateFin = "30/11/2026") {
    ctl.TheDatabase(account.open());
    InitArguments a{fromUtf8(typeAct), fromUtf8(code),   u"23/11/2026", fromUtf8(dateFin),
                    fromUtf8(heureDe), fromUtf8(heureA), fromUtf8(jour)};
    ctl.Init(a);
  }
  // Init with a full key: the consultation runs.
  void consult(const std::string& typeAct, const std::string& key,
               const std::string& date = "23/11/2026") {
    ctl.TheDatabase(account.open());
    InitArguments a{fromUtf8(typeAct), fromUtf8(key), fromUtf8(date), u"", u"", u"", u""};
    ctl.Init(a);
  }

  TempAccount account;
  Ctr_VelmoraNew ctl;
};

}  // namespace velmora::testing

// The query on a template file that both template searches run, clause by clause. Beside
// it, the search times they compare the templates with, in the four-digit form of keys.
#include "search/template_query.h"

#include <velmora/store/record.h>
#include "control/error_regime.h"
#include "control/session_state.h"
#include "search/time_conversion.h"

namespace velmora::search {

const TemplateFile kFixedTemplates{u"TPSSEMAINETYPE",
                                   u"SSELECT TPSSEMAINETYPE AVEC CodeAideSemType = ",
                                   u" AND AVEC DateDebSemType <= ", u" AND AVEC TypeActSemType = ",
                                   u" AND AVEC TypeActSemType <> "};

const TemplateFile kFloatingTemplates{
    u"TPSSEMAINETYPEFLOT", u"SSELECT TPSSEMAINETYPEFLOT AVEC CodeAideFlot = ",
    u" AND AVEC DateDebFlot <= ", u" AND AVEC TypeActFlot = ", u" AND AVEC TypeActFlot <> "};

namespace {

constexpr char16_t kQuote = u'"';

Text quoted(TextView v) {
  return kQuote + Text(v) + kQuote;
}

Text endOfValidityTest(const Text& dateDeb) {
  return u" AND AVEC 1 >= " + quoted(Variable().TheDates().TexteVersDate(dateDeb)) + u" OR = " +
         quoted(u"");
}

}  // namespace

Text templateRequest(const TemplateFile& file, const SearchCriteria& criteria) {
  NorvikRecord request;
  request.set(u"");
  auto append = [&](const Text& piece) { request.set(1, request.r(1) + piece); };
  append(Text(file.head) + quoted(criteria.code));
  if (!criteria.dateFin.empty()) {
    resumeNext([&] {
      append(Text(file.startDateTest) +
             quoted(Variable().TheDates().TexteVersDate(criteria.dateFin)) +
             endOfValidityTest(criteria.dateDeb));
    });
  } else {
    resumeNext([&] { append(endOfValidityTest(criteria.dateDeb)); });
  }
  append(u" AND AVEC 4 <> " + quoted(u""));
  append(Text(criteria.typeAct == u"SSIAD" ? file.activityCare : file.activityOther) +
         quoted(u"S"));
  request.set(2, file.name);
  request.set(3, u"0");
  return request.r();
}

SearchTimes searchTimes(bool cleLue, const SearchCriteria& criteria) {
  const Text& heureDe = criteria.heureDe;
  const Text& heureA = criteria.heureA;
  if (cleLue) return {heureDe, heureA};
  const bool decimal = !Variable().R_Param.empty() && Variable().R_Param->r(20) == u"1";
  const auto convert = decimal ? decimalToFourDigit : minutesToFourDigit;
  SearchTimes times;
  resumeNext([&] { times.start = convert(heureDe); });
  resumeNext([&] { times.end = convert(heureA); });
  return times;
}

}  // namespace velmora::search

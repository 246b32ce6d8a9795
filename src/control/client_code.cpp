// What a host checks of a client code before Init: its form, and whether the store knows
// the client. The check keeps quotes and brackets out of the control's queries.
#include <velmora/control/client_code.h>

#include <array>
#include <utility>

#include <velmora/base/failure.h>
#include <velmora/store/database.h>

namespace velmora {

void checkClientCode(TextView code) {
  if (code.size() != 5) {
    throw Failure(errors::kInvalidCall,
                  "Le code client « " + toUtf8(code) + " » doit avoir 5 caractères.");
  }
  if (code.find_first_of(u"\"[]") != TextView::npos) {
    throw Failure(errors::kInvalidCall, "Le code client « " + toUtf8(code) +
                                            " » ne peut pas contenir de guillemet (\") ni de "
                                            "crochet ([ ou ]).");
  }
}

bool clientKnown(const DatabaseRef& db, const Text& code) {
  try {
    db->OpenFile(u"BESOINSAIDE")->ReadRecord(code);
    return true;
  } catch (const Failure& failure) {
    if (failure.number() != errors::kRecordNotFound && failure.number() != errors::kUnknownFile) {
      throw;
    }
  }
  // Exact matches are written as literals; the task lists' keys begin with the code,
  // which checkClientCode has freed of brackets and quotes.
  const Text literal = literalValue(code);
  const std::array<std::pair<Text, Text>, 3> probes{{
      {u"SSELECT AIDEDETAILTACHE AVEC @ID = \"" + code + u"]\"", u"AIDEDETAILTACHE"},
      {u"SSELECT TPSSEMAINETYPE AVEC CodeAideSemType = " + literal, u"TPSSEMAINETYPE"},
      {u"SSELECT TPSSEMAINETYPEFLOT AVEC CodeAideFlot = " + literal, u"TPSSEMAINETYPEFLOT"},
  }};
  for (const auto& [query, file] : probes) {
    NorvikRecord request;
    request.set(1, query);
    request.set(2, file);
    request.set(3, u"0");
    long count = 0;
    if (db->RunQuery(request.r(), u"", count)->DCount() > 0) return true;
  }
  return false;
}

}  // namespace velmora

// Any query text against the sample account: an answer or a Failure, nothing else.
#include <cstddef>
#include <cstdint>
#include <string>

#include <velmora/base/failure.h>
#include <velmora/store/sqlite_database.h>
#include "control_player.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora;
  static const DatabaseRef db = openDatabase(fuzz::sampleStorePath());
  // The input is the query; an optional line after it names the columns.
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto newline = text.find('\n');
  const Text columns =
      newline == std::string::npos ? Text(u"0") : fromUtf8(text.substr(newline + 1));
  for (const Text file : {u"TACHE", u"TPSSEMAINETYPE"}) {
    try {
      long count = 0;
      Text request = fromUtf8(text.substr(0, newline));
      request.append(1, kAttributeMark).append(file).append(1, kAttributeMark).append(columns);
      (void)db->RunQuery(request, u"", count)->DCount();
    } catch (const Failure&) {
    }
  }
  return 0;
}

// Any query text against a small account: an answer or a Failure, nothing else.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <tuple>

#include <unistd.h>

#include <velmora/base/failure.h>
#include <velmora/store/sqlite_database.h>
#include <velmora/store/writer.h>
#include "store/engine/account_layout.h"

namespace {

using namespace velmora;

// A small account in a file of this run, removed once it is open.
DatabaseRef makeAccount() {
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("velmora-fuzz-query-" + std::to_string(::getpid()) + ".db"))
                               .string();
  Batch batch = standardLayout();
  for (const auto& [file, key, body] : {
           std::tuple{u"TACHE", u"Repassage", u"1\uF8FEG-LINGE\uF8FE\uF8FEN\uF8FE30"},
           {u"TACHE", u"Vitres", u"2\uF8FEG-MAISON\uF8FD G-SOL\uF8FE\uF8FEO\uF8FE45"},
           {u"TPSSEMAINETYPE", u"0000121512208501A",
            u"\uF8FE1000\uF8FEA\uF8FERepassage\uF8FD Vitres\uF8FE30\uF8FD45"},
       }) {
    batch.putRecord(file, key, NorvikRecord(body));
  }
  std::filesystem::remove(path);
  StoreWriter(path, StoreWriter::Sync::Fast).apply(batch);
  DatabaseRef db = openDatabase(path);
  std::filesystem::remove(path);  // the open connection keeps reading it
  long count = 0;
  db->RunQuery(u"SSELECT TACHE\uF8FETACHE", u"", count);
  if (count != 2) __builtin_trap();
  return db;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const DatabaseRef db = makeAccount();
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

// Any query text against a small account: an answer or a Failure, nothing else.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>

#include <unistd.h>

#include <velmora/base/failure.h>
#include <velmora/store/sqlite_database.h>
#include <velmora/store/writer.h>
#include "store/account_layout.h"

namespace {

using namespace velmora;

// A small account in a file of this run, removed at exit.
struct Account {
  std::filesystem::path path = std::filesystem::temp_directory_path() /
                               ("velmora-fuzz-query-" + std::to_string(::getpid()) + ".db");
  DatabaseRef db;

  Account() {
    std::filesystem::remove(path);
    Batch batch = standardLayout();
    const auto put = [&](const char16_t* file, const char16_t* key, const char16_t* body) {
      batch.putRecord(file, key, NorvikRecord(body));
    };
    put(u"TACHE", u"Repassage", u"1\uF8FEG-LINGE\uF8FE\uF8FEN\uF8FE30");
    put(u"TACHE", u"Vitres", u"2\uF8FEG-MAISON\uF8FD G-SOL\uF8FE\uF8FEO\uF8FE45");
    put(u"TPSSEMAINETYPE", u"0000121512208501A",
        u"\uF8FE1000\uF8FEA\uF8FERepassage\uF8FD Vitres\uF8FE30\uF8FD45");
    put(u"TPSSEMAINETYPEFLOT", u"00001215120850CD", u"\uF8FE1130\uF8FES\uF8FE010101");
    put(u"AIDEDETAILTACHE", u"0000121512", u"Repassage\uF8FE30");
    StoreWriter(path.string(), StoreWriter::Sync::Fast).apply(batch);
    db = openDatabase(path.string());
  }
  ~Account() {
    db.reset();
    std::error_code ec;
    std::filesystem::remove(path, ec);
  }
};

DatabaseRef account() {
  static Account account;
  return account.db;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // The input is the query; an optional line after it names the columns.
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto newline = text.find('\n');
  const Text query = fromUtf8(text.substr(0, newline));
  const Text columns =
      newline == std::string::npos ? Text(u"0") : fromUtf8(text.substr(newline + 1));
  for (const Text& file : {Text(u"TACHE"), Text(u"TPSSEMAINETYPE")}) {
    Text request = query;
    request += kAttributeMark;
    request += file;
    request += kAttributeMark;
    request += columns;
    try {
      long count = 0;
      const auto answer = account()->RunQuery(request, u"", count);
      (void)answer->DCount();
    } catch (const Failure&) {
    }
  }
  return 0;
}

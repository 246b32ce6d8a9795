#include <algorithm>
#include <iostream>
#include <limits>

#include <velmora/store/record.h>
#include <velmora/store/sqlite_database.h>
#include "base/message.h"
#include "command.h"
#include "store/query/syntax.h"

namespace velmora::cli {

namespace {

Text joinWords(const std::vector<std::string>& words) {
  std::string joined;
  for (const auto& word : words) {
    if (!joined.empty()) joined += ' ';
    joined += word;
  }
  return fromUtf8(joined);
}

Text cellText(const Text& cell) {
  Text out;
  for (const char16_t c : cell) {
    if (c == kSubvalueMark) {
      out += u" | ";
    } else {
      out.push_back(c);
    }
  }
  return out;
}

// Characters as a terminal shows them: a surrogate pair is one.
std::size_t width(const Text& text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char16_t c) { return c < 0xDC00 || c > 0xDFFF; }));
}

// A column is as wide as its widest cell up to this; a wider cell is printed whole and
// pushes the rest of its own line only, so one huge cell cannot pad every line.
constexpr std::size_t kWidestColumn = 40;

void printTable(const NorvikRecord& answer, std::size_t columns) {
  std::vector<std::vector<Text>> rows;
  std::vector<std::size_t> widths(columns, 0);
  for (int i = 1; i <= answer.DCount(); ++i) {
    std::vector<Text> row;
    for (std::size_t j = 0; j < columns; ++j) {
      row.push_back(cellText(answer.r(i, static_cast<int>(j) + 1)));
      widths[j] = std::max(widths[j], std::min(width(row.back()), kWidestColumn));
    }
    rows.push_back(std::move(row));
  }
  for (const auto& row : rows) {
    Text line;
    for (std::size_t j = 0; j < columns; ++j) {
      line += row[j];
      const std::size_t shown = width(row[j]);
      if (j + 1 < columns) line += Text(shown < widths[j] ? widths[j] - shown + 2 : 2, u' ');
    }
    std::cout << toUtf8(line) << '\n';
  }
}

int run(Arguments& args) {
  const std::string database = requiredDatabase(args);
  const std::string columns = args.option("columns").value_or("0");
  // The query is every word after the options, however many.
  const Text query = joinWords(args.positionals(1, std::numeric_limits<std::size_t>::max()));
  const auto db = openDatabase(database);
  const Text request =
      query + kAttributeMark + store::parseQuery(query).file + kAttributeMark + fromUtf8(columns);
  long count = 0;
  const auto answer = db->RunQuery(request, u"", count);
  const auto columnCount =
      static_cast<std::size_t>(std::count(columns.begin(), columns.end(), ' ') + 1);
  printTable(*answer, columnCount);
  return 0;
}

}  // namespace

const Command& queryCommand() {
  static const Command command{
      "query", toSay("run a query and print its answer"),
      toSay(
          "Usage: velmora query --db PATH 'SSELECT FILE [AVEC ...] [PAR ...]' [--columns '0 1 4']\n"
          "  Runs the query on a read-only connection and prints one line per hit, the\n"
          "  columns aligned up to 40 characters (a wider cell is printed whole and only\n"
          "  moves its own line); column 0 is the key (the default), n attribute n. The\n"
          "  values of a multi-valued attribute are separated by \" | \".\n"),
      &run};
  return command;
}

}  // namespace velmora::cli

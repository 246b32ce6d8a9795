#include <iostream>

#include <velmora/store/record.h>
#include <velmora/store/sqlite_database.h>
#include "base/message.h"
#include "command.h"

namespace velmora::cli {

namespace {

std::string attributeLine(const std::vector<Text>& values) {
  Text line;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) line += u" | ";
    for (const char16_t c : values[i]) {
      if (c == kSubvalueMark) {
        line += u" ; ";
      } else {
        line.push_back(c);
      }
    }
  }
  return toUtf8(line);
}

int run(Arguments& args) {
  const std::string database = requiredDatabase(args);
  const auto words = args.positionals(2, 2);
  const auto db = openDatabase(database);
  const auto record = db->OpenFile(fromUtf8(words[0]))->ReadRecord(fromUtf8(words[1]));
  for (const auto& values : record->attributes()) std::cout << attributeLine(values) << '\n';
  return 0;
}

}  // namespace

const Command& getCommand() {
  static const Command command{
      "get", toSay("print one record"),
      toSay("Usage: velmora get --db PATH FILE KEY\n"
            "  Prints the record of KEY in FILE, one attribute per line, in order from 1;\n"
            "  values are separated by \" | \" and subvalues by \" ; \". An empty attribute is\n"
            "  an empty line. A missing key is an error.\n"),
      &run};
  return command;
}

}  // namespace velmora::cli

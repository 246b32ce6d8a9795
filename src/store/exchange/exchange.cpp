// The exchange format: JSON Lines read whole into a batch before anything is applied, and a
// store written out in code unit order. A bad line fails naming the source, the line and the character.
#include <velmora/store/exchange.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include <velmora/base/failure.h>
#include "base/message.h"
#include "store/engine/read_connection.h"

namespace velmora {

namespace {

using Json = nlohmann::ordered_json;

// A mistake of one line, named as FILE:LINE: or FILE:LINE:POSITION: (from 1, in characters,
// as an editor counts them) before what is wrong and what to do.
class LineError {
 public:
  LineError(std::string source, long line) : source_(std::move(source)), line_(line) {}
  [[noreturn]] void operator()(const std::string& what) const {
    throw Failure(errors::kBadImport, say("{}:{}: {}", {source_, std::to_string(line_), what}));
  }
  [[noreturn]] void at(std::size_t position, const std::string& what) const {
    throw Failure(errors::kBadImport, say("{}:{}:{}: {}", {source_, std::to_string(line_),
                                                           std::to_string(position), what}));
  }

 private:
  std::string source_;
  long line_;
};

// The byte offset where the line stops being UTF-8 text (overlong forms, surrogates and
// code points past U+10FFFF included), or npos.
std::size_t firstBadByte(std::string_view line) {
  std::size_t i = 0;
  while (i < line.size()) {
    const auto c = static_cast<unsigned char>(line[i]);
    std::size_t length = 0;
    char32_t point = 0;
    if (c < 0x80) {
      ++i;
      continue;
    }
    if (c >= 0xC2 && c <= 0xDF) {
      length = 2;
      point = c & 0x1F;
    } else if (c >= 0xE0 && c <= 0xEF) {
      length = 3;
      point = c & 0x0F;
    } else if (c >= 0xF0 && c <= 0xF4) {
      length = 4;
      point = c & 0x07;
    } else {
      return i;
    }
    if (i + length > line.size()) return i;
    for (std::size_t k = 1; k < length; ++k) {
      const auto next = static_cast<unsigned char>(line[i + k]);
      if ((next & 0xC0) != 0x80) return i;
      point = (point << 6) | (next & 0x3F);
    }
    const bool overlong = (length == 3 && point < 0x800) || (length == 4 && point < 0x10000);
    if (overlong || (point >= 0xD800 && point <= 0xDFFF) || point > 0x10FFFF) return i;
    i += length;
  }
  return std::string_view::npos;
}

// The character position (from 1) of a byte offset of a UTF-8 line.
std::size_t characterPosition(std::string_view line, std::size_t byte) {
  std::size_t position = 1;
  for (std::size_t i = 0; i < byte && i < line.size(); ++i) {
    if ((static_cast<unsigned char>(line[i]) & 0xC0) != 0x80) ++position;
  }
  return position;
}

// One JSON object from a line of text, each mistake named in our words with its position:
// not UTF-8, a NUL, a line cut short, a number past a double, a member given twice (the
// JSON library would silently keep the last).
Json parseLine(std::string_view line, const LineError& fail) {
  if (const auto nul = line.find('\0'); nul != std::string_view::npos) {
    fail.at(characterPosition(line, nul),
            say("a NUL byte; an exchange file is text, one JSON object a line"));
  }
  if (const auto bad = firstBadByte(line); bad != std::string_view::npos) {
    const auto byte = static_cast<unsigned char>(line[bad]);
    const std::string hex = {'0', 'x', "0123456789ABCDEF"[byte >> 4],
                             "0123456789ABCDEF"[byte & 15]};
    fail.at(characterPosition(line, bad),
            say("byte {} is not UTF-8 text; save the file as UTF-8", {hex}));
  }
  std::vector<std::vector<std::string>> members;  // of each object open, innermost last
  const auto watch = [&](int, Json::parse_event_t event, Json& parsed) {
    if (event == Json::parse_event_t::object_start) members.emplace_back();
    if (event == Json::parse_event_t::object_end) members.pop_back();
    if (event == Json::parse_event_t::key) {
      const std::string name = parsed.get<std::string>();
      auto& seen = members.back();
      if (std::find(seen.begin(), seen.end(), name) != seen.end()) {
        fail(say("the member \"{}\" is given twice; keep one", {excerpt(name)}));
      }
      seen.push_back(name);
    }
    return true;
  };
  try {
    return Json::parse(line.begin(), line.end(), watch);
  } catch (const Json::parse_error& e) {
    if (e.byte > line.size()) {
      fail.at(characterPosition(line, line.size()),
              say("the line ends before its JSON object does; it may have been cut short, "
                  "or an object spread over several lines (write one object a line)"));
    }
    const std::size_t byte = e.byte == 0 ? 0 : e.byte - 1;
    fail.at(characterPosition(line, byte),
            say("this is not JSON from here on (\"{}\"); write one JSON object a line",
                {excerpt(line.substr(byte), 20)}));
  } catch (const Json::out_of_range&) {
    fail(say("a number is too large for a double (as 1e999); write it as a string"));
  }
}

bool isBlankOrComment(const std::string& line) {
  const auto first = line.find_first_not_of(" \t\r");
  return first == std::string::npos || line[first] == '#';
}

Text stringMember(const Json& object, const char* name, const LineError& fail) {
  const auto it = object.find(name);
  if (it == object.end()) fail(say("\"{}\" is missing", {name}));
  if (!it->is_string()) fail(say("\"{}\" must be a string", {name}));
  return fromUtf8(it->get<std::string>());
}

void checkMembers(const Json& object, std::initializer_list<const char*> allowed,
                  const LineError& fail) {
  for (const auto& [name, value] : object.items()) {
    if (std::find(allowed.begin(), allowed.end(), name) == allowed.end()) {
      fail(say("unexpected member \"{}\"", {excerpt(name)}));
    }
  }
}

Text valueText(const Json& value, int attribute, const LineError& fail) {
  if (!value.is_string()) {
    fail(say("attribute {}: a value must be a string", {std::to_string(attribute)}));
  }
  Text text = fromUtf8(value.get<std::string>());
  if (text.find(kAttributeMark) != Text::npos || text.find(kValueMark) != Text::npos) {
    fail(
        say("attribute {}: a value holds an attribute or value mark; write values as an array "
            "instead",
            {std::to_string(attribute)}));
  }
  return text;
}

NorvikRecord recordOf(const Json& attributes, const LineError& fail) {
  if (!attributes.is_array()) fail(say("\"record\" must be an array of attributes"));
  NorvikRecord record;
  int number = 0;
  for (const auto& attribute : attributes) {
    ++number;
    std::vector<Text> values;
    if (attribute.is_array()) {
      if (attribute.empty()) {
        fail(say("attribute {}: an array of values cannot be empty", {std::to_string(number)}));
      }
      for (const auto& value : attribute) values.push_back(valueText(value, number, fail));
    } else {
      values.push_back(valueText(attribute, number, fail));
    }
    record.appendAttribute(std::move(values));
  }
  return record;
}

int positiveInt(const Json& value, const char* what, int minimum, const LineError& fail) {
  if (!value.is_number_integer() || value.get<long long>() < minimum ||
      value.get<long long>() > 1'000'000) {
    fail(say("{} must be a whole number from {} to 1000000", {what, std::to_string(minimum)}));
  }
  return static_cast<int>(value.get<long long>());
}

DictionaryItem itemOf(const Json& object, const LineError& fail) {
  checkMembers(object, {"dictionary", "name", "key", "attribute"}, fail);
  DictionaryItem item{stringMember(object, "dictionary", fail), stringMember(object, "name", fail)};
  const bool hasKey = object.contains("key");
  const bool hasAttribute = object.contains("attribute");
  if (hasKey == hasAttribute) fail(say(R"(a dictionary item needs either "key" or "attribute")"));
  if (hasAttribute) {
    item.attribute = positiveInt(object["attribute"], "\"attribute\"", 0, fail);
    return item;
  }
  const auto& key = object["key"];
  if (!key.is_array() || key.size() != 2) fail(say("\"key\" must be [start, length]"));
  item.keyStart = positiveInt(key[0], "the key part's start", 1, fail);
  item.keyLength = positiveInt(key[1], "the key part's length", 1, fail);
  return item;
}

void addLine(Batch& batch, const Json& object, const LineError& fail) {
  if (!object.is_object())
    fail(say(R"(expected one JSON object on the line, as {"file": "NAME"})"));
  try {
    if (object.contains("dictionary")) {
      batch.defineItem(itemOf(object, fail));
      return;
    }
    if (!object.contains("file")) fail(say(R"(expected "file" or "dictionary")"));
    if (!object.contains("key") && !object.contains("record")) {
      checkMembers(object, {"file"}, fail);
      batch.createFile(stringMember(object, "file", fail));
      return;
    }
    checkMembers(object, {"file", "key", "record"}, fail);
    const Text file = stringMember(object, "file", fail);
    const Text key = stringMember(object, "key", fail);
    if (!object.contains("record")) fail(say("\"record\" is missing"));
    batch.putRecord(file, key, recordOf(object["record"], fail));
  } catch (const Failure& f) {
    if (f.isBadImport()) throw;
    fail(f.what());
  }
}

Json attributeJson(const std::vector<Text>& values) {
  if (values.size() == 1) return toUtf8(values.front());
  Json array = Json::array();
  for (const auto& value : values) array.push_back(toUtf8(value));
  return array;
}

void writeLine(std::ostream& out, const Json& line) {
  out << line.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
}

bool byCodeUnits(const std::string& a, const std::string& b) {
  return fromUtf8(a) < fromUtf8(b);
}

}  // namespace

Batch readExchange(std::istream& in, const std::string& sourceName) {
  Batch batch;
  std::string line;
  long number = 0;
  while (std::getline(in, line)) {
    ++number;
    if (number == 1 && line.rfind("\xEF\xBB\xBF", 0) == 0) line.erase(0, 3);  // a BOM
    if (isBlankOrComment(line)) continue;
    const LineError fail(sourceName, number);
    if (number == 1 && line.rfind(std::string_view("SQLite format 3\0", 16), 0) == 0) {
      throw Failure(errors::kBadImport,
                    say("{} is an SQLite database, not an exchange file; to copy a store, "
                        "export it first (velmora export --db {} FILE)",
                        {sourceName, sourceName}));
    }
    addLine(batch, parseLine(line, fail), fail);
  }
  if (in.bad()) LineError(sourceName, number)(say("the file cannot be read further"));
  return batch;
}

void writeExchange(const std::string& databasePath, std::ostream& out) {
  const auto connection = store::connectToStore(databasePath);
  const store::ReadConnection::Snapshot snapshot(*connection);

  std::vector<std::string> files;
  for (const Text& name : connection->fileNames()) files.push_back(toUtf8(name));
  std::sort(files.begin(), files.end(), byCodeUnits);
  for (const auto& file : files) writeLine(out, Json{{"file", file}});

  struct Item {
    std::string file, name;
    long long attribute, start, length;
  };
  std::vector<Item> items;
  for (const DictionaryItem& item : connection->dictionaryItems()) {
    items.push_back(
        {toUtf8(item.file), toUtf8(item.name), item.attribute, item.keyStart, item.keyLength});
  }
  std::sort(items.begin(), items.end(), [](const Item& a, const Item& b) {
    if (a.file != b.file) return byCodeUnits(a.file, b.file);
    return byCodeUnits(a.name, b.name);
  });
  for (const auto& item : items) {
    Json line{{"dictionary", item.file}, {"name", item.name}};
    if (item.attribute >= 0) {
      line["attribute"] = item.attribute;
    } else {
      line["key"] = Json::array({item.start, item.length});
    }
    writeLine(out, line);
  }

  for (const auto& file : files) {
    const Text fileName = fromUtf8(file);
    connection->scan(fileName, {}, {}, true, [&](auto key, auto body) {
      const NorvikRecord record(store::decodeText(body));
      Json attributes = Json::array();
      for (const auto& values : record.attributes()) attributes.push_back(attributeJson(values));
      writeLine(out, Json{{"file", file},
                          {"key", toUtf8(store::decodeText(key))},
                          {"record", std::move(attributes)}});
    });
  }
  if (!out) throw Failure(errors::kDatabase, say("export of {}: cannot write", {databasePath}));
}

}  // namespace velmora

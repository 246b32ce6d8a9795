#include <velmora/store/exchange.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include <velmora/base/failure.h>
#include "store/read_connection.h"

namespace velmora {

namespace {

using Json = nlohmann::ordered_json;

class LineError {
 public:
  LineError(const std::string& source, long line) : where_(source + ":" + std::to_string(line)) {}
  [[noreturn]] void operator()(const std::string& what) const {
    throw Failure(errors::kBadImport, where_ + ": " + what);
  }

 private:
  std::string where_;
};

bool isBlankOrComment(const std::string& line) {
  const auto first = line.find_first_not_of(" \t\r");
  return first == std::string::npos || line[first] == '#';
}

Text stringMember(const Json& object, const char* name, const LineError& fail) {
  const auto it = object.find(name);
  if (it == object.end()) fail(std::string("\"") + name + "\" is missing");
  if (!it->is_string()) fail(std::string("\"") + name + "\" must be a string");
  return fromUtf8(it->get<std::string>());
}

void checkMembers(const Json& object, std::initializer_list<const char*> allowed,
                  const LineError& fail) {
  for (const auto& [name, value] : object.items()) {
    if (std::find(allowed.begin(), allowed.end(), name) == allowed.end()) {
      fail("unexpected member \"" + name + "\"");
    }
  }
}

Text valueText(const Json& value, int attribute, const LineError& fail) {
  if (!value.is_string()) {
    fail("attribute " + std::to_string(attribute) + ": a value must be a string");
  }
  Text text = fromUtf8(value.get<std::string>());
  if (text.find(kAttributeMark) != Text::npos || text.find(kValueMark) != Text::npos) {
    fail("attribute " + std::to_string(attribute) +
         ": a value holds an attribute or value mark; write values as an array instead");
  }
  return text;
}

NorvikRecord recordOf(const Json& attributes, const LineError& fail) {
  if (!attributes.is_array()) fail("\"record\" must be an array of attributes");
  NorvikRecord record;
  int number = 0;
  for (const auto& attribute : attributes) {
    ++number;
    std::vector<Text> values;
    if (attribute.is_array()) {
      if (attribute.empty()) {
        fail("attribute " + std::to_string(number) + ": an array of values cannot be empty");
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
    fail(std::string(what) + " must be a whole number of at least " + std::to_string(minimum));
  }
  return static_cast<int>(value.get<long long>());
}

DictionaryItem itemOf(const Json& object, const LineError& fail) {
  checkMembers(object, {"dictionary", "name", "key", "attribute"}, fail);
  DictionaryItem item{stringMember(object, "dictionary", fail), stringMember(object, "name", fail)};
  const bool hasKey = object.contains("key");
  const bool hasAttribute = object.contains("attribute");
  if (hasKey == hasAttribute) fail(R"(a dictionary item needs either "key" or "attribute")");
  if (hasAttribute) {
    item.attribute = positiveInt(object["attribute"], "\"attribute\"", 0, fail);
    return item;
  }
  const auto& key = object["key"];
  if (!key.is_array() || key.size() != 2) fail("\"key\" must be [start, length]");
  item.keyStart = positiveInt(key[0], "the key part's start", 1, fail);
  item.keyLength = positiveInt(key[1], "the key part's length", 1, fail);
  return item;
}

void addLine(Batch& batch, const Json& object, const LineError& fail) {
  if (!object.is_object()) fail("expected one JSON object on the line");
  try {
    if (object.contains("dictionary")) {
      batch.defineItem(itemOf(object, fail));
      return;
    }
    if (!object.contains("file")) fail(R"(expected "file" or "dictionary")");
    if (!object.contains("key") && !object.contains("record")) {
      checkMembers(object, {"file"}, fail);
      batch.createFile(stringMember(object, "file", fail));
      return;
    }
    checkMembers(object, {"file", "key", "record"}, fail);
    const Text file = stringMember(object, "file", fail);
    const Text key = stringMember(object, "key", fail);
    if (!object.contains("record")) fail("\"record\" is missing");
    batch.putRecord(file, key, recordOf(object["record"], fail));
  } catch (const Failure& f) {
    if (f.number() == errors::kBadImport) throw;
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
    Json object;
    try {
      object = Json::parse(line);
    } catch (const Json::exception& e) {
      // parse_error, and out_of_range for a number past a double (1e310)
      fail(std::string("not a JSON object (") + e.what() + ")");
    }
    addLine(batch, object, fail);
  }
  if (in.bad()) LineError(sourceName, number)("the file cannot be read further");
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
  if (!out) throw Failure(errors::kDatabase, "export of " + databasePath + ": cannot write");
}

}  // namespace velmora

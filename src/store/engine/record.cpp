// NorvikRecord: a record's attributes and values kept as structures, read by number and
// written in place. Reading what isn't there gives ""; writing below 1 fails as an invalid call.
#include <velmora/store/record.h>

#include <algorithm>
#include <string>

#include <velmora/base/failure.h>

namespace velmora {

namespace {

const Text kEmpty;

bool isEmptyAttribute(const std::vector<Text>& a) {
  return a.size() == 1 && a.front().empty();
}

void checkNumber(int n, const char* what) {
  if (n < 1) {
    throw Failure(errors::kInvalidCall, std::string("appel non valide : numéro ") + what + " " +
                                            std::to_string(n) + ", il faut 1 au moins");
  }
}

}  // namespace

NorvikRecord::Attribute NorvikRecord::splitValues(TextView text) {
  Attribute values;
  std::size_t start = 0;
  for (;;) {
    const auto at = text.find(kValueMark, start);
    if (at == TextView::npos) {
      values.emplace_back(text.substr(start));
      return values;
    }
    values.emplace_back(text.substr(start, at - start));
    start = at + 1;
  }
}

Text NorvikRecord::r() const {
  Text out;
  for (std::size_t i = 0; i < attributes_.size(); ++i) {
    if (i > 0) out.push_back(kAttributeMark);
    const auto& values = attributes_[i];
    for (std::size_t j = 0; j < values.size(); ++j) {
      if (j > 0) out.push_back(kValueMark);
      out += values[j];
    }
  }
  return out;
}

void NorvikRecord::set(TextView text) {
  attributes_.clear();
  if (text.empty()) return;
  std::size_t start = 0;
  for (;;) {
    const auto at = text.find(kAttributeMark, start);
    const auto piece = text.substr(start, at == TextView::npos ? TextView::npos : at - start);
    attributes_.push_back(splitValues(piece));
    if (at == TextView::npos) return;
    start = at + 1;
  }
}

Text NorvikRecord::r(int attribute) const {
  if (attribute < 1 || static_cast<std::size_t>(attribute) > attributes_.size()) return {};
  const auto& values = attributes_[attribute - 1];
  if (values.size() == 1) return values.front();
  Text out;
  for (std::size_t j = 0; j < values.size(); ++j) {
    if (j > 0) out.push_back(kValueMark);
    out += values[j];
  }
  return out;
}

const Text& NorvikRecord::r(int attribute, int value) const {
  if (attribute < 1 || value < 1 || static_cast<std::size_t>(attribute) > attributes_.size()) {
    return kEmpty;
  }
  const auto& values = attributes_[attribute - 1];
  if (static_cast<std::size_t>(value) > values.size()) return kEmpty;
  return values[value - 1];
}

void NorvikRecord::ensureAttribute(int attribute) {
  if (static_cast<std::size_t>(attribute) > attributes_.size()) {
    attributes_.resize(static_cast<std::size_t>(attribute), Attribute{Text{}});
  }
}

void NorvikRecord::set(int attribute, TextView text) {
  checkNumber(attribute, "d'attribut");
  if (text.find(kAttributeMark) != TextView::npos) {
    // A text with attribute marks stands for several attributes, as in the text form.
    NorvikRecord pieces(text);
    ensureAttribute(attribute);
    auto at = attributes_.begin() + (attribute - 1);
    at = attributes_.erase(at);
    attributes_.insert(at, pieces.attributes_.begin(), pieces.attributes_.end());
    return;
  }
  ensureAttribute(attribute);
  attributes_[attribute - 1] = splitValues(text);
}

void NorvikRecord::set(int attribute, int value, TextView text) {
  checkNumber(attribute, "d'attribut");
  checkNumber(value, "de valeur");
  if (text.find(kAttributeMark) != TextView::npos || text.find(kValueMark) != TextView::npos) {
    // Marks inside a value reshape the record; go through the text form of the attribute.
    ensureAttribute(attribute);
    auto values = attributes_[attribute - 1];
    if (static_cast<std::size_t>(value) > values.size()) values.resize(value);
    values[value - 1] = Text(text);
    Text joined;
    for (std::size_t j = 0; j < values.size(); ++j) {
      if (j > 0) joined.push_back(kValueMark);
      joined += values[j];
    }
    set(attribute, joined);
    return;
  }
  ensureAttribute(attribute);
  auto& values = attributes_[attribute - 1];
  if (static_cast<std::size_t>(value) > values.size())
    values.resize(static_cast<std::size_t>(value));
  values[value - 1] = Text(text);
}

int NorvikRecord::DCount() const {
  if (attributes_.size() == 1 && isEmptyAttribute(attributes_.front())) return 0;
  return static_cast<int>(attributes_.size());
}

int NorvikRecord::DCount(int attribute) const {
  if (attribute < 1 || static_cast<std::size_t>(attribute) > attributes_.size()) return 0;
  const auto& values = attributes_[attribute - 1];
  return isEmptyAttribute(values) ? 0 : static_cast<int>(values.size());
}

void NorvikRecord::swapAttributes(int a, int b) {
  checkNumber(a, "attribute");
  checkNumber(b, "attribute");
  ensureAttribute(std::max(a, b));
  attributes_[static_cast<std::size_t>(a - 1)].swap(attributes_[static_cast<std::size_t>(b - 1)]);
}

void NorvikRecord::Delete(int attribute) {
  if (attribute < 1 || static_cast<std::size_t>(attribute) > attributes_.size()) return;
  attributes_.erase(attributes_.begin() + (attribute - 1));
}

void NorvikRecord::appendAttribute(std::vector<Text> values) {
  if (values.empty()) values.emplace_back();
  attributes_.push_back(std::move(values));
}

}  // namespace velmora

// NorvikRecord: a dynamic array of attributes that hold values, all text, numbered
// from 1. Stored as structures so that indexed access is O(1); the delimited text
// form is built only when asked for.
#pragma once

#include <velmora/export.h>

#include <vector>

#include <velmora/base/text.h>
#include <velmora/store/ref.h>

namespace velmora {

// Marks of the text form: private-use characters, so that no French text can hold one.
inline constexpr char16_t kAttributeMark = 0xF8FE;
inline constexpr char16_t kValueMark = 0xF8FD;
inline constexpr char16_t kSubvalueMark = 0xF8FC;

// A record is a value: copying copies, and nothing else sees a change. Share one through
// RecordRef, as the control shares its working records. Not synchronised: a record
// written by one thread is not read by another at the same time. Reading never fails;
// writing fails only on a number below 1.
class VELMORA_EXPORT NorvikRecord {
 public:
  NorvikRecord() = default;
  explicit NorvikRecord(TextView text) { set(text); }

  // r(): the whole text form; r = v replaces everything.
  Text r() const;
  void set(TextView text);

  // r(i): attribute i as text (its values joined by value marks); "" when absent,
  // attribute 0 and numbers below it included.
  Text r(int attribute) const;
  // r(i, j): value j of attribute i; "" when absent, also for i or j of 0 or below. The
  // reference stays valid until the record is next written.
  const Text& r(int attribute, int value) const;
  // Writes extend the record with empty attributes and values as needed. A number
  // below 1 (0 included) fails with errors::kInvalidCall and changes nothing.
  void set(int attribute, TextView text);
  void set(int attribute, int value, TextView text);

  // Number of attributes as the text form has them: "" has none, and a trailing
  // empty attribute that was written counts.
  int DCount() const;
  // Number of values of attribute i: 0 when it is empty or absent.
  int DCount(int attribute) const;
  // Exchanges attributes a and b, extending the record with empty attributes up to both
  // first: the same as writing each with the other's text through a temporary. A number
  // below 1 fails with errors::kInvalidCall.
  void swapAttributes(int a, int b);
  // Removes attribute i; those behind it move up by one. Nothing when absent.
  void Delete(int attribute);

  // Appends one attribute with the given values; faster than set() for builders.
  void appendAttribute(std::vector<Text> values);
  // Direct read access for code that walks many cells; valid until the next write.
  const std::vector<std::vector<Text>>& attributes() const { return attributes_; }

  friend bool operator==(const NorvikRecord& a, const NorvikRecord& b) { return a.r() == b.r(); }

 private:
  using Attribute = std::vector<Text>;  // never empty: an empty attribute is one ""
  static Attribute splitValues(TextView text);
  void ensureAttribute(int attribute);

  std::vector<Attribute> attributes_;
};

using RecordRef = Ref<NorvikRecord>;

// A new empty record behind a reference of its own.
inline RecordRef newRecord() {
  return RecordRef::make();
}

}  // namespace velmora

// The one exception type of the system: a number and a message, like the host
// platform's error object, with a named constant and a predicate for each number.
#pragma once

#include <velmora/export.h>

#include <stdexcept>
#include <string>

namespace velmora {

namespace errors {
inline constexpr long kRecordNotFound = -2147221493;  // a key without a record
inline constexpr long kObjectNotSet = 91;             // a call through an empty reference
inline constexpr long kTypeMismatch = 13;             // text that is not a number or a date
inline constexpr long kInvalidCall = 5;               // an argument out of range
inline constexpr long kOverflow = 6;                  // a value past its type's range
inline constexpr long kUnknownFile = -2147221492;     // OpenFile or a query on an unknown file
inline constexpr long kBadQuery = -2147221491;        // a malformed query text or request
inline constexpr long kUnknownName = -2147221490;     // an unknown dictionary name
inline constexpr long kDatabase = -2147221489;        // the database file cannot be used
inline constexpr long kBadImport = -2147221488;       // an import file that cannot be read whole
inline constexpr long kBusy = -2147221487;            // another program holds the store's lock
}  // namespace errors

// A Failure is a value: copied freely, safe to read from any thread once thrown. Every
// function of the store and the control that can fail throws one, with one of the numbers
// above and a message that says what was found, where, and what to do; it never holds a
// password. Test the number with the predicates below rather than comparing raw numbers.
class VELMORA_EXPORT Failure : public std::runtime_error {
 public:
  Failure(long number, const std::string& message) : std::runtime_error(message), number_(number) {}
  // The number: one of errors::, which the predicates below name.
  long number() const noexcept { return number_; }

  bool isNotFound() const noexcept { return number_ == errors::kRecordNotFound; }
  bool isObjectNotSet() const noexcept { return number_ == errors::kObjectNotSet; }
  bool isTypeMismatch() const noexcept { return number_ == errors::kTypeMismatch; }
  bool isInvalidCall() const noexcept { return number_ == errors::kInvalidCall; }
  bool isOverflow() const noexcept { return number_ == errors::kOverflow; }
  bool isUnknownFile() const noexcept { return number_ == errors::kUnknownFile; }
  bool isBadQuery() const noexcept { return number_ == errors::kBadQuery; }
  bool isUnknownName() const noexcept { return number_ == errors::kUnknownName; }
  bool isDatabase() const noexcept { return number_ == errors::kDatabase; }
  bool isBadImport() const noexcept { return number_ == errors::kBadImport; }
  bool isBusy() const noexcept { return number_ == errors::kBusy; }

 private:
  long number_;
};

}  // namespace velmora

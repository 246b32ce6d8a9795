// The layouts of the three keys a host may hand to Init instead of a bare client code,
// and under which the weekly templates are listed. Fields are read as the platform's Mid
// reads them (first character 1); dates are in the store's internal five characters.
//
//   intervention detail  client 6-10, date 11-15, day 22, start 23-26
//   fixed template       client 1-5, date 6-10, day 11, start 12-15; 17 characters
//   floating template    client 1-5, date 6-10, start 11-14; 16 characters
//
// The day of a key is one digit; a floating template holds its days in attribute 10.
#pragma once

#include <cstddef>

#include <velmora/base/text.h>

namespace velmora::search {

// Characters start to start + length - 1 of a key.
struct KeyField {
  int start;
  int length;
  Text in(TextView key) const { return mid(key, start, length); }
};

struct DetailKey {
  static constexpr KeyField client{6, 5};
  static constexpr KeyField date{11, 5};
  static constexpr KeyField day{22, 1};
  static constexpr KeyField start{23, 4};
};

struct FixedTemplateKey {
  static constexpr std::size_t length = 17;
  static constexpr KeyField record{1, 17};  // what names the record in TPSSEMAINETYPE
  static constexpr KeyField client{1, 5};
  static constexpr KeyField date{6, 5};
  static constexpr KeyField day{11, 1};
  static constexpr KeyField start{12, 4};
};

struct FloatingTemplateKey {
  static constexpr std::size_t length = 16;
  static constexpr KeyField record{1, 16};  // what names the record in TPSSEMAINETYPEFLOT
  static constexpr KeyField client{1, 5};
  static constexpr KeyField date{6, 5};
  static constexpr KeyField start{11, 4};
};

}  // namespace velmora::search

#include <gtest/gtest.h>

#include <functional>

#include <velmora/base/failure.h>
#include <velmora/store/record.h>

namespace velmora {
namespace {

const Text AM(1, kAttributeMark);
const Text VM(1, kValueMark);

TEST(Record, EmptyRecordReadsEmptyEverywhere) {
  const NorvikRecord record;
  EXPECT_EQ(record.r(), u"");
  EXPECT_EQ(record.DCount(), 0);
  EXPECT_EQ(record.r(1), u"");
  EXPECT_EQ(record.r(3, 2), u"");
  EXPECT_EQ(record.r(0), u"");
  EXPECT_EQ(record.r(0, 1), u"");
  EXPECT_EQ(record.r(1, 0), u"");
  EXPECT_EQ(record.r(-4, -1), u"");
  EXPECT_EQ(record.DCount(1), 0);
  EXPECT_EQ(record.DCount(0), 0);
}

TEST(Record, WritingBeyondTheEndExtendsWithEmptyAttributesAndValues) {
  NorvikRecord record;
  record.set(3, u"c");
  EXPECT_EQ(record.r(), AM + AM + u"c");
  EXPECT_EQ(record.DCount(), 3);
  EXPECT_EQ(record.DCount(1), 0);
  EXPECT_EQ(record.DCount(3), 1);

  record.set(2, 3, u"v");
  EXPECT_EQ(record.r(2), VM + VM + u"v");
  EXPECT_EQ(record.DCount(2), 3);
  EXPECT_EQ(record.r(2, 3), u"v");
  EXPECT_EQ(record.r(2, 1), u"");
  EXPECT_EQ(record.r(2, 4), u"");
  EXPECT_EQ(record.r(), AM + VM + VM + u"v" + AM + u"c");

  record.set(5, 2, u"w");
  EXPECT_EQ(record.DCount(), 5);
  EXPECT_EQ(record.r(5), VM + u"w");
}

TEST(Record, ATrailingEmptyAttributeThatWasWrittenCounts) {
  NorvikRecord record;
  record.set(1, u"a");
  record.set(2, u"");
  EXPECT_EQ(record.DCount(), 2);
  EXPECT_EQ(record.r(), u"a" + AM);
  const NorvikRecord reread(record.r());
  EXPECT_EQ(reread.DCount(), 2);
  EXPECT_EQ(reread.r(2), u"");
}

TEST(Record, TextFormRoundTrips) {
  const Text text = u"Entretien" + AM + u"T1" + VM + u"T2" + VM + AM + AM + u"x";
  NorvikRecord record(text);
  EXPECT_EQ(record.DCount(), 4);
  EXPECT_EQ(record.DCount(2), 3);
  EXPECT_EQ(record.r(2, 2), u"T2");
  EXPECT_EQ(record.r(2, 3), u"");
  EXPECT_EQ(record.r(3), u"");
  EXPECT_EQ(record.r(), text);
  record.set(u"");
  EXPECT_EQ(record.DCount(), 0);
  EXPECT_EQ(record.r(), u"");
  record.set(u"only");
  EXPECT_EQ(record.DCount(), 1);
  EXPECT_EQ(record.r(1, 1), u"only");
}

TEST(Record, DeleteMovesLaterAttributesUp) {
  NorvikRecord record(u"a" + AM + u"b" + VM + u"b2" + AM + u"c");
  record.Delete(2);
  EXPECT_EQ(record.r(), u"a" + AM + u"c");
  EXPECT_EQ(record.DCount(), 2);
  record.Delete(7);
  record.Delete(0);
  EXPECT_EQ(record.r(), u"a" + AM + u"c");
  record.Delete(1);
  record.Delete(1);
  EXPECT_EQ(record.DCount(), 0);
  EXPECT_EQ(record.r(), u"");
}

TEST(Record, MarksInWrittenValuesReshapeTheRecord) {
  NorvikRecord record(u"a" + AM + u"b" + AM + u"c");
  record.set(2, u"x" + AM + u"y");  // one write of two attributes
  EXPECT_EQ(record.DCount(), 4);
  EXPECT_EQ(record.r(), u"a" + AM + u"x" + AM + u"y" + AM + u"c");

  record.set(1, u"p" + VM + u"q");
  EXPECT_EQ(record.DCount(1), 2);
  EXPECT_EQ(record.r(1, 2), u"q");

  record.set(4, 2, u"m" + VM + u"n");
  EXPECT_EQ(record.DCount(4), 3);
  EXPECT_EQ(record.r(4), u"c" + VM + u"m" + VM + u"n");
}

TEST(Record, NumbersBelowOneFailOnWrite) {
  NorvikRecord record;
  for (const auto& write : {std::function<void()>([&] { record.set(0, u"x"); }),
                            std::function<void()>([&] { record.set(1, 0, u"x"); }),
                            std::function<void()>([&] { record.set(-1, 1, u"x"); })}) {
    try {
      write();
      ADD_FAILURE() << "a write below 1 was taken";
    } catch (const Failure& f) {
      EXPECT_EQ(f.number(), errors::kInvalidCall);
    }
  }
  EXPECT_EQ(record.DCount(), 0);
}

TEST(Record, EqualityIsByContent) {
  NorvikRecord a;
  a.set(2, u"x");
  const NorvikRecord b(AM + u"x");
  EXPECT_TRUE(a == b);
  a.set(2, 2, u"y");
  EXPECT_FALSE(a == b);
}

}  // namespace
}  // namespace velmora

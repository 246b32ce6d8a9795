#include <gtest/gtest.h>

#include <velmora/base/failure.h>
#include "rows/row_format.h"
#include "support/failure_number.h"

namespace velmora::rows {
namespace {

using testing::failureNumber;

TEST(RowFormat, TextColumnCutsAt25AndPadsTo26) {
  EXPECT_EQ(textColumn(u""), Text(26, u' '));
  EXPECT_EQ(textColumn(u"Ménage"), u"Ménage" + Text(20, u' '));
  // 25 and 40 characters with the same first 25 give the same column.
  const Text exact = u"ABCDEFGHIJKLMNOPQRSTUVWXY";
  EXPECT_EQ(textColumn(exact), exact + u" ");
  EXPECT_EQ(textColumn(exact + u"Zabcdefghijklmn"), exact + u" ");
  // Accented letters are one code unit each, so the cut falls after the 25th letter.
  const Text accented = u"Tâche à réaliser chez élève";  // 27 letters
  ASSERT_EQ(accented.size(), 27u);
  EXPECT_EQ(textColumn(accented), u"Tâche à réaliser chez élè ");
  EXPECT_EQ(textColumn(accented).size(), 26u);
}

TEST(RowFormat, ProposalDurationRightAlignsInSeven) {
  EXPECT_EQ(proposalDuration(u""), u"       ");
  EXPECT_EQ(proposalDuration(u"5"), u"      5");
  EXPECT_EQ(proposalDuration(u"12345"), u"  12345");
  EXPECT_EQ(proposalDuration(u"1234567"), u"1234567");
  // Not trimmed: blanks in the value count.
  EXPECT_EQ(proposalDuration(u" 30"), u"     30");
  EXPECT_EQ(failureNumber([] { proposalDuration(u"12345678"); }), errors::kInvalidCall);
}

TEST(RowFormat, SelectionMarkerAndDurationInSeven) {
  EXPECT_EQ(selectionMarkerAndDuration(false, u""), u"       ");
  EXPECT_EQ(selectionMarkerAndDuration(true, u""), u"X      ");
  EXPECT_EQ(selectionMarkerAndDuration(true, u"45"), u"X    45");
  EXPECT_EQ(selectionMarkerAndDuration(false, u"123456"), u" 123456");
  EXPECT_EQ(failureNumber([] { selectionMarkerAndDuration(false, u"1234567"); }),
            errors::kInvalidCall);
}

TEST(RowFormat, WholeRowsHaveTheirWidthsAndReadBackTheirDurations) {
  const Text columns = textColumn(u"Entretien") + textColumn(u"Ménage") + textColumn(u"Sols");
  ASSERT_EQ(columns.size(), 78u);
  const Text catalogueRow = columns + proposalDuration(u"30");
  const Text fixedRow = catalogueRow + u"  ";
  const Text floatingRow = fixedRow + u"*";
  EXPECT_EQ(catalogueRow.size(), 85u);
  EXPECT_EQ(fixedRow.size(), 87u);
  EXPECT_EQ(floatingRow.size(), 88u);
  EXPECT_EQ(mid(floatingRow, 88, 1), u"*");
  EXPECT_EQ(rowDuration(catalogueRow), u"30");
  EXPECT_EQ(rowDuration(floatingRow), u"30");

  const Text selectionRow = columns + selectionMarkerAndDuration(true, u"30");
  EXPECT_EQ(selectionRow.size(), 85u);
  EXPECT_EQ(mid(selectionRow, 79, 1), u"X");
  EXPECT_EQ(rowDuration(selectionRow), u"30");
  // A proposal row of up to five digits keeps them in 81-85 in both layouts.
  EXPECT_EQ(mid(catalogueRow, 81, 5),
            mid(columns + selectionMarkerAndDuration(false, u"30"), 81, 5));

  // Nothing reads the leading characters of a wider duration.
  EXPECT_EQ(rowDuration(columns + proposalDuration(u"1234567")), u"34567");
  EXPECT_EQ(rowDuration(columns + proposalDuration(u"")), u"");
  // A row too short for the duration has none.
  EXPECT_EQ(rowDuration(columns), u"");
}

TEST(RowFormat, ReadBackOfTheDisplayForm) {
  EXPECT_EQ(readBack(u"0h00"), Currency::whole(0));
  EXPECT_EQ(readBack(u"0h05"), Currency::whole(5));
  EXPECT_EQ(readBack(u"1h00"), Currency::whole(60));
  EXPECT_EQ(readBack(u"1h30"), Currency::whole(90));
  EXPECT_EQ(readBack(u"25h00"), Currency::whole(1500));
  EXPECT_EQ(readBack(u"-1h55"), Currency::whole(-5));
  EXPECT_EQ(readBack(u"-1h30"), Currency::whole(-30));
  EXPECT_EQ(readBack(u"0h60"), Currency::whole(60));
  // A plain number, as written before the conversion, has no hours mark.
  EXPECT_EQ(failureNumber([] { readBack(u"90"); }), errors::kInvalidCall);
  EXPECT_EQ(failureNumber([] { readBack(u""); }), errors::kInvalidCall);
  EXPECT_EQ(failureNumber([] { readBack(u"1h"); }), errors::kTypeMismatch);
  EXPECT_EQ(failureNumber([] { readBack(u"xh10"); }), errors::kTypeMismatch);
  // The first "h" only, case-sensitively.
  EXPECT_EQ(failureNumber([] { readBack(u"1H30"); }), errors::kInvalidCall);
}

}  // namespace
}  // namespace velmora::rows

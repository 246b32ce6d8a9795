#include <gtest/gtest.h>

#include <velmora/control/ctr_velmora_new.h>
#include "control/module_slots.h"
#include "ctr_driver.h"
#include "rows/row_format.h"

namespace velmora {
namespace {

// A control after Init on no store at all: every read fails under continue on error,
// and the total's conversion is armed.
class Durations : public ::testing::Test {
 protected:
  void SetUp() override {
    Variable::resetAll();
    InitArguments a{u"AUTRE", u"00001", u"", u"", u"", u"", u"1000000"};
    c.Init(a);
  }
  void TearDown() override { Variable::resetAll(); }

  Text shown(TextView minutes) {
    c.Txt_Duree.setText(minutes);
    return c.Txt_Duree.getText();
  }

  Ctr_VelmoraNew c;
};

TEST(DurationsBeforeInit, TextStaysAsWritten) {
  Variable::resetAll();
  Ctr_VelmoraNew c;
  EXPECT_EQ(CtrInspector(c).W_ChangeActif(), kFalse);
  c.Txt_Duree.setText(u"90");
  EXPECT_EQ(c.Txt_Duree.getText(), u"90");
}

TEST_F(Durations, InitArmsTheConversionAndEmptiesTheTotal) {
  EXPECT_EQ(CtrInspector(c).W_ChangeActif(), kTrue);
  EXPECT_EQ(c.Txt_Duree.getText(), u"");
  EXPECT_EQ(c.W_Total, Currency::whole(0));
}

TEST_F(Durations, MinutesShowAsHoursAndMinutes) {
  EXPECT_EQ(shown(u"0"), u"0h00");
  EXPECT_EQ(shown(u"5"), u"0h05");
  EXPECT_EQ(shown(u"25"), u"0h25");
  EXPECT_EQ(shown(u"60"), u"1h00");
  EXPECT_EQ(shown(u"65"), u"1h05");
  EXPECT_EQ(shown(u"90"), u"1h30");
  EXPECT_EQ(shown(u"1500"), u"25h00");
  EXPECT_EQ(shown(u"100000"), u"1666h40");
  EXPECT_EQ(CtrInspector(c).W_ChangeActif(), kTrue);
}

TEST_F(Durations, NegativeTotalsUseTheFloorAndReadBackToThemselves) {
  EXPECT_EQ(shown(u"-5"), u"-1h55");
  EXPECT_EQ(rows::readBack(c.Txt_Duree.getText()), Currency::whole(-5));
  EXPECT_EQ(shown(u"-60"), u"-1h00");
  EXPECT_EQ(shown(u"-61"), u"-2h59");
  EXPECT_EQ(rows::readBack(c.Txt_Duree.getText()), Currency::whole(-61));
}

TEST_F(Durations, EveryShownTotalReadsBackToItsMinutes) {
  for (int minutes = -200; minutes <= 2000; minutes += 7) {
    const Text written = numberText(minutes);
    c.Txt_Duree.setText(written);
    ASSERT_EQ(rows::readBack(c.Txt_Duree.getText()), Currency::whole(minutes)) << minutes;
  }
}

TEST_F(Durations, FractionsOfMinutesRoundInTheMinutes) {
  EXPECT_EQ(shown(u"12.4"), u"0h12");
  EXPECT_EQ(shown(u"12.5"), u"0h13");
  // The minutes are rounded after the hours are taken: 59.5 shows as 0h60.
  EXPECT_EQ(shown(u"59.5"), u"0h60");
}

TEST_F(Durations, EmptyTextPassesUnchanged) {
  EXPECT_EQ(shown(u"90"), u"1h30");
  EXPECT_EQ(shown(u""), u"");
  EXPECT_EQ(CtrInspector(c).W_ChangeActif(), kTrue);
}

TEST_F(Durations, TextThatIsNotANumberFailsAndStaysAsWritten) {
  try {
    c.Txt_Duree.setText(u"1h30");
    FAIL() << "expected a type mismatch";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.number(), errors::kTypeMismatch);
  }
  EXPECT_EQ(c.Txt_Duree.getText(), u"1h30");
  // The guard is armed again: the next write converts.
  EXPECT_EQ(CtrInspector(c).W_ChangeActif(), kTrue);
  EXPECT_EQ(shown(u"45"), u"0h45");
}

TEST_F(Durations, KeyFilterPassesDigitsAndBackspaceOnly) {
  CtrDriver driver(c);
  for (int key = 0; key < 256; ++key) {
    int k = key;
    driver.Txt_DureeSoin_KeyPress(k);
    const bool passes = key == 8 || (key >= '0' && key <= '9');
    ASSERT_EQ(k, passes ? key : 0) << key;
  }
}

TEST_F(Durations, TypingInTheItemDurationKeepsDigits) {
  c.Txt_DureeSoin.typeText(u"1a.-2 3");
  EXPECT_EQ(c.Txt_DureeSoin.getText(), u"123");
  c.Txt_DureeSoin.typeKey(8);
  EXPECT_EQ(c.Txt_DureeSoin.getText(), u"12");
  // At most five characters.
  c.Txt_DureeSoin.typeText(u"34567");
  EXPECT_EQ(c.Txt_DureeSoin.getText(), u"12345");
  // Leaving the box changes nothing.
  c.Txt_DureeSoin.leave();
  EXPECT_EQ(c.Txt_DureeSoin.getText(), u"12345");
  EXPECT_EQ(c.Txt_Duree.getText(), u"");
}

}  // namespace
}  // namespace velmora

// The control on screen: every child at its place, with its caption, font, colours,
// visibility and tab position, and the captions that Init rewrites.
#include <functional>
#include <tuple>
#include <vector>

#include <QCheckBox>
#include <QFontInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "control/module_slots.h"
#include "qt/control_views.h"
#include "qt/select_arrow.h"
#include "qt_support.h"

namespace velmora::testing {
namespace {

using qt::VelmoraWidget;

class Surface : public ::testing::Test {
 protected:
  void SetUp() override { Variable::resetAll(); }
  void TearDown() override { Variable::resetAll(); }

  template <typename W>
  W* viewOf(const toolkit::Control& c) const {
    auto* widget = qobject_cast<W*>(w.view(c));
    EXPECT_NE(widget, nullptr) << c.name();
    return widget;
  }

  Ctr_VelmoraNew ctl;
  VelmoraWidget w{ctl};
};

// What a planner reads on a child: a label's or a button's caption, a box's text.
QString captionOf(QWidget* view) {
  if (auto* label = qobject_cast<QLabel*>(view)) return label->text();
  if (auto* button = qobject_cast<QAbstractButton*>(view)) return button->text();
  if (auto* line = qobject_cast<QLineEdit*>(view)) return line->text();
  if (auto* frame = qobject_cast<QGroupBox*>(view)) return frame->title();
  return {};
}

TEST_F(Surface, EveryChildStandsAtItsPlaceInPixelsOfFifteenTwipsWithItsCaption) {
  EXPECT_EQ(w.size(), QSize(664, 400));
  // Each child: its name, its place in its parent in pixels, whether it lies in the frame,
  // its caption, and "off" when disabled or "hidden" when not shown.
  const std::vector<std::tuple<const char*, QRect, bool, const char*, std::string>> places{
      {"Cac_TouteTache", {8, 8, 161, 17}, false, "Afficher toutes les tâches", ""},
      {"Cdr_Soins", {0, 32, 662, 361}, false, "", ""},
      {"Lst_CodePos", {504, 104, 57, 56}, true, "", "hidden"},
      {"Lst_CodeSelect", {512, 256, 57, 43}, true, "", "hidden"},
      {"Txt_Barre1", {704, 40, 1, 73}, true, "Text1", ""},
      {"Txt_Duree", {568, 336, 41, 21}, true, "", "off"},
      {"Cmd_SupprVelmora", {8, 328, 57, 25}, true, "Supprimer", "off"},
      {"Txt_DureeSoin", {568, 312, 41, 21}, true, "", ""},
      {"Cmd_AnnulerVelmora", {448, 328, 57, 25}, true, "Annuler", "off"},
      {"Cmd_OKVelmora", {392, 328, 49, 25}, true, "OK", "off"},
      {"Lst_Selectionne", {8, 224, 641, 88}, true, "", ""},
      {"Lst_Possible", {8, 24, 641, 158}, true, "", ""},
      {"Cmd_Select", {288, 184, 33, 25}, true, "", "off"},
      {"Cmd_Obs", {344, 328, 41, 25}, true, "Obs.", "off"},
      {"Label1", {616, 8, 17, 17}, true, "F", ""},
      {"Etq_Imperativite", {72, 320, 265, 25}, true, "Au moins une tâche impérative", "hidden"},
      {"Label6", {576, 208, 33, 17}, true, "Durée", ""},
      {"Label5", {576, 8, 33, 17}, true, "Durée", ""},
      {"Label3", {544, 208, 25, 17}, true, "Obs.", ""},
      {"Etq_Sel3", {376, 208, 41, 17}, true, "Tâche", ""},
      {"Etq_DureeTotale", {536, 336, 33, 17}, true, "Total", ""},
      {"Etq_Duree", {592, 224, 33, 17}, true, "Durée", ""},
      {"Etq_Pos1", {8, 8, 81, 17}, true, "Type", ""},
      {"Etq_Pos2", {184, 8, 49, 17}, true, "Groupe", ""},
      {"Etq_Pos3", {376, 8, 41, 17}, true, "Tâche", ""},
      {"Etq_Sel2", {192, 208, 49, 17}, true, "Groupe", ""},
      {"Etq_Sel1", {8, 208, 81, 17}, true, "Type", ""},
  };
  ASSERT_EQ(ctl.controls().size(), places.size());
  QWidget* frame = w.view(ctl.Cdr_Soins);
  for (std::size_t i = 0; i < places.size(); ++i) {
    const auto& [name, rect, inFrame, caption, state] = places[i];
    SCOPED_TRACE(name);
    ASSERT_EQ(ctl.controls()[i]->name(), name);
    QWidget* view = w.view(*ctl.controls()[i]);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->objectName().toStdString(), name);
    EXPECT_EQ(view->geometry(), rect);
    EXPECT_EQ(view->parentWidget(), inFrame ? frame : &w);
    EXPECT_EQ(captionOf(view), QString::fromUtf8(caption));
    EXPECT_EQ(view->isEnabled(), state != "off");
    EXPECT_EQ(view->isVisibleTo(&w), state != "hidden");
  }
  EXPECT_TRUE(viewOf<QCheckBox>(ctl.Cac_TouteTache)->isChecked());
  EXPECT_EQ(viewOf<QLabel>(ctl.Label1)->alignment() & Qt::AlignHorizontal_Mask, Qt::AlignHCenter);
  auto* dureeSoin = viewOf<QLineEdit>(ctl.Txt_DureeSoin);
  EXPECT_EQ(dureeSoin->alignment() & Qt::AlignHorizontal_Mask, Qt::AlignRight);
  EXPECT_EQ(dureeSoin->maxLength(), 5);
}

TEST_F(Surface, FontsAndColoursAreThoseOfTheDesign) {
  for (const toolkit::ListBox* list : {&ctl.Lst_Possible, &ctl.Lst_Selectionne}) {
    const QFont font = w.view(*list)->font();
    EXPECT_EQ(font.family(), QStringLiteral("Courier New")) << list->name();
    EXPECT_DOUBLE_EQ(font.pointSizeF(), 8.25) << list->name();
    EXPECT_TRUE(QFontInfo(font).fixedPitch()) << list->name();
  }
  QWidget* warning = w.view(ctl.Etq_Imperativite);
  EXPECT_EQ(warning->font().family(), QStringLiteral("MS Sans Serif"));
  EXPECT_DOUBLE_EQ(warning->font().pointSizeF(), 13.5);
  EXPECT_EQ(warning->palette().color(QPalette::WindowText), QColor(255, 0, 0));
  // Controls without a font of their own take the surface's.
  EXPECT_DOUBLE_EQ(w.view(ctl.Etq_Pos1)->font().pointSizeF(), 8.25);

  EXPECT_EQ(w.view(ctl.Txt_Duree)->palette().color(QPalette::Disabled, QPalette::Base),
            QColor(192, 192, 255));
  EXPECT_EQ(w.view(ctl.Txt_Barre1)->palette().color(QPalette::Base), QColor(64, 64, 64));
}

// Where the runs of pixels along row y that pass test start, and their lengths.
std::vector<std::pair<int, int>> runs(const QImage& image, int y,
                                      const std::function<bool(QRgb)>& test) {
  std::vector<std::pair<int, int>> found;
  for (int x = 0; x < image.width(); ++x) {
    if (!test(image.pixel(x, y))) continue;
    if (found.empty() || found.back().first + found.back().second != x) {
      found.emplace_back(x, 1);
    } else {
      ++found.back().second;
    }
  }
  return found;
}

// The rows stand under their headings, as with Courier New 8.25 pt on a 96-dpi screen:
// every character takes a cell of 7 pixels and position 1 starts 4 pixels inside the
// list, so that position 53 starts at the x of "Tâche" and position 88 is centred under
// "F". Measured on the drawn pixels: a full block at each position measured.
TEST_F(Surface, ListColumnsStandUnderTheirHeadingsToThePixel) {
  const std::vector<int> positions{0, 26, 52, 78, 84, 87};  // counted from 0
  Text row(88, u' ');
  for (const int p : positions) row[static_cast<std::size_t>(p)] = u'\u2588';
  ctl.Lst_Possible.AddItem(row);
  auto* view = qobject_cast<qt::ListBoxView*>(w.view(ctl.Lst_Possible));
  ASSERT_NE(view, nullptr);
  w.show();
  QCoreApplication::processEvents();
  const int y = view->rowRect(0).translated(view->viewport()->pos()).center().y();
  std::vector<std::pair<int, int>> expected;
  const int headingX = w.view(ctl.Etq_Pos3)->x() - view->x();  // both lie in the frame
  for (const int p : positions) expected.emplace_back(headingX + 7 * (p - 52), 7);
  EXPECT_EQ(runs(view->grab().toImage(), y, [](QRgb p) { return qGray(p) < 128; }), expected);
  EXPECT_EQ(expected.front().first, 4);
  // Position 88 is centred under "F".
  const QWidget* f = w.view(ctl.Label1);
  EXPECT_EQ(2 * (w.view(ctl.Etq_Pos3)->x() + 7 * (87 - 52)) + 7, 2 * f->x() + f->width());
}

// A stem of six rows one pixel wide, then 5, 3 and 1, on one axis; the rest light grey.
TEST_F(Surface, TheSelectButtonShowsABlackDownArrowOnLightGrey) {
  const QImage arrow = qt::selectArrowImage();
  ASSERT_EQ(arrow.size(), QSize(16, 16));
  std::vector<std::pair<int, int>> black;
  for (int y = 0; y < 16; ++y) {
    const auto row = runs(arrow, y, [](QRgb p) { return p == qRgb(0, 0, 0); });
    black.insert(black.end(), row.begin(), row.end());
    const auto other = [](QRgb p) { return p != qRgb(0, 0, 0) && p != qRgb(192, 192, 192); };
    EXPECT_TRUE(runs(arrow, y, other).empty()) << y;
  }
  const int c = black.front().first;
  EXPECT_EQ(black,
            (std::vector<std::pair<int, int>>{
                {c, 1}, {c, 1}, {c, 1}, {c, 1}, {c, 1}, {c, 1}, {c - 2, 5}, {c - 1, 3}, {c, 1}}));
  auto* button = viewOf<QPushButton>(ctl.Cmd_Select);
  EXPECT_EQ(button->icon().pixmap(16, 16).toImage().convertToFormat(QImage::Format_RGB32),
            arrow.convertToFormat(QImage::Format_RGB32));
  EXPECT_EQ(button->accessibleName(), QStringLiteral("Sélectionner"));
}

TEST_F(Surface, TabbingFollowsTheTabIndexesTheFrameFirst) {
  std::vector<std::string> order;
  QWidget* start = w.view(ctl.Cmd_Obs);
  QWidget* next = start;
  do {
    if ((next->focusPolicy() & Qt::TabFocus) && w.isAncestorOf(next)) {
      order.push_back(next->objectName().toStdString());
    }
    next = next->nextInFocusChain();
  } while (next != start);
  EXPECT_EQ(order, (std::vector<std::string>{
                       "Cmd_Obs", "Cmd_Select", "Lst_Possible", "Lst_Selectionne", "Cmd_OKVelmora",
                       "Cmd_AnnulerVelmora", "Txt_DureeSoin", "Cmd_SupprVelmora", "Txt_Duree",
                       "Lst_CodeSelect", "Lst_CodePos", "Cac_TouteTache"}));
}

TEST_F(Surface, InitRewritesTheCaptionsOnScreenForEachKind) {
  TempAccount account;
  for (const bool care : {true, false}) {
    initClient(ctl, account, care ? u"SSIAD" : u"AUTRE");
    EXPECT_EQ(viewOf<QLabel>(ctl.Etq_Pos1)->text(), care ? "Regroupement" : "Type");
    EXPECT_EQ(viewOf<QLabel>(ctl.Etq_Sel2)->text(), care ? "Type" : "Groupe");
    EXPECT_EQ(viewOf<QLabel>(ctl.Etq_Sel3)->text(), care ? "Soin" : QStringLiteral("Tâche"));
    EXPECT_EQ(viewOf<QCheckBox>(ctl.Cac_TouteTache)->text(),
              care ? "Afficher tous les soins" : QStringLiteral("Afficher toutes les tâches"));
    EXPECT_FALSE(viewOf<QCheckBox>(ctl.Cac_TouteTache)->isChecked());
  }
}

}  // namespace
}  // namespace velmora::testing

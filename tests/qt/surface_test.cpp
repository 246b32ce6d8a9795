// The control on screen: every child at its place, with its caption, font, colours,
// visibility and tab position, and the captions that Init rewrites.
#include <set>

#include <QCheckBox>
#include <QFontInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "control/module_slots.h"
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

struct Place {
  const char* name;
  QRect rect;  // pixels, in the parent
  bool inFrame;
};

TEST_F(Surface, EveryChildStandsAtItsPlaceInPixelsOfFifteenTwips) {
  EXPECT_EQ(w.size(), QSize(664, 400));
  const std::vector<Place> places{
      {"Cac_TouteTache", {8, 8, 161, 17}, false},
      {"Cdr_Soins", {0, 32, 662, 361}, false},
      {"Lst_CodePos", {504, 104, 57, 56}, true},
      {"Lst_CodeSelect", {512, 256, 57, 43}, true},
      {"Txt_Barre1", {704, 40, 1, 73}, true},
      {"Txt_Duree", {568, 336, 41, 21}, true},
      {"Cmd_SupprVelmora", {8, 328, 57, 25}, true},
      {"Txt_DureeSoin", {568, 312, 41, 21}, true},
      {"Cmd_AnnulerVelmora", {448, 328, 57, 25}, true},
      {"Cmd_OKVelmora", {392, 328, 49, 25}, true},
      {"Lst_Selectionne", {8, 224, 641, 88}, true},
      {"Lst_Possible", {8, 24, 641, 158}, true},
      {"Cmd_Select", {288, 184, 33, 25}, true},
      {"Cmd_Obs", {344, 328, 41, 25}, true},
      {"Label1", {616, 8, 17, 17}, true},
      {"Etq_Imperativite", {72, 320, 265, 25}, true},
      {"Label6", {576, 208, 33, 17}, true},
      {"Label5", {576, 8, 33, 17}, true},
      {"Label3", {544, 208, 25, 17}, true},
      {"Etq_Sel3", {376, 208, 41, 17}, true},
      {"Etq_DureeTotale", {536, 336, 33, 17}, true},
      {"Etq_Duree", {592, 224, 33, 17}, true},
      {"Etq_Pos1", {8, 8, 81, 17}, true},
      {"Etq_Pos2", {184, 8, 49, 17}, true},
      {"Etq_Pos3", {376, 8, 41, 17}, true},
      {"Etq_Sel2", {192, 208, 49, 17}, true},
      {"Etq_Sel1", {8, 208, 81, 17}, true},
  };
  ASSERT_EQ(ctl.controls().size(), places.size());
  QWidget* frame = w.view(ctl.Cdr_Soins);
  ASSERT_NE(frame, nullptr);
  for (std::size_t i = 0; i < places.size(); ++i) {
    const toolkit::Control& child = *ctl.controls()[i];
    ASSERT_EQ(child.name(), places[i].name);
    QWidget* view = w.view(child);
    ASSERT_NE(view, nullptr) << places[i].name;
    EXPECT_EQ(view->objectName().toStdString(), places[i].name);
    EXPECT_EQ(view->geometry(), places[i].rect) << places[i].name;
    EXPECT_EQ(view->parentWidget(), places[i].inFrame ? frame : &w) << places[i].name;
  }
  // The grey bar lies beyond the frame's right edge.
  EXPECT_GT(w.view(ctl.Txt_Barre1)->x(), frame->width());
}

TEST_F(Surface, CaptionsAndDefaultsAreThoseOfTheDesign) {
  EXPECT_EQ(viewOf<QCheckBox>(ctl.Cac_TouteTache)->text(),
            QStringLiteral("Afficher toutes les tâches"));
  EXPECT_TRUE(viewOf<QCheckBox>(ctl.Cac_TouteTache)->isChecked());
  EXPECT_EQ(viewOf<QGroupBox>(ctl.Cdr_Soins)->title(), QString());
  const std::vector<std::pair<const toolkit::Control*, QString>> buttons{
      {&ctl.Cmd_SupprVelmora, QStringLiteral("Supprimer")},
      {&ctl.Cmd_AnnulerVelmora, QStringLiteral("Annuler")},
      {&ctl.Cmd_OKVelmora, QStringLiteral("OK")},
      {&ctl.Cmd_Select, QString()},
      {&ctl.Cmd_Obs, QStringLiteral("Obs.")}};
  for (const auto& [control, caption] : buttons) {
    auto* button = viewOf<QPushButton>(*control);
    EXPECT_EQ(button->text(), caption) << control->name();
    EXPECT_FALSE(button->isEnabled()) << control->name();
  }
  const std::vector<std::pair<const toolkit::Control*, QString>> labels{
      {&ctl.Label1, QStringLiteral("F")},
      {&ctl.Etq_Imperativite, QStringLiteral("Au moins une tâche impérative")},
      {&ctl.Label6, QStringLiteral("Durée")},
      {&ctl.Label5, QStringLiteral("Durée")},
      {&ctl.Label3, QStringLiteral("Obs.")},
      {&ctl.Etq_Sel3, QStringLiteral("Tâche")},
      {&ctl.Etq_DureeTotale, QStringLiteral("Total")},
      {&ctl.Etq_Duree, QStringLiteral("Durée")},
      {&ctl.Etq_Pos1, QStringLiteral("Type")},
      {&ctl.Etq_Pos2, QStringLiteral("Groupe")},
      {&ctl.Etq_Pos3, QStringLiteral("Tâche")},
      {&ctl.Etq_Sel2, QStringLiteral("Groupe")},
      {&ctl.Etq_Sel1, QStringLiteral("Type")}};
  for (const auto& [control, caption] : labels) {
    EXPECT_EQ(viewOf<QLabel>(*control)->text(), caption) << control->name();
  }
  EXPECT_EQ(viewOf<QLabel>(ctl.Label1)->alignment() & Qt::AlignHorizontal_Mask, Qt::AlignHCenter);
  EXPECT_EQ(viewOf<QLineEdit>(ctl.Txt_Barre1)->text(), QStringLiteral("Text1"));

  EXPECT_FALSE(w.view(ctl.Lst_CodePos)->isVisibleTo(&w));
  EXPECT_FALSE(w.view(ctl.Lst_CodeSelect)->isVisibleTo(&w));
  EXPECT_TRUE(w.view(ctl.Lst_Possible)->isVisibleTo(&w));
  EXPECT_FALSE(w.view(ctl.Etq_Imperativite)->isVisibleTo(&w));

  auto* duree = viewOf<QLineEdit>(ctl.Txt_Duree);
  EXPECT_FALSE(duree->isEnabled());
  EXPECT_EQ(duree->alignment() & Qt::AlignHorizontal_Mask, Qt::AlignRight);
  auto* dureeSoin = viewOf<QLineEdit>(ctl.Txt_DureeSoin);
  EXPECT_TRUE(dureeSoin->isEnabled());
  EXPECT_EQ(dureeSoin->alignment() & Qt::AlignHorizontal_Mask, Qt::AlignRight);
  EXPECT_EQ(dureeSoin->maxLength(), 5);
  EXPECT_EQ(w.view(ctl.Txt_Barre1)->focusPolicy(), Qt::ClickFocus);
}

TEST_F(Surface, FontsAndColoursAreThoseOfTheDesign) {
  for (const toolkit::ListBox* list : {&ctl.Lst_Possible, &ctl.Lst_Selectionne}) {
    const QFont font = w.view(*list)->font();
    EXPECT_EQ(font.family(), QStringLiteral("Courier New")) << list->name();
    EXPECT_DOUBLE_EQ(font.pointSizeF(), 8.25) << list->name();
    EXPECT_FALSE(font.bold());
    const QFontInfo shown(font);
    EXPECT_EQ(shown.family(), QStringLiteral("Liberation Mono")) << list->name();
    EXPECT_TRUE(shown.fixedPitch()) << list->name();
  }
  QWidget* warning = w.view(ctl.Etq_Imperativite);
  EXPECT_EQ(warning->font().family(), QStringLiteral("MS Sans Serif"));
  EXPECT_DOUBLE_EQ(warning->font().pointSizeF(), 13.5);
  EXPECT_FALSE(warning->font().bold());
  EXPECT_EQ(warning->palette().color(QPalette::WindowText), QColor(255, 0, 0));
  // Controls without a font of their own take the surface's.
  EXPECT_EQ(QFontInfo(w.view(ctl.Etq_Pos1)->font()).family(), QStringLiteral("Liberation Sans"));
  EXPECT_DOUBLE_EQ(w.view(ctl.Etq_Pos1)->font().pointSizeF(), 8.25);

  QWidget* duree = w.view(ctl.Txt_Duree);
  EXPECT_EQ(duree->palette().color(QPalette::Disabled, QPalette::Base), QColor(192, 192, 255));
  EXPECT_EQ(duree->palette().color(QPalette::Active, QPalette::Base), QColor(192, 192, 255));
  EXPECT_EQ(w.view(ctl.Txt_Barre1)->palette().color(QPalette::Base), QColor(64, 64, 64));

  // Drawn as the planner sees it: the disabled total box is lavender inside.
  const QImage shot = w.grab().toImage();
  const QRect box = duree->geometry().translated(w.view(ctl.Cdr_Soins)->pos());
  EXPECT_EQ(QColor(shot.pixel(box.center() + QPoint(-12, 0))), QColor(192, 192, 255));
}

TEST_F(Surface, TheSelectButtonShowsABlackDownArrowOnLightGrey) {
  const QImage arrow = qt::selectArrowImage();
  ASSERT_EQ(arrow.size(), QSize(16, 16));
  EXPECT_EQ(arrow.format(), QImage::Format_Indexed8);
  EXPECT_EQ(arrow.colorCount(), 256);
  // Row by row, the black pixels: a stem of six rows one pixel wide, then 5, 3 and 1.
  std::vector<int> widths;
  std::vector<int> centres;
  for (int y = 0; y < 16; ++y) {
    int black = 0;
    int sum = 0;
    for (int x = 0; x < 16; ++x) {
      const QRgb p = arrow.pixel(x, y);
      if (p == qRgb(0, 0, 0)) {
        ++black;
        sum += x;
      } else {
        EXPECT_EQ(p, qRgb(192, 192, 192)) << x << "," << y;
      }
    }
    if (black > 0) {
      widths.push_back(black);
      centres.push_back(sum / black);
    }
  }
  EXPECT_EQ(widths, (std::vector<int>{1, 1, 1, 1, 1, 1, 5, 3, 1}));
  EXPECT_EQ(std::set<int>(centres.begin(), centres.end()).size(), 1u);  // one straight axis

  auto* button = viewOf<QPushButton>(ctl.Cmd_Select);
  EXPECT_EQ(button->iconSize(), QSize(16, 16));
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
  initClient(ctl, account, u"SSIAD");
  EXPECT_EQ(viewOf<QLabel>(ctl.Etq_Pos1)->text(), QStringLiteral("Regroupement"));
  EXPECT_EQ(viewOf<QLabel>(ctl.Etq_Sel1)->text(), QStringLiteral("Regroupement"));
  EXPECT_EQ(viewOf<QLabel>(ctl.Etq_Pos2)->text(), QStringLiteral("Type"));
  EXPECT_EQ(viewOf<QLabel>(ctl.Etq_Sel3)->text(), QStringLiteral("Soin"));
  EXPECT_EQ(viewOf<QCheckBox>(ctl.Cac_TouteTache)->text(),
            QStringLiteral("Afficher tous les soins"));
  EXPECT_FALSE(viewOf<QCheckBox>(ctl.Cac_TouteTache)->isChecked());

  initClient(ctl, account, u"AUTRE");
  EXPECT_EQ(viewOf<QLabel>(ctl.Etq_Pos1)->text(), QStringLiteral("Type"));
  EXPECT_EQ(viewOf<QLabel>(ctl.Etq_Sel2)->text(), QStringLiteral("Groupe"));
  EXPECT_EQ(viewOf<QLabel>(ctl.Etq_Pos3)->text(), QStringLiteral("Tâche"));
  EXPECT_EQ(viewOf<QCheckBox>(ctl.Cac_TouteTache)->text(),
            QStringLiteral("Afficher toutes les tâches"));
}

}  // namespace
}  // namespace velmora::testing

// The control on screen: its children at their place, with their caption, font, colours
// and visibility, the captions that Init rewrites, and the list columns to the pixel.
#include <algorithm>
#include <tuple>

#include <QGroupBox>
#include <QStyle>

#include "qt/select_arrow.h"
#include "qt_support.h"

namespace velmora::testing {
namespace {

using Surface = WidgetTest;

// What a planner reads on a child: a label's or a button's caption, a box's text.
QString captionOf(QWidget* view) {
  if (auto* label = qobject_cast<QLabel*>(view)) return label->text();
  if (auto* button = qobject_cast<QAbstractButton*>(view)) return button->text();
  if (auto* line = qobject_cast<QLineEdit*>(view)) return line->text();
  if (auto* frame = qobject_cast<QGroupBox*>(view)) return frame->title();
  return {};
}

TEST_F(Surface, ChildrenStandAtTheirPlaceInPixelsOfFifteenTwipsWithTheirCaptionAndLook) {
  EXPECT_EQ(w.size(), QSize(664, 400));
  // Children on the widget and in the frame: each one's place in its parent in pixels,
  // whether it lies in the frame, its caption, "off" when disabled, "hidden" when not shown.
  using Place = std::tuple<const toolkit::Control*, QRect, bool, const char*, std::string>;
  const std::vector<Place> places{
      {&c.Cac_TouteTache, {8, 8, 161, 17}, false, "Afficher toutes les tâches", ""},
      {&c.Cdr_Soins, {0, 32, 662, 361}, false, "", ""},
      {&c.Lst_CodePos, {504, 104, 57, 56}, true, "", "hidden"},
      {&c.Txt_Barre1, {704, 40, 1, 73}, true, "Text1", ""},
      {&c.Cmd_AnnulerVelmora, {448, 328, 57, 25}, true, "Annuler", "off"},
      {&c.Etq_Imperativite, {72, 320, 265, 25}, true, "Au moins une tâche impérative", "hidden"},
  };
  QWidget* frame = w.view(c.Cdr_Soins);
  for (const auto& [control, rect, inFrame, caption, state] : places) {
    SCOPED_TRACE(control->name());
    QWidget* view = w.view(*control);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->objectName().toStdString(), control->name());
    EXPECT_EQ(view->geometry(), rect);
    EXPECT_EQ(view->parentWidget(), inFrame ? frame : &w);
    EXPECT_EQ(captionOf(view), QString::fromUtf8(caption));
    EXPECT_EQ(view->isEnabled(), state != "off");
    EXPECT_EQ(view->isVisibleTo(&w), state != "hidden");
  }
  EXPECT_TRUE(viewOf<QCheckBox>(c.Cac_TouteTache)->isChecked());
  EXPECT_EQ(viewOf<QLineEdit>(c.Txt_DureeSoin)->maxLength(), 5);
  // The select button's caption is its down arrow, named for screen readers.
  auto* select = viewOf<QPushButton>(c.Cmd_Select);
  EXPECT_EQ(select->icon().pixmap(16, 16).toImage().convertToFormat(QImage::Format_RGB32),
            qt::selectArrowImage().convertToFormat(QImage::Format_RGB32));
  EXPECT_EQ(select->accessibleName(), QStringLiteral("Sélectionner"));
  // Fonts and colours of the design.
  QWidget* warning = w.view(c.Etq_Imperativite);
  EXPECT_EQ(warning->font().family(), QStringLiteral("MS Sans Serif"));
  EXPECT_DOUBLE_EQ(warning->font().pointSizeF(), 13.5);
  EXPECT_EQ(warning->palette().color(QPalette::WindowText), QColor(255, 0, 0));
  EXPECT_EQ(w.view(c.Txt_Duree)->palette().color(QPalette::Disabled, QPalette::Base),
            QColor(192, 192, 255));
  EXPECT_EQ(w.view(c.Txt_Barre1)->palette().color(QPalette::Base), QColor(64, 64, 64));
  // Init rewrites the captions for the care vocabulary, and unticks: the screen follows.
  initClient(c, account, u"SSIAD");
  EXPECT_EQ(viewOf<QLabel>(c.Etq_Pos1)->text(), QStringLiteral("Regroupement"));
  EXPECT_EQ(captionOf(w.view(c.Cac_TouteTache)), QStringLiteral("Afficher tous les soins"));
  EXPECT_FALSE(viewOf<QCheckBox>(c.Cac_TouteTache)->isChecked());
}

// Tab walks the children that take the focus in the order of their tab index, those of
// the frame in the frame's place, each filter line just before its list.
TEST_F(Surface, TabWalksTheChildrenInTheirOrderTheFramesInItsPlace) {
  // The filter lines are off until a host (or Designer, through the property) asks.
  EXPECT_FALSE(w.property("filtersVisible").toBool());
  w.setFiltersVisible(true);
  EXPECT_TRUE(w.property("filtersVisible").toBool());
  QStringList walked;
  for (QWidget* next = w.nextInFocusChain(); next != &w; next = next->nextInFocusChain()) {
    if ((next->focusPolicy() & Qt::TabFocus) != 0 && next->isVisibleTo(&w)) {
      walked << next->objectName();
    }
  }
  // The chain is a ring: read it from the frame's first child.
  std::rotate(walked.begin(), std::find(walked.begin(), walked.end(), "Cmd_Obs"), walked.end());
  EXPECT_EQ(walked, QStringList({"Cmd_Obs", "Cmd_Select", "Filtre_Possible", "Lst_Possible",
                                 "Filtre_Selectionne", "Lst_Selectionne", "Cmd_OKVelmora",
                                 "Cmd_AnnulerVelmora", "Txt_DureeSoin", "Cmd_SupprVelmora",
                                 "Txt_Duree", "Cac_TouteTache"}));
}

// The rows stand under their headings, as with Courier New 8.25 pt on a 96-dpi screen:
// every character takes a cell of 7 pixels and position 1 starts 4 pixels inside the
// list, so that position 53 starts at the x of "Tâche" and position 88 is centred under
// "F"; and no caption is wider than its box. Measured on the drawn pixels, in device
// pixels, so that the entry test_qt_scale2 measures a screen of scale 2 (QT_SCALE_FACTOR).
TEST_F(Surface, ListColumnsStandUnderTheirHeadingsToThePixelAndNothingIsClipped) {
  const std::vector<int> positions{0, 26, 52, 78, 84, 87};  // counted from 0
  Text row(88, u' ');
  for (const int p : positions) row[static_cast<std::size_t>(p)] = u'\u2588';
  w.show();
  for (const auto& [list, heading] :
       {std::pair{&c.Lst_Possible, &c.Etq_Pos3}, std::pair{&c.Lst_Selectionne, &c.Etq_Sel3}}) {
    list->AddItem(row);
    auto* view = &listOf(*list);
    QCoreApplication::processEvents();
    const QImage shot = view->grab().toImage();
    const qreal scale = shot.devicePixelRatio();
    const QRect rowRect = view->rowRect(0).translated(view->viewport()->pos());
    const int y = qRound(rowRect.center().y() * scale);
    // Starts of the runs of ink along the middle of the row: one block per cell, which it
    // fills but for the letter spacing (less than a pixel of scale 1).
    std::vector<int> starts;
    for (int x = 0, run = 0; x <= shot.width(); ++x) {
      const bool ink = x < shot.width() && qGray(shot.pixel(x, y)) < 128;
      if (ink && run == 0) starts.push_back(x);
      if (!ink && run > 0) {
        EXPECT_GE(run, qRound(6 * scale)) << list->name() << " at x " << x;
        EXPECT_LE(run, qRound(7 * scale)) << list->name() << " at x " << x;
      }
      run = ink ? run + 1 : 0;
    }
    const int headingX = w.view(*heading)->x() - view->x();  // both lie in the frame
    std::vector<int> expected(positions.size());
    std::transform(positions.begin(), positions.end(), expected.begin(),
                   [&](int p) { return qRound((headingX + 7 * (p - 52)) * scale); });
    EXPECT_EQ(starts, expected) << list->name() << " at scale " << scale;
    EXPECT_EQ(expected.front(), qRound(4 * scale));
  }
  // Position 88 is centred under "F".
  const QWidget* f = w.view(c.Label1);
  EXPECT_EQ(2 * (w.view(c.Etq_Pos3)->x() + 7 * (87 - 52)) + 7, 2 * f->x() + f->width());
  for (QWidget* child : w.findChildren<QWidget*>()) {
    const QString caption = captionOf(child);
    if (caption.isEmpty() || qobject_cast<QLineEdit*>(child)) continue;
    int room = child->width();
    if (qobject_cast<QCheckBox*>(child)) {
      room -= child->style()->pixelMetric(QStyle::PM_IndicatorWidth) +
              child->style()->pixelMetric(QStyle::PM_CheckBoxLabelSpacing);
    }
    EXPECT_LE(child->fontMetrics().horizontalAdvance(caption), room)
        << child->objectName().toStdString();
  }
}

}  // namespace
}  // namespace velmora::testing

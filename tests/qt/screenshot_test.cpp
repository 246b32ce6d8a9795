// The control rendered offscreen on the sample account, as velmora-demo --screenshot
// draws it: not blank, and every row of both lists carries ink where it stands.
#include <QLabel>
#include <QTemporaryDir>

#include <velmora/qt/sample_database.h>
#include <velmora/store/sqlite_database.h>
#include "control/module_slots.h"
#include "qt/control_views.h"
#include "qt_support.h"

namespace velmora::testing {
namespace {

bool isInk(QRgb p) {
  return qGray(p) < 110;
}

// For each row of the list that fits in its view, whether its band holds dark pixels;
// then whether the empty part of the view below the last row holds any.
struct Ink {
  std::vector<bool> rows;
  bool belowLastRow = false;
};

Ink inkOf(const QImage& shot, const qt::ListBoxView& view, const QWidget& top) {
  Ink ink;
  const QRect viewport(view.viewport()->mapTo(&top, QPoint(0, 0)), view.viewport()->size());
  const auto darkIn = [&](const QRect& band) {
    for (int y = band.top(); y <= band.bottom(); ++y) {
      for (int x = band.left(); x <= band.right(); ++x) {
        if (isInk(shot.pixel(x, y))) return true;
      }
    }
    return false;
  };
  int lastBottom = viewport.top();
  for (int row = 0; row < view.listModel().rowCount(); ++row) {
    const QRect r = view.rowRect(row);
    if (r.bottom() >= view.viewport()->height()) break;
    const QRect band(view.viewport()->mapTo(&top, r.topLeft()), r.size());
    ink.rows.push_back(darkIn(band.intersected(viewport)));
    lastBottom = band.bottom();
  }
  const QRect below(viewport.left(), lastBottom + 1, viewport.width(),
                    viewport.bottom() - lastBottom);
  ink.belowLastRow = below.height() > 0 && darkIn(below);
  return ink;
}

TEST(Screenshot, TheSampleInterventionShowsItsRowsInBothLists) {
  Variable::resetAll();
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  const std::string path = dir.filePath(QStringLiteral("sample.db")).toStdString();
  qt::ensureSampleDatabase(path, VELMORA_SAMPLE_DIR);

  Ctr_VelmoraNew ctl;
  qt::VelmoraWidget w(ctl);
  ctl.TheDatabase(openDatabase(path));
  // Mme Lefèvre, Monday 23/11/2026 08:30-10:00: her fixed Monday template applies.
  InitArguments a{u"AUTRE", u"00001", u"23/11/2026", u"23/11/2026", u"08:30", u"10:00", u"1000000"};
  ctl.Init(a);
  ASSERT_GT(ctl.Lst_Possible.ListCount(), 0);
  ASSERT_GT(ctl.Lst_Selectionne.ListCount(), 0);
  w.refreshLists();
  const QImage shot = w.grab().toImage();
  ASSERT_EQ(shot.size(), QSize(664, 400));

  for (const toolkit::ListBox* list : {&ctl.Lst_Possible, &ctl.Lst_Selectionne}) {
    const qt::ListBoxView& view = *w.listView(*list);
    ASSERT_EQ(view.listModel().rowCount(), list->ListCount());
    const Ink ink = inkOf(shot, view, w);
    ASSERT_FALSE(ink.rows.empty()) << list->name();
    EXPECT_EQ(ink.rows, std::vector<bool>(ink.rows.size(), true)) << list->name();
    if (static_cast<int>(ink.rows.size()) == list->ListCount()) {
      EXPECT_FALSE(ink.belowLastRow) << list->name() << " has ink below its last row";
    }
  }
  // The red warning is drawn exactly when the label is shown.
  const QWidget* warning = w.view(ctl.Etq_Imperativite);
  const QRect label(warning->mapTo(&w, QPoint(0, 0)), warning->size());
  bool red = false;
  for (int y = label.top(); y <= label.bottom() && !red; ++y) {
    for (int x = label.left(); x <= label.right() && !red; ++x) {
      const QColor p(shot.pixel(x, y));
      red = p.red() > 200 && p.green() < 80 && p.blue() < 80;
    }
  }
  EXPECT_EQ(red, ctl.Etq_Imperativite.Visible());
  // The total reads in its box: dark digits on lavender.
  EXPECT_FALSE(ctl.Txt_Duree.getText().empty());
  Variable::resetAll();
}

}  // namespace
}  // namespace velmora::testing

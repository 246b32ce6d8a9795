// The binding as a host meets it: the widget's failures and setControl, the screen
// services' question box and pointer, the demo host's stored selection, and the widget in
// Qt Designer.
#include <QDialog>
#include <QPushButton>
#include <QTemporaryDir>
#include <memory>
#include <stdexcept>
#include <tuple>

#include <velmora/qt/failure_display.h>
#include <velmora/qt/host_store.h>
#include <velmora/qt/qt_services.h>
#include <velmora/qt/sample_database.h>
#include <velmora/store/sqlite_database.h>
#include "qt_support.h"

#ifdef VELMORA_DESIGNER_PLUGIN
#include <QPluginLoader>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>
#endif

namespace velmora::testing {
namespace {

using HostWidget = WidgetTest;

// A failure an event procedure lets out (the switch's query with no connection) is shown
// in French, or handed to a listening host with no box; the control goes on working.
TEST_F(HostWidget, FailuresAreShownOrHandedToAListeningHostAndTheControlGoesOn) {
  ASSERT_TRUE(shown());
  initClient(c, account);
  c.Vider_liste();
  int boxes = 0;
  whenBox([&](QMessageBox& box) {
    ++boxes;
    EXPECT_EQ(box.icon(), QMessageBox::Warning);
    EXPECT_EQ(box.windowTitle(), QStringLiteral("Erreur"));
    EXPECT_EQ(box.text(),
              QStringLiteral("Erreur n° 91 :\nobjet non défini : la référence est vide"));
    click(box.button(QMessageBox::Ok));
  });
  click(w.view(c.Cac_TouteTache));
  EXPECT_EQ(boxes, 1);
  EXPECT_EQ(c.Lst_Possible.ListCount(), 0);

  QSignalSpy failures(&w, &qt::VelmoraWidget::failed);
  initClient(c, account);
  c.Vider_liste();
  click(w.view(c.Cac_TouteTache));
  qt::guarded(w.view(c.Lst_Possible),
              [] { throw Failure(errors::kTypeMismatch, "type mismatch"); });
  // Anything else a gesture lets out is the program's fault: an invalid call, not a crash.
  qt::guarded(w.view(c.Lst_Possible), [] { throw std::out_of_range("rang 9"); });
  ASSERT_EQ(failures.count(), 3);
  EXPECT_EQ(failures.at(2).at(0).toInt(), errors::kInvalidCall);
  EXPECT_EQ(failures.at(2).at(1).toString(), QStringLiteral("rang 9"));
  EXPECT_EQ(failures.at(0).at(0).toInt(), errors::kObjectNotSet);
  EXPECT_TRUE(failures.at(0).at(1).toString().contains(QStringLiteral("objet non défini")));
  EXPECT_EQ(failures.at(1).at(0).toInt(), errors::kTypeMismatch);
  EXPECT_EQ(boxes, 1);
  // Given its connection again, the same control fills on the next tick.
  initClient(c, account);
  click(w.view(c.Cac_TouteTache));
  EXPECT_EQ(c.Lst_Possible.ListCount(), 4);
}

// A widget made with a parent only (as Designer makes it) owns a control until it is
// given the host's.
TEST_F(HostWidget, ShowsTheHostsControlGivenLater) {
  Ctr_VelmoraNew hosts(session);  // outlives the widget that shows it
  qt::VelmoraWidget owning;
  const auto held = std::make_shared<qt::QtServices>();  // by the control the widget made
  owning.control().setServices(held);
  const auto views = owning.findChildren<QWidget*>().size();
  owning.setControl(hosts);
  EXPECT_EQ(&owning.control(), &hosts);
  EXPECT_EQ(held.use_count(), 1);  // that control is gone, and what it held let go
  EXPECT_EQ(owning.findChildren<QWidget*>().size(), views);  // the old control's views are gone
  initClient(hosts, account);
  hosts.Cac_TouteTache.toggle();
  owning.refreshLists();
  EXPECT_EQ(qt::listViewOf(owning, hosts.Lst_Possible)->listModel().rowCount(), 4);
}

// In a host's dialog, a key bound to one of the control's buttons goes on to the dialog
// while that button is off: Return in the proposals with nothing marked is the dialog's
// default button, and Sélectionner's once a row is marked.
TEST(HostDialog, AKeyWhoseButtonIsOffGoesOnToTheHostsDialog) {
  TempAccount account;
  putTaskCatalogue(account);
  Session session;
  Ctr_VelmoraNew c{session};
  QDialog dialog;
  qt::VelmoraWidget w{c, &dialog};
  QPushButton close(QStringLiteral("Fermer"), &dialog);
  close.setDefault(true);
  close.move(0, 420);
  int closed = 0;
  QObject::connect(&close, &QPushButton::clicked, [&closed] { ++closed; });
  dialog.show();
  dialog.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
  initClient(c, account);
  c.Cac_TouteTache.toggle();  // the four tasks proposed, none marked
  ASSERT_FALSE(c.Cmd_Select.Enabled());
  auto* proposals = qt::listViewOf(w, c.Lst_Possible);
  proposals->setFocus();
  QTest::keyClick(proposals, Qt::Key_Return);
  EXPECT_EQ(closed, 1);
  c.Lst_Possible.click(0);
  QTest::keyClick(proposals, Qt::Key_Return);
  EXPECT_EQ(closed, 1);
  EXPECT_EQ(c.Lst_Selectionne.ListCount(), 1);
}

TEST(QtServices, TheBoxShowsItsButtonsInFrenchAndAnswersHoweverItIsClosed) {
  using Close = std::function<void(QMessageBox&)>;
  // The question's two buttons in French, Oui the default.
  const Close yes = [](QMessageBox& b) {
    EXPECT_EQ(b.buttons().size(), 2);
    EXPECT_EQ(b.button(QMessageBox::No)->text(), QStringLiteral("&Non"));
    EXPECT_EQ(b.defaultButton(), b.button(QMessageBox::Yes));
    EXPECT_EQ(b.defaultButton()->text(), QStringLiteral("&Oui"));
    click(b.button(QMessageBox::Yes));
  };
  const Close ok = [](QMessageBox& b) {
    EXPECT_EQ(b.buttons().size(), 1);
    click(b.button(QMessageBox::Ok));
  };
  const Close escape = [](QMessageBox& b) { QTest::keyClick(&b, Qt::Key_Escape); };
  const Close reject = [](QMessageBox& b) { b.reject(); };
  const int yesNo = toolkit::kStyleYesNoQuestion;
  const std::vector<std::tuple<int, Close, int, QMessageBox::Icon>> cases{
      {yesNo, yes, toolkit::kMsgBoxYes, QMessageBox::Question},
      // Escape (the No button's key), or a box closed without a button, answers No.
      {yesNo, escape, toolkit::kMsgBoxNo, QMessageBox::Question},
      {yesNo, reject, toolkit::kMsgBoxNo, QMessageBox::Question},
      // A box of one button answers with it, however it is closed.
      {64, ok, 1, QMessageBox::Information},
      {16, escape, 1, QMessageBox::Critical},
      {48, reject, 1, QMessageBox::Warning},
  };
  qt::QtServices services;
  for (const auto& [style, close, code, icon] : cases) {
    SCOPED_TRACE(style);
    whenBox([&how = close, want = icon](QMessageBox& box) {
      EXPECT_EQ(box.windowTitle(), QStringLiteral("Message TALVERANE"));
      EXPECT_EQ(box.text(), QStringLiteral("Etes-vous sûr ?"));
      EXPECT_EQ(box.icon(), want);
      how(box);
    });
    EXPECT_EQ(services.MsgBox(u"Etes-vous sûr ?", style, u"Message TALVERANE"), code);
  }
}

TEST(QtServices, APointerShapeOverridesTheCursorUntilShapeZeroOrTheServicesGo) {
  auto services = std::make_unique<qt::QtServices>();
  services->setMousePointer(11);
  ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
  EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
  services->setMousePointer(13);  // another shape replaces it
  EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::BusyCursor);
  services->setMousePointer(0);
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
  services->setMousePointer(11);
  services.reset();
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

using HostStore = WidgetTest;

// Client 00001 on Monday 23/11/2026 (day 21512), 08:30 to 10:00, in the demo's sample.
TEST_F(HostStore, AStoredSelectionComesBackWhenItsKeyIsConsulted) {
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  const std::string path = dir.filePath(QStringLiteral("sample.db")).toStdString();
  qt::ensureSampleDatabase(path, VELMORA_SAMPLE_DIR);
  c.TheDatabase(openDatabase(path));
  InitArguments a{u"AUTRE", u"00001", u"23/11/2026", u"23/11/2026", u"08:30", u"10:00", u"1000000"};
  c.Init(a);
  const Snapshot before = snapshot(c);
  c.MAJ_Enr();
  const RecordRef items = c.W_Enr;
  ASSERT_GE(items->DCount(), 2);

  const Text key = qt::storeSelection(path,
                                      {.client = u"00001",
                                       .dateDeb = u"23/11/2026",
                                       .dateFin = u"23/11/2026",
                                       .heureDe = u"08:30",
                                       .heureA = u"10:00",
                                       .kind = u"AUTRE"},
                                      *items);
  ASSERT_EQ(key, u"DEMO0000012151200000100850");
  // What the host wrote, read back through a connection of its own.
  const RecordRef stored = openDatabase(path)->OpenFile(u"TPSDETAILSINTERV")->ReadRecord(key);
  EXPECT_EQ(stored->r(1), u"21512");
  EXPECT_EQ(stored->r(2), u"1000");
  EXPECT_EQ(stored->r(3), u"A");

  // Consulting the key shows the same selection, rows, codes, observations and total.
  InitArguments consult{u"AUTRE", key, u"", u"", u"", u"", u""};
  c.TheDatabase(openDatabase(path));
  c.Init(consult);
  const Snapshot s = snapshot(c);
  EXPECT_EQ(std::tie(s.rows, s.codes, s.obs, s.duree, s.total),
            std::tie(before.rows, before.codes, before.obs, before.duree, before.total));
}

#ifdef VELMORA_DESIGNER_PLUGIN
// The plugin holds its own copy of the binding: the widget is checked by its class name
// and its surface, not by a cast.
TEST(DesignerPlugin, DescribesAndCreatesTheWidget) {
  QPluginLoader loader(QStringLiteral(VELMORA_DESIGNER_PLUGIN));
  auto* plugin = qobject_cast<QDesignerCustomWidgetInterface*>(loader.instance());
  ASSERT_NE(plugin, nullptr) << loader.errorString().toStdString();
  EXPECT_EQ(plugin->name(), QStringLiteral("velmora::qt::VelmoraWidget"));
  EXPECT_TRUE(plugin->domXml().contains(QStringLiteral(R"(class="velmora::qt::VelmoraWidget")")));
  QWidget form;
  QWidget* widget = plugin->createWidget(&form);
  ASSERT_NE(widget, nullptr);
  EXPECT_EQ(widget->parentWidget(), &form);
  EXPECT_STREQ(widget->metaObject()->className(), "velmora::qt::VelmoraWidget");
  EXPECT_EQ(widget->size(), QSize(664, 400));  // 9960 x 6000 twips
  EXPECT_EQ(widget->findChildren<QListView*>().size(), 4);
}
#endif

}  // namespace
}  // namespace velmora::testing

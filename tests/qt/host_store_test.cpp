// The demo host's way of keeping a selection: written as a planned intervention through
// the host's own connection, and shown back when the control consults its key.
#include <QTemporaryDir>

#include <velmora/qt/host_store.h>
#include <velmora/qt/sample_database.h>
#include <velmora/store/sqlite_database.h>
#include "control/inspection.h"
#include "qt_support.h"

namespace velmora::testing {
namespace {

// Client 00001 on Monday 23/11/2026 (day 21512), 08:30 to 10:00.
const qt::Intervention kMonday{.client = u"00001",
                               .dateDeb = u"23/11/2026",
                               .dateFin = u"23/11/2026",
                               .heureDe = u"08:30",
                               .heureA = u"10:00",
                               .kind = u"AUTRE"};

TEST(HostStore, AStoredSelectionComesBackWhenItsKeyIsConsulted) {
  Session::processDefault().state().clear();
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  const std::string path = dir.filePath(QStringLiteral("sample.db")).toStdString();
  qt::ensureSampleDatabase(path, VELMORA_SAMPLE_DIR);

  Ctr_VelmoraNew ctl;
  ctl.TheDatabase(openDatabase(path));
  InitArguments a{u"AUTRE", u"00001", u"23/11/2026", u"23/11/2026", u"08:30", u"10:00", u"1000000"};
  ctl.Init(a);
  const Snapshot before = snapshot(ctl);
  ctl.MAJ_Enr();
  const RecordRef items = ctl.W_Enr;
  ASSERT_GE(items->DCount(), 2);

  const Text key = qt::storeSelection(path, kMonday, *items);
  ASSERT_EQ(key, u"DEMO0000012151200000100850");
  // What the host wrote, read back through a connection of its own.
  const RecordRef stored = openDatabase(path)->OpenFile(u"TPSDETAILSINTERV")->ReadRecord(key);
  EXPECT_EQ(stored->r(1), u"21512");
  EXPECT_EQ(stored->r(2), u"1000");
  EXPECT_EQ(stored->r(3), u"A");

  // Consulting the key shows the same selection, rows, codes, observations and total.
  InitArguments consult{u"AUTRE", key, u"", u"", u"", u"", u""};
  ctl.TheDatabase(openDatabase(path));
  ctl.Init(consult);
  const Snapshot s = snapshot(ctl);
  EXPECT_EQ(std::tie(s.rows, s.codes, s.obs, s.duree, s.total),
            std::tie(before.rows, before.codes, before.obs, before.duree, before.total));
  Session::processDefault().state().clear();
}

}  // namespace
}  // namespace velmora::testing

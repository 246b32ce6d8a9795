// velmora-host: embeds the Velmora control twice, as a host application would, on the
// sample account (client 00001, Monday 23/11/2026, 08:30-10:00):
//   - headless: the control alone, its question box answered by a script;
//   - on screen: the same call through the Qt widget, drawn offscreen when there is no
//     display.
// Prints what it saw; exits with 1 when the control did not propose, select and total
// what the sample account holds, 2 on a wrong command line.
//   usage: velmora-host SAMPLE.db
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

#include <QApplication>
#include <QPixmap>

#include <velmora/base/failure.h>
#include <velmora/control/ctr_velmora_new.h>
#include <velmora/qt/velmora_widget.h>
#include <velmora/store/sqlite_database.h>
#include <velmora/toolkit/services.h>
#include <velmora/version.h>

namespace {

bool expect(bool condition, const char* what) {
  if (!condition) std::cerr << "velmora-host: " << what << "\n";
  return condition;
}

// Init on the sample account, then the checks a host relies on: proposals, the matching
// template's items selected, a total, and the selection handed back in W_Enr.
bool initAndCheck(velmora::Ctr_VelmoraNew& control, const std::string& database, const char* how) {
  control.TheDatabase(velmora::openDatabase(database));
  velmora::InitArguments a{u"AUTRE", u"00001", u"23/11/2026", u"", u"08:30", u"10:00", u"1000000"};
  control.Init(a);
  control.MAJ_Enr();
  std::cout << how << ": " << control.Lst_Possible.ListCount() << " proposed, "
            << control.Lst_Selectionne.ListCount() << " selected, total "
            << velmora::toUtf8(control.W_Total.toText()) << " min, W_Enr "
            << control.W_Enr->DCount() << " attributes\n";
  bool ok = expect(control.Lst_Possible.ListCount() > 0, "nothing proposed");
  ok = expect(control.Lst_Selectionne.ListCount() > 0, "nothing selected") && ok;
  ok = expect(control.W_Total.toDouble() > 0, "Init gave no total") && ok;
  ok = expect(control.W_Enr->DCount() > 0, "MAJ_Enr handed back nothing") && ok;
  return ok;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: velmora-host SAMPLE.db\n";
    return 2;
  }
  const std::string database = argv[1];
  if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
      qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  std::cout << "Velmora " VELMORA_VERSION "\n";
  try {
    // Headless: no toolkit, the host answers the control's questions itself.
    velmora::Ctr_VelmoraNew headless;
    headless.setServices(std::make_shared<velmora::toolkit::ScriptedServices>());
    bool ok = initAndCheck(headless, database, "headless");

    // On screen: the widget shows the control and routes the planner's gestures to it.
    QApplication app(argc, argv);
    velmora::Ctr_VelmoraNew shown;
    velmora::qt::VelmoraWidget widget(shown);
    ok = initAndCheck(shown, database, "widget") && ok;
    widget.refreshLists();
    const QPixmap picture = widget.grab();
    ok = expect(!picture.isNull() && picture.width() > 0, "the widget drew nothing") && ok;
    return ok ? EXIT_SUCCESS : EXIT_FAILURE;
  } catch (const velmora::Failure& failure) {
    std::cerr << "velmora-host: failure " << failure.number() << ": " << failure.what() << "\n";
    return EXIT_FAILURE;
  }
}

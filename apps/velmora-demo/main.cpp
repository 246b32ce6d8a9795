// velmora-demo: a small host of the control. With --screenshot it draws the window
// offscreen after Init and writes it as a PNG, for machines without a display.
#include <cstdio>
#include <string>
#include <string_view>

#include <QApplication>
#include <QCheckBox>
#include <QCommandLineParser>
#include <QDir>
#include <QLibraryInfo>
#include <QLineEdit>
#include <QStandardPaths>
#include <QTranslator>

#include <velmora/base/failure.h>
#include <velmora/qt/failure_display.h>
#include <velmora/qt/sample_database.h>
#include <velmora/qt/velmora_widget.h>
#include <velmora/store/sqlite_database.h>  // isServerUri
#include "demo_window.h"
#include "sample_directory.h"

namespace {

// A screenshot, and the help, need no display: they are drawn or printed offscreen.
bool needsNoDisplay(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view word = argv[i];
    if (word == "--screenshot" || word.starts_with("--screenshot=") || word == "--help" ||
        word == "-h" || word == "-?" || word == "--help-all") {
      return true;
    }
  }
  return false;
}

// The sample account, built on first run beside the user's other application data.
std::string defaultDatabase() {
  const QString dir = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
  QDir().mkpath(dir);
  std::string path = QDir(dir).filePath(QStringLiteral("velmora-sample.db")).toStdString();
  velmora::qt::ensureSampleDatabase(path, velmora::apps::sampleDirectory());
  return path;
}

// What the planner would do next, done from the command line: the show-all box ticked,
// words typed into the proposals' filter line.
void afterInit(velmora::demo::DemoWindow& window, bool showAll, const QString& words) {
  velmora::qt::VelmoraWidget& control = window.controlView();
  if (showAll) {
    if (auto* box = control.findChild<QCheckBox*>(QStringLiteral("Cac_TouteTache"))) box->click();
  }
  if (!words.isEmpty()) {
    if (auto* line = control.findChild<QLineEdit*>(QStringLiteral("Filtre_Possible"))) {
      line->setText(words);
    }
  }
  control.refreshLists();
}

}  // namespace

int main(int argc, char** argv) {
  if (needsNoDisplay(argc, argv) && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("velmora-demo"));
  QApplication::setOrganizationName(QStringLiteral("Velmora"));
  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral(
      "A small host of the Velmora planning control. Its lists have their filter lines "
      "on (Ctrl+F, or type in a list): typing narrows the rows shown, case and accents "
      "aside, and the count beside each line says how many rows are shown and marked."));
  parser.addHelpOption();
  const QCommandLineOption db(QStringLiteral("db"),
                              QStringLiteral("The store to open (default: the sample account)."),
                              QStringLiteral("PATH"));
  const QCommandLineOption client(QStringLiteral("client"),
                                  QStringLiteral("The client code, 5 characters."),
                                  QStringLiteral("CODE"), QStringLiteral("00001"));
  const QCommandLineOption kind(QStringLiteral("kind"),
                                QStringLiteral("AUTRE (home help) or SSIAD (care)."),
                                QStringLiteral("KIND"), QStringLiteral("AUTRE"));
  const QCommandLineOption key(QStringLiteral("key"),
                               QStringLiteral("A full key to consult instead of the client."),
                               QStringLiteral("KEY"));
  const QCommandLineOption from(QStringLiteral("from"), QStringLiteral("First date, dd/mm/yyyy."),
                                QStringLiteral("DATE"), QStringLiteral("23/11/2026"));
  const QCommandLineOption to(QStringLiteral("to"), QStringLiteral("Last date, dd/mm/yyyy."),
                              QStringLiteral("DATE"), QStringLiteral("23/11/2026"));
  const QCommandLineOption start(QStringLiteral("start"), QStringLiteral("Start time, HH:MM."),
                                 QStringLiteral("TIME"), QStringLiteral("08:30"));
  const QCommandLineOption end(QStringLiteral("end"), QStringLiteral("End time, HH:MM."),
                               QStringLiteral("TIME"), QStringLiteral("10:00"));
  const QCommandLineOption days(QStringLiteral("days"),
                                QStringLiteral("Weekday mask, Monday first, such as 1000000."),
                                QStringLiteral("MASK"), QStringLiteral("1000000"));
  const QCommandLineOption floating(QStringLiteral("floating"),
                                    QStringLiteral("Search the floating templates."));
  const QCommandLineOption screenshot(
      QStringLiteral("screenshot"),
      QStringLiteral("Draw the window after Init into FILE (PNG) and exit."),
      QStringLiteral("FILE"));
  const QCommandLineOption controlOnly(
      QStringLiteral("control-only"), QStringLiteral("With --screenshot, draw the control alone."));
  const QCommandLineOption showAll(QStringLiteral("show-all"),
                                   QStringLiteral("After Init, tick the box that shows the whole "
                                                  "catalogue."));
  const QCommandLineOption filter(
      QStringLiteral("filter"),
      QStringLiteral("After Init, type WORDS into the proposals' filter line (with --screenshot, "
                     "draws the filter at work)."),
      QStringLiteral("WORDS"));
  parser.addOptions({db, client, kind, key, from, to, start, end, days, floating, screenshot,
                     controlOnly, showAll, filter});
  parser.process(app);

  // Qt's own words on screen in French (Debian's qt6-translations-l10n), whatever the locale;
  // only after the command line is read, so that --help and its errors stay whole in English.
  QTranslator qtFrench;
  if (qtFrench.load(QStringLiteral("qtbase_fr"),
                    QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
    QApplication::installTranslator(&qtFrench);
  }

  velmora::demo::DemoOptions options;
  try {
    options.database = parser.isSet(db) ? parser.value(db).toStdString() : defaultDatabase();
  } catch (const velmora::Failure& failure) {
    std::fprintf(stderr, "velmora-demo: %s\n", failure.what());
    return 1;
  }
  if (parser.isSet(db) && !velmora::isServerUri(options.database) &&
      !QFile::exists(parser.value(db))) {
    std::fprintf(stderr, "velmora-demo: %s: no such store\n", options.database.c_str());
    return 1;
  }
  options.client = parser.value(client);
  options.kind = parser.value(kind);
  options.key = parser.value(key);
  options.dateDeb = parser.value(from);
  options.dateFin = parser.value(to);
  options.heureDe = parser.value(start);
  options.heureA = parser.value(end);
  options.days = parser.value(days);
  options.floating = parser.isSet(floating);

  velmora::demo::DemoWindow window(options);
  if (parser.isSet(screenshot)) {
    // Failures of Init go to stderr here: there is nobody to close a box.
    int failures = 0;
    velmora::qt::setFailurePresenter([&failures](QWidget*, const velmora::Failure& f) {
      ++failures;
      std::fprintf(stderr, "velmora-demo: error %ld: %s\n", f.number(), f.what());
    });
    window.runInit();
    afterInit(window, parser.isSet(showAll), parser.value(filter));
    window.adjustSize();
    QWidget& shown = parser.isSet(controlOnly) ? static_cast<QWidget&>(window.controlView())
                                               : static_cast<QWidget&>(window);
    const QString file = parser.value(screenshot);
    if (!shown.grab().save(file, "PNG")) {
      std::fprintf(stderr, "velmora-demo: cannot write %s\n", file.toLocal8Bit().constData());
      return 1;
    }
    return failures == 0 ? 0 : 1;
  }
  window.show();
  window.runInit();
  afterInit(window, parser.isSet(showAll), parser.value(filter));
  return QApplication::exec();
}

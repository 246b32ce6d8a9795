// The demo host's window: criteria on the left, the control in the middle, the host's
// calls on the selection on the right. It drives the control only through its public
// procedures and reads it only through its public variables, as any host would.
#include "demo_window.h"

#include <memory>

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QVBoxLayout>

#include <velmora/control/client_code.h>
#include <velmora/qt/failure_display.h>
#include <velmora/qt/host_store.h>
#include <velmora/qt/twips.h>
#include <velmora/store/sqlite_database.h>

namespace velmora::demo {

// Qt's parent owns its children: the demo's widgets are made here, and their parent
// deletes them.
template <typename W, typename... Args>
W* makeChild(QWidget* parent, Args&&... args) {
  return new W(std::forward<Args>(args)..., parent);  // owned by parent
}

using qt::fromQString;
using qt::toQString;

namespace {
struct DayName {
  const char* shortName;
  const char* name;  // read by a screen reader
};
const std::array<DayName, 7> kDayNames{{{"lun", "lundi"},
                                        {"mar", "mardi"},
                                        {"mer", "mercredi"},
                                        {"jeu", "jeudi"},
                                        {"ven", "vendredi"},
                                        {"sam", "samedi"},
                                        {"dim", "dimanche"}}};
}  // namespace

DemoWindow::DemoWindow(const DemoOptions& options, QWidget* parent)
    : QWidget(parent), database_(options.database) {
  setWindowTitle(QStringLiteral("Velmora — démonstration"));
  view_ = makeChild<qt::VelmoraWidget>(this);
  // The demo shows the lists' filter lines, which a host turns on.
  view_->setFiltersVisible(true);
  auto* layout = makeChild<QHBoxLayout>(this);
  layout->addWidget(makeCriteria(options));
  layout->addWidget(view_, 0, Qt::AlignTop);
  layout->addWidget(makeHostPanel());
  // The host follows the total as the planner works.
  connect(view_, &qt::VelmoraWidget::totalChanged, this,
          [this](double minutes) { showTotal(minutes); });
}

// A label with its mnemonic, linked to the field it names: a screen reader reads the
// field by the label's words, and Alt with the underlined letter moves into the field.
namespace {
void addLabelledRow(QFormLayout* form, QWidget* parent, const QString& label, QWidget* field) {
  auto* caption = makeChild<QLabel>(parent, label);
  caption->setBuddy(field);
  form->addRow(caption, field);
}
}  // namespace

QWidget* DemoWindow::makeCriteria(const DemoOptions& options) {
  auto* box = makeChild<QGroupBox>(this, QStringLiteral("Intervention"));
  auto* form = makeChild<QFormLayout>(box);
  kind_ = makeChild<QComboBox>(box);
  kind_->addItems({QStringLiteral("AUTRE"), QStringLiteral("SSIAD")});
  kind_->setCurrentText(options.kind);
  // A combo box reads as its current value unless it is named: "Nature", then "AUTRE".
  kind_->setAccessibleName(QStringLiteral("Nature"));
  kind_->setAccessibleDescription(QStringLiteral("AUTRE : aide à domicile ; SSIAD : soins"));
  addLabelledRow(form, box, QStringLiteral("&Nature"), kind_);
  const auto line = [&](const QString& label, const QString& text) {
    auto* edit = makeChild<QLineEdit>(box, text);
    addLabelledRow(form, box, label, edit);
    return edit;
  };
  client_ = line(QStringLiteral("&Client"), options.client);
  dateDeb_ = line(QStringLiteral("&Du"), options.dateDeb);
  dateFin_ = line(QStringLiteral("A&u"), options.dateFin);
  heureDe_ = line(QStringLiteral("De"), options.heureDe);
  heureA_ = line(QStringLiteral("À"), options.heureA);
  dateDeb_->setAccessibleDescription(QStringLiteral("Premier jour, jj/mm/aaaa"));
  dateFin_->setAccessibleDescription(QStringLiteral("Dernier jour, jj/mm/aaaa"));
  heureDe_->setAccessibleDescription(QStringLiteral("Heure de début, HH:MM"));
  heureA_->setAccessibleDescription(QStringLiteral("Heure de fin, HH:MM"));
  auto* days = makeChild<QWidget>(box);
  days->setAccessibleName(QStringLiteral("Jours"));
  auto* daysLayout = makeChild<QHBoxLayout>(days);
  daysLayout->setContentsMargins(0, 0, 0, 0);
  for (std::size_t d = 0; d < days_.size(); ++d) {
    days_[d] = makeChild<QCheckBox>(days, QString::fromUtf8(kDayNames[d].shortName));
    days_[d]->setAccessibleName(QString::fromUtf8(kDayNames[d].name));
    days_[d]->setChecked(static_cast<qsizetype>(d) < options.days.size() &&
                         options.days[static_cast<qsizetype>(d)] == QLatin1Char('1'));
    daysLayout->addWidget(days_[d]);
  }
  addLabelledRow(form, box, QStringLiteral("&Jours"), days);
  days->setFocusProxy(days_[0]);
  floating_ = makeChild<QCheckBox>(box, QStringLiteral("Semaines &flottantes"));
  floating_->setChecked(options.floating);
  form->addRow(QString(), floating_);
  key_ = line(QStringLiteral("Clé co&mplète"), options.key);
  key_->setPlaceholderText(QStringLiteral("intervention ou semaine type"));
  auto* init = makeChild<QPushButton>(box, QStringLiteral("Charger l'&intervention"));
  init->setToolTip(QStringLiteral("Init sur ces critères"));
  connect(init, &QPushButton::clicked, this, [this] { runInit(); });
  form->addRow(QString(), init);
  return box;
}

QWidget* DemoWindow::makeHostPanel() {
  auto* box = makeChild<QGroupBox>(this, QStringLiteral("Appels de l'hôte"));
  auto* layout = makeChild<QVBoxLayout>(box);
  // French captions say what each call does for the planner; the call's own name, which
  // a host developer looks for, is the tooltip.
  const auto button = [&](const QString& caption, const QString& call, void (DemoWindow::*act)()) {
    auto* b = makeChild<QPushButton>(box, caption);
    b->setToolTip(call);
    connect(b, &QPushButton::clicked, this,
            [this, act] { qt::guarded(this, [this, act] { (this->*act)(); }); });
    layout->addWidget(b);
  };
  button(QStringLiteral("&Garder la sélection"),
         QStringLiteral("MAJ_Enr : la sélection dans W_Enr, montrée ci-dessous"),
         &DemoWindow::majEnr);
  button(QStringLiteral("&Vider la sélection"), QStringLiteral("Vider_Tache"),
         &DemoWindow::viderTache);
  button(QStringLiteral("&Réafficher la sélection gardée"),
         QStringLiteral("Affiche sur W_Aff, la dernière sélection gardée"),
         &DemoWindow::afficheLast);
  button(QStringLiteral("&Enregistrer dans la base"),
         QStringLiteral("MAJ_Enr, puis W_Enr écrit sous une clé de détail d'intervention"),
         &DemoWindow::store);
  total_ = makeChild<QLabel>(box);
  total_->setToolTip(QStringLiteral("W_Total, en minutes"));
  showTotal(0);
  layout->addWidget(total_);
  auto* recordCaption = makeChild<QLabel>(box, QStringLiteral("Sélection gardée :"));
  layout->addWidget(recordCaption);
  record_ = makeChild<QTableWidget>(box, 0, 3);
  recordCaption->setBuddy(record_);
  record_->setAccessibleName(QStringLiteral("Sélection gardée"));
  record_->setToolTip(QStringLiteral("W_Enr après le dernier MAJ_Enr"));
  record_->setHorizontalHeaderLabels(
      {QStringLiteral("Code"), QStringLiteral("Durée"), QStringLiteral("Observation")});
  record_->horizontalHeader()->setStretchLastSection(true);
  record_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  record_->setMinimumWidth(320);
  layout->addWidget(record_);
  status_ = makeChild<QLabel>(box);
  status_->setWordWrap(true);
  layout->addWidget(status_);
  return box;
}

void DemoWindow::showTotal(double minutes) {
  total_->setText(QStringLiteral("Total pour l'hôte : %1 min").arg(minutes));
}

void DemoWindow::runInit() {
  qt::guarded(this, [this] {
    Text days;
    const std::size_t count = floating_->isChecked() ? 6 : 7;
    for (std::size_t d = 0; d < count; ++d) days.push_back(days_[d]->isChecked() ? u'1' : u'0');
    const DatabaseRef database = openDatabase(database_);
    Text code = fromQString(key_->text().trimmed());
    if (code.empty()) {
      // The control writes the code into its queries: it must name a client and hold
      // nothing that a query would read as more than a code.
      code = fromQString(client_->text().trimmed());
      checkClientCode(code);
      if (!clientKnown(database, code)) {
        throw Failure(errors::kRecordNotFound,
                      "Aucun client « " + toUtf8(code) + " » dans la base " + database_ + ".");
      }
      if (floating_->isChecked()) code += u"FLOT";
    }
    InitArguments a{fromQString(kind_->currentText()),
                    code,
                    fromQString(dateDeb_->text()),
                    fromQString(dateFin_->text()),
                    fromQString(heureDe_->text()),
                    fromQString(heureA_->text()),
                    days};
    control().TheDatabase(database);
    control().Init(a);
    view_->refreshLists();
    // The host reads the total after Init too: the search may have selected items.
    showTotal(control().W_Total.toDouble());
    setStatus(QStringLiteral("Init sur %1 : %2 proposition(s), %3 choisie(s).")
                  .arg(toQString(code))
                  .arg(control().Lst_Possible.ListCount())
                  .arg(control().Lst_Selectionne.ListCount()));
  });
}

void DemoWindow::majEnr() {
  control().MAJ_Enr();
  lastSelection_ = control().W_Enr;
  showRecord(control().W_Enr);
}

void DemoWindow::viderTache() {
  control().Vider_Tache();
  setStatus(QStringLiteral("Sélection vidée."));
}

void DemoWindow::afficheLast() {
  if (!lastSelection_) {
    setStatus(QStringLiteral("Aucune sélection gardée : « Garder la sélection » d'abord."));
    return;
  }
  control().W_Aff = lastSelection_;
  control().Affiche();
  setStatus(QStringLiteral("Dernière sélection affichée."));
}

void DemoWindow::store() {
  majEnr();
  qt::Intervention intervention;
  intervention.client = fromQString(client_->text().trimmed());
  intervention.dateDeb = fromQString(dateDeb_->text());
  intervention.dateFin = fromQString(dateFin_->text());
  intervention.heureDe = fromQString(heureDe_->text());
  intervention.heureA = fromQString(heureA_->text());
  intervention.kind = fromQString(kind_->currentText());
  const Text key = qt::storeSelection(database_, intervention, *control().W_Enr);
  key_->setText(toQString(key));
  setStatus(QStringLiteral("Enregistrée sous %1 ; Init consulte cette clé.").arg(toQString(key)));
}

void DemoWindow::showRecord(const RecordRef& record) {
  const int items = record ? record->DCount() : 0;
  record_->setRowCount(items);
  for (int i = 1; i <= items; ++i) {
    for (int v = 1; v <= 3; ++v) {
      // The table takes the item.
      record_->setItem(i - 1, v - 1,
                       std::make_unique<QTableWidgetItem>(toQString(record->r(i, v))).release());
    }
  }
  showTotal(control().W_Total.toDouble());
}

void DemoWindow::setStatus(const QString& text) {
  status_->setText(text);
}

}  // namespace velmora::demo

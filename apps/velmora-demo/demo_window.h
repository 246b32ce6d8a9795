// The demo host: chooses the intervention, calls Init, shows the control, and offers
// the host's calls on the selection.
#pragma once

#include <array>
#include <memory>
#include <string>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <QWidget>

#include <velmora/control/ctr_velmora_new.h>
#include <velmora/qt/velmora_widget.h>

namespace velmora::demo {

struct DemoOptions {
  std::string database;
  QString kind = QStringLiteral("AUTRE");
  QString client = QStringLiteral("00001");
  QString key;  // a full key, consulted instead of the client
  QString dateDeb = QStringLiteral("23/11/2026");
  QString dateFin = QStringLiteral("23/11/2026");
  QString heureDe = QStringLiteral("08:30");
  QString heureA = QStringLiteral("10:00");
  QString days = QStringLiteral("1000000");  // lundi first
  bool floating = false;
};

class DemoWindow : public QWidget {
  Q_OBJECT

 public:
  explicit DemoWindow(const DemoOptions& options, QWidget* parent = nullptr);

  // Init on the criteria on screen; failures are shown, not thrown.
  void runInit();
  qt::VelmoraWidget& controlView() const { return *view_; }

 private:
  QWidget* makeCriteria(const DemoOptions& options);
  QWidget* makeHostPanel();
  void majEnr();
  void viderTache();
  void afficheLast();
  void store();
  void showRecord(const RecordRef& record);
  void setStatus(const QString& text);
  void showTotal(double minutes);

  Ctr_VelmoraNew& control() const { return view_->control(); }

  std::string database_;
  // The view owns the control; Qt's parent owns the view.
  qt::VelmoraWidget* view_ = nullptr;
  RecordRef lastSelection_;

  QComboBox* kind_ = nullptr;
  QLineEdit* client_ = nullptr;
  QLineEdit* key_ = nullptr;
  QLineEdit* dateDeb_ = nullptr;
  QLineEdit* dateFin_ = nullptr;
  QLineEdit* heureDe_ = nullptr;
  QLineEdit* heureA_ = nullptr;
  std::array<QCheckBox*, 7> days_{};
  QCheckBox* floating_ = nullptr;
  QLabel* total_ = nullptr;
  QTableWidget* record_ = nullptr;
  QLabel* status_ = nullptr;
};

}  // namespace velmora::demo

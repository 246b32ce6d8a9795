// VelmoraWidget: the control on screen, as a Qt widget that a host places in a layout,
// a .ui form or Qt Designer. It shows every child control of one Ctr_VelmoraNew at its
// place, follows their state as it changes, and routes the planner's gestures to them.
#pragma once

#include <velmora/export.h>

#include <memory>

#include <QWidget>

#include <velmora/qt/failure_display.h>

namespace velmora {
class Ctr_VelmoraNew;
}  // namespace velmora

namespace velmora::toolkit {
class Control;
}  // namespace velmora::toolkit

namespace velmora::qt {

class QtServices;

// The control on screen: one view per child control of one Ctr_VelmoraNew, placed at
// its design geometry (the widget has the control's fixed size), showing the child's
// state the moment it changes and handing each mouse, key or accessibility gesture to
// the child's gesture methods, so that the control's logic sees what a headless driver
// would make it see.
//
// Thread: the GUI thread only, like every QWidget; the control shown must be used from
// that thread too.
//
// Ownership: a widget made with a parent only owns a control of its own, dropped with
// the widget or when setControl shows another one. A widget given a control (second
// constructor, setControl) only shows it: the host keeps that control alive as long as
// the widget shows it. The widget never opens or closes a connection: the host gives
// the control its database (control().TheDatabase) and releases it through the
// control.
//
// Shared state: the connection, the open files, the cursors and the working tables
// belong to the control's module state. Unless a host gives a control a session of its
// own, that state is shared by every control of the process, and so by every widget
// that shows one: a Vider_liste through one widget empties them for all.
//
// Failures that the control lets out while the planner works are emitted as failed();
// only when no one is connected to that signal does the widget show them in a warning
// box itself (see failure_display.h). No failure crosses Qt's event loop.
class VELMORA_EXPORT VelmoraWidget : public QWidget {
  Q_OBJECT
  // W_Total, the total duration of the selection, in minutes.
  Q_PROPERTY(double total READ total NOTIFY totalChanged)
  // Whether a selected task is mandatory: the warning under the selection is shown.
  Q_PROPERTY(bool mandatory READ mandatory NOTIFY mandatoryChanged)
  // The kind of activity of the last Init: "SSIAD" (care acts) or "AUTRE" (home help),
  // "" before the first.
  Q_PROPERTY(QString kind READ kind)
  // A filter line above each list, with its count (off by default). Typing narrows the
  // rows shown, case and accents aside, to those that hold every word; the control's
  // rows, marks, indexes and everything a host reads stay as they are.
  Q_PROPERTY(
      bool filtersVisible READ filtersVisible WRITE setFiltersVisible NOTIFY filtersVisibleChanged)

 public:
  // A widget with a control of its own, not yet connected: the host gives it its
  // database and calls Init through control(). Designer and uic use this constructor.
  explicit VelmoraWidget(QWidget* parent = nullptr);
  // A widget over the host's control, which must outlive the widget or be replaced
  // through setControl first. It installs its services and failure handler on control.
  explicit VelmoraWidget(Ctr_VelmoraNew& control, QWidget* parent = nullptr);
  // Unhooks the control shown (its failure handler is removed; the services it was
  // given stay with it and open their boxes over the active window) and deletes the views.
  ~VelmoraWidget() override;
  VelmoraWidget(const VelmoraWidget&) = delete;
  VelmoraWidget& operator=(const VelmoraWidget&) = delete;

  // The control shown; valid as long as the widget shows it.
  Ctr_VelmoraNew& control() const;
  // Shows control instead of the one shown: the views are made anew over it and the
  // widget's services and failure handler installed on it. A control of the widget's
  // own is dropped, with what it held; the host's previous control is left as it is,
  // unhooked. Showing the control already shown does nothing.
  void setControl(Ctr_VelmoraNew& control);

  // The total property: the control's W_Total now, in minutes.
  double total() const;
  // The mandatory property: whether the control shows its mandatory-task warning now.
  bool mandatory() const;
  // The kind property: the kind of activity of the control's last Init.
  QString kind() const;

  // The filtersVisible property. Turning it off clears what was typed.
  bool filtersVisible() const;
  void setFiltersVisible(bool visible);

  // The Qt services (question box, modal dialog, pointer) that the widget gives the
  // controls it shows; they open their boxes over the widget's window.
  QtServices& services() const;
  // The view of one of the shown control's children (a QLabel, QGroupBox, QPushButton,
  // QCheckBox, QLineEdit, QPlainTextEdit or QListView named after the child); nullptr
  // for anything that is not a child of the control shown.
  QWidget* view(const toolkit::Control& child) const;

  // The lists catch up at the next turn of the event loop; this brings them up to date
  // at once, for a host that grabs the widget straight after a call.
  void refreshLists();

 Q_SIGNALS:
  // Raised at the next turn of the event loop after the change, once for a burst, for
  // the planner's gestures and the host's calls alike.
  void totalChanged(double minutes);
  void mandatoryChanged(bool mandatory);
  // The rows of the selection changed (added, removed, rewritten, emptied).
  void selectionChanged();
  // A failure that the control let out: its number and message. While anything is
  // connected, the widget shows no box of its own.
  void failed(int number, const QString& message);
  void filtersVisibleChanged(bool visible);

 protected:
  // Escape is Annuler while an edit is open.
  void keyPressEvent(QKeyEvent* event) override;
  // The focus is drawn from the start, not only once the planner has pressed Tab.
  void showEvent(QShowEvent* event) override;

 private:
  // A failure from the control or from a gesture: emitted, or shown when no one listens.
  void reportFailure(const Failure& failure);
  friend void presentFailure(QWidget* parent, const Failure& failure);

  class Private;
  std::unique_ptr<Private> const d;
};

// The font of the controls for which the surface names none: MS Sans Serif 8.25 pt,
// drawn in Liberation Sans, which keeps its metrics.
VELMORA_EXPORT QFont surfaceFont();

}  // namespace velmora::qt

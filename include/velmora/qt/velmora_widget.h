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
namespace toolkit {
class Control;
class ListBox;
}  // namespace toolkit
}  // namespace velmora

namespace velmora::qt {

class ListBoxView;
class QtServices;

// Ownership: the widget created with a parent only owns a control of its own; the
// widget given a control (second constructor or setControl) shows it, and the host
// keeps that control alive as long as the widget shows it.
//
// Failures that the control lets out while the planner works are emitted as failed();
// only when no one is connected to that signal does the widget show them in a warning
// box itself.
//
// Threads: like the control, the widget lives on the host's user-interface thread.
class VELMORA_EXPORT VelmoraWidget : public QWidget {
  Q_OBJECT
  // W_Total, the total duration of the selection, in minutes.
  Q_PROPERTY(double total READ total NOTIFY totalChanged)
  // Whether a selected task is mandatory: the warning under the selection is shown.
  Q_PROPERTY(bool mandatory READ mandatory NOTIFY mandatoryChanged)
  // The kind of activity of the last Init: "SSIAD" (care acts) or "AUTRE" (home help),
  // "" before the first.
  Q_PROPERTY(QString kind READ kind)

 public:
  // A widget with a control of its own, not yet connected: the host sets its database
  // and calls Init through control().
  explicit VelmoraWidget(QWidget* parent = nullptr);
  // A widget over the host's control.
  explicit VelmoraWidget(Ctr_VelmoraNew& control, QWidget* parent = nullptr);
  ~VelmoraWidget() override;
  VelmoraWidget(const VelmoraWidget&) = delete;
  VelmoraWidget& operator=(const VelmoraWidget&) = delete;

  // The control shown. setControl shows another one (the host's) instead; a control
  // of the widget's own is then dropped.
  Ctr_VelmoraNew& control() const;
  void setControl(Ctr_VelmoraNew& control);

  double total() const;
  bool mandatory() const;
  QString kind() const;

  // The Qt services (question box, modal dialog, pointer) given to the control.
  QtServices& services() const;
  // The view of one of the control's children.
  QWidget* view(const toolkit::Control& child) const;
  ListBoxView* listView(const toolkit::ListBox& list) const;

  // The lists catch up at the next turn of the event loop; this brings them up to date
  // at once, for a host that grabs the widget straight after a call.
  void refreshLists();

 Q_SIGNALS:
  // Raised at the next turn of the event loop after the change, once for a burst.
  void totalChanged(double minutes);
  void mandatoryChanged(bool mandatory);
  // The rows of the selection changed (added, removed, rewritten, emptied).
  void selectionChanged();
  // A failure that the control let out: its number and message.
  void failed(int number, const QString& message);

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

// The font of the controls for which the surface names none.
VELMORA_EXPORT QFont surfaceFont();

}  // namespace velmora::qt

// VelmoraWidget: the control on screen. It shows every child control of one
// Ctr_VelmoraNew at its place, follows their state as it changes, and routes the
// planner's gestures to them. The host owns the control, which must outlive the widget.
#pragma once

#include <velmora/export.h>

#include <map>
#include <memory>

#include <QWidget>

#include <velmora/control/ctr_velmora_new.h>
#include <velmora/qt/qt_services.h>

namespace velmora::qt {

class ListBoxView;

class VELMORA_EXPORT VelmoraWidget : public QWidget {
  Q_OBJECT

 public:
  // Gives the control Qt screen services and shows the failures that its event
  // procedures let out.
  explicit VelmoraWidget(Ctr_VelmoraNew& control, QWidget* parent = nullptr);
  ~VelmoraWidget() override;
  VelmoraWidget(const VelmoraWidget&) = delete;
  VelmoraWidget& operator=(const VelmoraWidget&) = delete;

  Ctr_VelmoraNew& control() const { return control_; }
  QtServices& services() const { return *services_; }

  // The view of one of the control's children.
  QWidget* view(const toolkit::Control& child) const;
  ListBoxView* listView(const toolkit::ListBox& list) const;

  // The lists catch up at the next turn of the event loop; this brings them up to date
  // at once, for a host that grabs the widget straight after a call.
  void refreshLists();

 private:
  Ctr_VelmoraNew& control_;
  std::shared_ptr<QtServices> services_;
  std::map<const toolkit::Control*, QWidget*> views_;
};

// The font of the controls for which the surface names none.
VELMORA_EXPORT QFont surfaceFont();

}  // namespace velmora::qt

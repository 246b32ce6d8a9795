#include <velmora/qt/velmora_widget.h>

#include <vector>

#include <velmora/qt/failure_display.h>
#include <velmora/qt/twips.h>
#include "qt/control_views.h"

namespace velmora::qt {

namespace {

// The host platform's default face; fontconfig knows no such face, and Liberation Sans
// keeps the metrics of its Arial successor, so captions fit their boxes.
void substituteSurfaceFaces() {
  static const bool done = [] {
    QFont::insertSubstitution(QStringLiteral("MS Sans Serif"), QStringLiteral("Liberation Sans"));
    return true;
  }();
  (void)done;
}

// Controls without a caption get a name for assistive technology.
QString accessibleNameOf(const Ctr_VelmoraNew& c, const toolkit::Control& child) {
  if (&child == &c.Lst_Possible) return QStringLiteral("Possibles");
  if (&child == &c.Lst_Selectionne) return QStringLiteral("Sélection");
  if (&child == &c.Cmd_Select) return QStringLiteral("Sélectionner");
  if (&child == &c.Txt_DureeSoin) return QStringLiteral("Durée");
  if (&child == &c.Txt_Duree) return QStringLiteral("Total");
  return {};
}

}  // namespace

QFont surfaceFont() {
  substituteSurfaceFaces();
  QFont font(QStringLiteral("MS Sans Serif"));
  font.setPointSizeF(8.25);
  return font;
}

VelmoraWidget::VelmoraWidget(Ctr_VelmoraNew& control, QWidget* parent)
    : QWidget(parent), control_(control), services_(std::make_shared<QtServices>(this)) {
  setObjectName(QStringLiteral("Ctr_VelmoraNew"));
  setFont(surfaceFont());
  setFixedSize(toPixels(Ctr_VelmoraNew::kWidth), toPixels(Ctr_VelmoraNew::kHeight));

  QWidget* frame = createView(control.Cdr_Soins, this);
  views_[&control.Cdr_Soins] = frame;
  // Tab order: the controls on the control by their index, a frame's children in the
  // place of their frame.
  std::vector<std::pair<int, QWidget*>> tabOrder;
  constexpr int kInFrame = 1000;
  for (toolkit::Control* child : control.controls()) {
    if (child == &control.Cdr_Soins) continue;
    const bool inFrame = control.liesInFrame(*child);
    QWidget* view = createView(*child, inFrame ? frame : this);
    views_[child] = view;
    if (const QString name = accessibleNameOf(control, *child); !name.isEmpty()) {
      view->setAccessibleName(name);
    }
    const int order = inFrame ? control.Cdr_Soins.tabIndex() * kInFrame + 1 + child->tabIndex()
                              : child->tabIndex() * kInFrame;
    tabOrder.emplace_back(order, view);
  }
  // Labels are windowless on the host platform: drawn beneath the other controls.
  for (const auto& [child, view] : views_) {
    if (child->kind() == toolkit::Kind::Label) view->lower();
  }
  applyTabOrder(tabOrder);

  control.setServices(services_);
  control.setFailureHandler([this](const Failure& failure) { presentFailure(this, failure); });
}

VelmoraWidget::~VelmoraWidget() {
  // The handler points at this widget; the services outlive it and open parentless.
  control_.setFailureHandler({});
}

QWidget* VelmoraWidget::view(const toolkit::Control& child) const {
  const auto found = views_.find(&child);
  return found == views_.end() ? nullptr : found->second;
}

ListBoxView* VelmoraWidget::listView(const toolkit::ListBox& list) const {
  return qobject_cast<ListBoxView*>(view(list));
}

void VelmoraWidget::refreshLists() {
  for (const auto& [child, view] : views_) {
    if (auto* list = qobject_cast<ListBoxView*>(view)) list->listModel().refreshNow();
  }
}

}  // namespace velmora::qt

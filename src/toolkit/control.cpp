#include <velmora/toolkit/control.h>

#include <algorithm>

namespace velmora::toolkit {

Control::Control(std::string name, Kind kind, Geometry geometry, int tabIndex)
    : name_(std::move(name)), kind_(kind), geometry_(geometry), tabIndex_(tabIndex) {}

void Control::setEnabled(bool enabled) {
  enabled_ = enabled;
  notify(Change::Enabled);
}

void Control::setVisible(bool visible) {
  visible_ = visible;
  notify(Change::Visible);
}

std::shared_ptr<void> Control::subscribe(Listener listener) {
  auto owned = std::make_shared<Listener>(std::move(listener));
  listeners_->push_back(owned);
  return owned;
}

void Control::notify(Change change, int row) const {
  if (listeners_->empty()) return;
  // A listener may unsubscribe while we call it: walk a copy and prune afterwards.
  const auto snapshot = *listeners_;
  for (const auto& weak : snapshot) {
    if (const auto listener = weak.lock()) (*listener)(change, row);
  }
  std::erase_if(*listeners_, [](const auto& weak) { return weak.expired(); });
}

void Control::dispatchGesture(const std::function<void()>& event) const {
  if (!event) return;
  if (!failureHandler_ || !*failureHandler_) {
    event();
    return;
  }
  try {
    event();
  } catch (const Failure& failure) {
    (*failureHandler_)(failure);
  }
}

}  // namespace velmora::toolkit

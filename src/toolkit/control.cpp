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
  // Listeners are called in place, not from a copy: a list notifies once per row. One may
  // unsubscribe while it is called (its entry expires) or subscribe another (added past
  // those walked here); expired entries are pruned only once no notification of this
  // thread is under way, so that no entry moves while a walk is on.
  thread_local int walks = 0;
  struct Walk {
    Walk() { ++walks; }
    ~Walk() { --walks; }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;
  };
  {
    const Walk walk;
    const std::size_t count = listeners_->size();
    for (std::size_t i = 0; i < count; ++i) {
      if (const auto listener = (*listeners_)[i].lock()) (*listener)(change, row);
    }
  }
  if (walks > 0) return;
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

// The base of every child control: name, place, tab index, visibility and enabled state,
// and the one path by which a failure of an event reaches the control's handler.
#include <velmora/toolkit/control.h>

#include <algorithm>

namespace velmora::toolkit {

// A subscriber stays in the list while a notification may be calling it; its token only
// marks it dead, and the list drops dead subscribers once no notification of this control
// is under way. Calling one costs no reference counting: a list notifies once per row.
struct Control::Listeners {
  struct Subscriber {
    Listener listener;
    ChangeMask heard = kEveryChange;
    bool live = true;
  };
  std::vector<std::shared_ptr<Subscriber>> subscribers;
  ChangeMask heard = 0;  // by any subscriber, dead ones not yet dropped included
  int walks = 0;
  bool anyDead = false;

  void pruneIfIdle() {
    if (walks > 0 || !anyDead) return;
    std::erase_if(subscribers, [](const auto& subscriber) { return !subscriber->live; });
    anyDead = false;
    heard = 0;
    for (const auto& subscriber : subscribers) heard |= subscriber->heard;
  }
};

Control::Control(std::string name, Kind kind, Geometry geometry, int tabIndex)
    : name_(std::move(name)),
      kind_(kind),
      geometry_(geometry),
      tabIndex_(tabIndex),
      listeners_(std::make_shared<Listeners>()) {}

void Control::setEnabled(bool enabled) {
  enabled_ = enabled;
  notify(Change::Enabled);
}

void Control::setVisible(bool visible) {
  visible_ = visible;
  notify(Change::Visible);
}

std::shared_ptr<void> Control::subscribe(Listener listener, ChangeMask heard) {
  auto subscriber = std::make_shared<Listeners::Subscriber>();
  subscriber->listener = std::move(listener);
  subscriber->heard = heard;
  listeners_->subscribers.push_back(subscriber);
  listeners_->heard |= heard;
  const std::weak_ptr<Listeners> owner = listeners_;
  return {subscriber.get(), [subscriber, owner](void*) {
            subscriber->live = false;
            if (const auto listeners = owner.lock()) {
              listeners->anyDead = true;
              listeners->pruneIfIdle();
            }
          }};
}

void Control::notify(Change change, int row) const {
  Listeners& listeners = *listeners_;
  const ChangeMask changeBit = maskOf(change);
  if ((listeners.heard & changeBit) == 0) return;
  // A listener may unsubscribe while it is called (it is marked dead, not removed) or
  // subscribe another (added past those walked here): no subscriber moves during a walk.
  struct Walk {
    explicit Walk(int& walks) : walks_(walks) { ++walks_; }
    ~Walk() { --walks_; }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;
    int& walks_;
  };
  {
    const Walk walk(listeners.walks);
    const std::size_t count = listeners.subscribers.size();
    for (std::size_t i = 0; i < count; ++i) {
      const Listeners::Subscriber& subscriber = *listeners.subscribers[i];
      if (subscriber.live && (subscriber.heard & changeBit) != 0) {
        subscriber.listener(change, row);
      }
    }
  }
  listeners.pruneIfIdle();
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

// A counted reference, as the host platform's object variables: copying shares the
// object, assigning releases what the slot held, and a call through an empty
// reference fails with "object not set".
#pragma once

#include <velmora/export.h>

#include <memory>
#include <string>
#include <utility>

#include <velmora/base/failure.h>

namespace velmora {

// Threads: copying and releasing references is safe from several threads (the count is
// atomic); the object itself is shared, not synchronised. The object is released with
// the last reference that holds it.
template <class T>
class VELMORA_EXPORT Ref {
 public:
  Ref() = default;
  Ref(std::nullptr_t) {}  // NOLINT(google-explicit-constructor): "Set x = Nothing"
  template <class U>
  Ref(std::shared_ptr<U> object)
      : object_(std::move(object)) {}  // NOLINT(google-explicit-constructor)
  template <class U>
  Ref(const Ref<U>& other) : object_(other.shared()) {}  // NOLINT(google-explicit-constructor)

  template <class... Args>
  static Ref make(Args&&... args) {
    return Ref(std::make_shared<T>(std::forward<Args>(args)...));
  }

  // The object; an empty reference fails with errors::kObjectNotSet.
  T& operator*() const { return get(); }
  T* operator->() const { return &get(); }
  T& get() const {
    if (!object_) throw Failure(errors::kObjectNotSet, "objet non défini : la référence est vide");
    return *object_;
  }

  bool empty() const noexcept { return !object_; }
  explicit operator bool() const noexcept { return static_cast<bool>(object_); }
  void reset() noexcept { object_.reset(); }
  const std::shared_ptr<T>& shared() const noexcept { return object_; }
  long useCount() const noexcept { return object_.use_count(); }

  friend bool operator==(const Ref& a, const Ref& b) { return a.object_ == b.object_; }

 private:
  std::shared_ptr<T> object_;
};

}  // namespace velmora

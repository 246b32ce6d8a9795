// Plain objects that hold the state of each child control: what a widget toolkit
// would hold, with no toolkit behind it. Views subscribe to changes; the logic never
// knows whether one is watching.
//
// Ownership and threads: a control owns its state; the listeners a view subscribes are
// kept until their token is destroyed, which may outlive the control. Every call, and
// every listener it runs, is on the thread that uses the control's session.
#pragma once

#include <velmora/export.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <velmora/base/failure.h>
#include <velmora/base/text.h>

namespace velmora::toolkit {

enum class Kind { CheckBox, Frame, ListBox, TextBox, CommandButton, Label, Form };

// Place and size in twips (1440 to the inch), relative to the container.
struct VELMORA_EXPORT Geometry {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  friend bool operator==(const Geometry&, const Geometry&) = default;
};

struct VELMORA_EXPORT Rgb {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  friend bool operator==(const Rgb&, const Rgb&) = default;
};

struct VELMORA_EXPORT FontSpec {
  std::string family;
  double points = 8.25;
  bool bold = false;
  friend bool operator==(const FontSpec&, const FontSpec&) = default;
};

enum class Alignment { Left, Right, Center };

// What changed, for views. Row is the list row concerned, or -1.
enum class Change {
  Enabled,
  Visible,
  Caption,
  Text,
  Selection,  // caret or selected stretch of a text box (SelStart, SelLength)
  Value,
  ListIndex,
  RowsReset,    // Clear
  RowAdded,     // AddItem at row
  RowRemoved,   // RemoveItem at row
  RowChanged,   // List(row) written
  RowSelected,  // Selected(row) written
};

// The changes a listener wants to hear: a list notifies once per row, and a view that
// follows only its control's enabled and visible states need not be called for each.
using ChangeMask = std::uint32_t;
constexpr ChangeMask maskOf(Change change) {
  return ChangeMask{1} << static_cast<unsigned>(change);
}
inline constexpr ChangeMask kEveryChange = ~ChangeMask{0};

// A failure that a gesture's event procedure let out goes to this handler, which the
// host supplies (the Qt binding shows it, the command line prints it). Without one the
// failure propagates to whoever made the gesture.
using FailureHandler = std::function<void(const Failure&)>;

class VELMORA_EXPORT Control {
 public:
  using Listener = std::function<void(Change, int row)>;

  Control(std::string name, Kind kind, Geometry geometry, int tabIndex);
  virtual ~Control() = default;
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;

  const std::string& name() const { return name_; }
  Kind kind() const { return kind_; }
  const Geometry& geometry() const { return geometry_; }
  int tabIndex() const { return tabIndex_; }

  bool Enabled() const { return enabled_; }
  void setEnabled(bool enabled);
  bool Visible() const { return visible_; }
  void setVisible(bool visible);

  // Look, as documented for the surface; the logic never reads these.
  bool tabStop = true;
  std::optional<FontSpec> font;
  std::optional<Rgb> foreground;
  std::optional<Rgb> background;
  Alignment alignment = Alignment::Left;

  // Views: the listener is called after each change it hears, on the caller's stack.
  // The returned token unsubscribes when destroyed.
  std::shared_ptr<void> subscribe(Listener listener, ChangeMask heard = kEveryChange);

  // Where failures of gestures go; shared by the controls of one surface.
  void setFailureHandler(std::shared_ptr<FailureHandler> handler) {
    failureHandler_ = std::move(handler);
  }

 protected:
  void notify(Change change, int row = -1) const;
  // Runs an event procedure for a gesture: a failure goes to the handler if any.
  void dispatchGesture(const std::function<void()>& event) const;

 private:
  std::string name_;
  Kind kind_;
  Geometry geometry_;
  int tabIndex_;
  bool enabled_ = true;
  bool visible_ = true;
  struct Listeners;  // shared with the tokens, which outlive the control
  std::shared_ptr<Listeners> listeners_;
  std::shared_ptr<FailureHandler> failureHandler_;
};

}  // namespace velmora::toolkit

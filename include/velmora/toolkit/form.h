// A modal form: loaded, shown modally by the host's services, unloaded by its code.
// A form's own event procedures decide whether it may close (Unload with Cancel). The
// observations dialog is one form for the process, shown by every control on the thread
// that runs it.
#pragma once

#include <velmora/export.h>

#include <cstdint>
#include <functional>
#include <vector>

#include <velmora/toolkit/control.h>

namespace velmora::toolkit {

class VELMORA_EXPORT Form : public Control {
 public:
  // width and height are those of the client area, in twips.
  Form(std::string name, int width, int height, Text caption);

  const Text& Caption() const { return caption_; }
  bool isLoaded() const { return loaded_; }
  // Children in the order of their declaration, for views.
  const std::vector<Control*>& children() const { return children_; }

  // Raises Load on the first Load after an Unload; does nothing when loaded already.
  void Load();
  // Raises Unload(Cancel); the form stays loaded when the handler sets Cancel.
  // Returns whether the form was unloaded.
  bool Unload();

  std::function<void()> LoadEvent;
  std::function<void(std::int16_t& Cancel)> UnloadEvent;

  // Gesture: the close box of the title bar.
  void requestClose();

  // Look of the dialog, as documented for it.
  bool fixedSingleBorder = true;
  bool maximizeButton = false;
  bool centreOnScreen = true;

 protected:
  void addChild(Control& child) { children_.push_back(&child); }

 private:
  Text caption_;
  bool loaded_ = false;
  std::vector<Control*> children_;
};

}  // namespace velmora::toolkit

// A modal form of the toolkit: its children, and Load and Unload with the events that
// let a form refuse to close.
#include <velmora/toolkit/form.h>

namespace velmora::toolkit {

Form::Form(std::string name, int width, int height, Text caption)
    : Control(std::move(name), Kind::Form, Geometry{0, 0, width, height}, 0),
      caption_(std::move(caption)) {}

void Form::Load() {
  if (loaded_) return;
  loaded_ = true;
  if (LoadEvent) LoadEvent();
  notify(Change::Visible);
}

bool Form::Unload() {
  if (!loaded_) return true;
  std::int16_t cancel = 0;
  if (UnloadEvent) UnloadEvent(cancel);
  if (cancel != 0) return false;
  loaded_ = false;
  notify(Change::Visible);
  return true;
}

void Form::requestClose() {
  dispatchGesture([this] { Unload(); });
}

}  // namespace velmora::toolkit

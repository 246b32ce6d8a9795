// Failures must not cross Qt's event loop: every gesture that a widget hands to the
// toolkit runs through guarded(), which shows what escaped and lets the planner go on.
//
// Thread: the GUI thread only. Shared: the presenter is one for the whole process, for
// every widget and dialog of the binding; a host sets it once, before showing widgets.
#pragma once

#include <velmora/export.h>

#include <functional>

#include <QWidget>

#include <velmora/base/failure.h>

namespace velmora::qt {

// How a failure is shown; the default is a modal warning box titled "Erreur" with
// failureText() and an OK button.
using FailurePresenter = std::function<void(QWidget* parent, const Failure& failure)>;

// Replaces the presenter for the whole process; an empty one restores the default.
VELMORA_EXPORT void setFailurePresenter(FailurePresenter presenter);
// Shows failure: a VelmoraWidget that encloses parent (not parent itself) takes it, and
// emits its failed() signal when a host listens to it; otherwise the presenter shows it
// over parent (which may be nullptr).
VELMORA_EXPORT void presentFailure(QWidget* parent, const Failure& failure);

// The text shown for a failure: "Erreur n° <number> :" and the message on the next line.
VELMORA_EXPORT QString failureText(const Failure& failure);

// Runs one gesture; a Failure that escapes it is presented with presentFailure, and any
// other std::exception as errors::kInvalidCall with its message. Nothing propagates.
VELMORA_EXPORT void guarded(QWidget* parent, const std::function<void()>& gesture);

}  // namespace velmora::qt

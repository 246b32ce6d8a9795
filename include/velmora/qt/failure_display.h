// Failures must not cross Qt's event loop: every gesture that a widget hands to the
// toolkit runs through guarded(), which shows what escaped and lets the planner go on.
#pragma once

#include <velmora/export.h>

#include <functional>

#include <QWidget>

#include <velmora/base/failure.h>

namespace velmora::qt {

// How a failure is shown; the default is a warning box with the number and message.
using FailurePresenter = std::function<void(QWidget* parent, const Failure& failure)>;

// Replaces the presenter for the whole process; an empty one restores the default.
VELMORA_EXPORT void setFailurePresenter(FailurePresenter presenter);
VELMORA_EXPORT void presentFailure(QWidget* parent, const Failure& failure);

// The text shown for a failure: "Erreur <number>" and the message on the next line.
VELMORA_EXPORT QString failureText(const Failure& failure);

// Runs one gesture; a failure that escapes it is presented instead of propagating.
VELMORA_EXPORT void guarded(QWidget* parent, const std::function<void()>& gesture);

}  // namespace velmora::qt

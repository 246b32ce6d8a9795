// Failures must not cross Qt's event loop: every gesture that a widget hands to the
// toolkit runs through guarded(), which shows what escaped and lets the planner go on.
#pragma once

#include <functional>

#include <QWidget>

#include "base/failure.h"

namespace velmora::qt {

// How a failure is shown; the default is a warning box with the number and message.
using FailurePresenter = std::function<void(QWidget* parent, const Failure& failure)>;

// Replaces the presenter for the whole process; an empty one restores the default.
void setFailurePresenter(FailurePresenter presenter);
void presentFailure(QWidget* parent, const Failure& failure);

// The text shown for a failure: "Erreur n° <number> :" and the message on the next line.
QString failureText(const Failure& failure);

// Runs one gesture; a failure that escapes it is presented instead of propagating.
void guarded(QWidget* parent, const std::function<void()>& gesture);

}  // namespace velmora::qt

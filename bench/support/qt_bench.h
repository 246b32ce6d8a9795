// The main of a benchmark of shown widgets: an offscreen application unless the display is
// named, the large account built before any timing, and the summary of the goals.
#pragma once

#include <functional>
#include <vector>

#include <QApplication>

#include "support/large_account.h"
#include "support/summary.h"

namespace velmora::bench {

// Runs the registered benchmarks under a QApplication; beforeQuit lets the widgets a
// benchmark kept go before the application does.
inline int runShownWithSummary(int argc, char** argv, const std::vector<RatioGoal>& ratios,
                               const std::vector<TimeGoal>& times,
                               const std::function<void()>& beforeQuit = {}) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  largeAccountDatabase();  // builds the large account before any timing
  const int status = runWithSummary(argc, argv, ratios, times);
  if (beforeQuit) beforeQuit();
  return status;
}

}  // namespace velmora::bench

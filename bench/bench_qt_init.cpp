// Init with the whole care-act catalogue of the large account while the control is on
// screen (offscreen), beside the same Init with no screen. The timing of the shown one
// runs until the lists have caught up and the window is painted, which is what the
// planner waits for.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include <QApplication>

#include <velmora/control/ctr_velmora_new.h>
#include <velmora/qt/velmora_widget.h>
#include "control/inspection.h"
#include "qt/velmora_widget_private.h"
#include "support/large_account.h"
#include "support/qt_bench.h"
#include "support/summary.h"

namespace velmora::bench {
namespace {

InitArguments careCatalogue() {
  return InitArguments{
      u"SSIAD",  fromUtf8(kClientWithoutAnything), u"23/11/2026", u"31/12/2026", u"08:00", u"09:30",
      u"1000000"};
}

void init(Ctr_VelmoraNew& control) {
  CtrInspector(control).session().state().clear();
  control.TheDatabase(largeAccountDatabase());
  InitArguments arguments = careCatalogue();
  control.Init(arguments);
}

void InitCareCatalogueHeadless(benchmark::State& state) {
  Ctr_VelmoraNew control;
  for (auto _ : state) {
    init(control);
    benchmark::DoNotOptimize(control.Lst_Possible.ListCount());
  }
  state.counters["rows"] = control.Lst_Possible.ListCount();
}

void InitCareCatalogueShown(benchmark::State& state) {
  Ctr_VelmoraNew control;
  qt::VelmoraWidget widget(control);
  widget.show();
  QCoreApplication::processEvents();
  for (auto _ : state) {
    init(control);
    QCoreApplication::processEvents();  // the lists refresh here, once each
    // The offscreen platform does not paint on its own: render the window, which paints
    // the visible rows of every list, as a screen would after the refresh.
    benchmark::DoNotOptimize(widget.grab());
  }
  state.counters["rows"] = qt::listViewOf(widget, control.Lst_Possible)->listModel().rowCount();
  if (state.counters["rows"] != control.Lst_Possible.ListCount()) {
    state.SkipWithError("the view did not catch up with the list");
  }
}

BENCHMARK(InitCareCatalogueHeadless)->Unit(benchmark::kMillisecond)->MinTime(4);
BENCHMARK(InitCareCatalogueShown)->Unit(benchmark::kMillisecond)->MinTime(4);

}  // namespace
}  // namespace velmora::bench

int main(int argc, char** argv) {
  using namespace velmora::bench;
  return runShownWithSummary(
      argc, argv, {RatioGoal{"InitCareCatalogueShown", "InitCareCatalogueHeadless", 1.1}}, {});
}

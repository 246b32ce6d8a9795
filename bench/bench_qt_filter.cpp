// The filter line over the care-act catalogue of the large account (32,767 rows), on the
// widget shown offscreen: each key typed (the rows narrowed, the view reset, the count
// rewritten and the list painted), the first key after a refill (no narrower filter to
// start from), and the folding a refill costs, beside the floor: one pass over the same
// texts, already folded, for the same words.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <QApplication>
#include <QLineEdit>

#include <velmora/control/ctr_velmora_new.h>
#include <velmora/qt/twips.h>
#include <velmora/qt/velmora_widget.h>
#include "control/inspection.h"
#include "qt/row_filter.h"
#include "qt/velmora_widget_private.h"
#include "support/large_account.h"
#include "support/qt_bench.h"
#include "support/summary.h"

namespace velmora::bench {
namespace {

// The keys of "pans simp" one by one, then Escape.
const std::vector<QString> kKeys = [] {
  std::vector<QString> keys;
  const QString typed = QStringLiteral("pans simp");
  for (qsizetype n = 1; n <= typed.size(); ++n) keys.push_back(typed.left(n));
  keys.emplace_back();
  return keys;
}();

// The control after the care-catalogue Init, shown with its filters.
struct Shown {
  Shown() {
    widget.setFiltersVisible(true);
    widget.show();
    refill();
    filter = widget.findChild<QLineEdit*>(QStringLiteral("Filtre_Possible"));
    list = qt::listViewOf(widget, control.Lst_Possible);
  }
  void refill() {
    CtrInspector(control).session().state().clear();
    control.TheDatabase(largeAccountDatabase());
    InitArguments arguments{u"SSIAD",      fromUtf8(kClientWithoutAnything),
                            u"23/11/2026", u"31/12/2026",
                            u"08:00",      u"09:30",
                            u"1000000"};
    control.Init(arguments);
    QCoreApplication::processEvents();  // the lists refresh here, and fold their rows
  }
  // A key: the filter line's text changes, the view catches up and is painted.
  void type(const QString& text) {
    filter->setText(text);
    QCoreApplication::processEvents();
    benchmark::DoNotOptimize(list->grab());
  }
  Ctr_VelmoraNew control;
  qt::VelmoraWidget widget{control};
  QLineEdit* filter = nullptr;
  qt::ListBoxView* list = nullptr;
};

// Made at first use, dropped before the application ends.
std::unique_ptr<Shown> theShown;
Shown& shown() {
  if (!theShown) theShown = std::make_unique<Shown>();
  return *theShown;
}

void FilterEachKey(benchmark::State& state) {
  Shown& s = shown();
  std::size_t key = 0;
  for (auto _ : state) {
    s.type(kKeys[key]);
    key = (key + 1) % kKeys.size();
  }
  s.type({});
  state.counters["rows"] = s.list->listModel().listCount();
}

void FilterFirstKeyAfterRefill(benchmark::State& state) {
  Shown& s = shown();
  for (auto _ : state) {
    state.PauseTiming();
    s.type({});
    s.refill();
    state.ResumeTiming();
    s.type(kKeys.front());
  }
  state.counters["shown"] = s.list->listModel().rowCount();
  s.type({});
}

// What a refill costs more with the filters on: every row's text folded.
void FoldAtRefill(benchmark::State& state) {
  qt::ListBoxModel& model = shown().list->listModel();
  for (auto _ : state) {
    model.setFiltering(false);
    model.setFiltering(true);
  }
}

// The floor: the texts folded beforehand, one whole pass over them per key for its words,
// with the same search as the filter (QStringView::contains), and no view.
std::vector<QString> foldedTexts() {
  const toolkit::ListBox& list = shown().control.Lst_Possible;
  std::vector<QString> texts;
  for (int row = 0; row < list.ListCount(); ++row) {
    QString text = qt::toQString(list.List(row));
    for (const Text& whole : list.wholeColumns(row))
      text += QLatin1Char(' ') + qt::toQString(whole);
    texts.push_back(qt::foldForFilter(text));
  }
  return texts;
}

int rowsHolding(const std::vector<QString>& texts, const QStringList& words) {
  int rows = 0;
  for (const QString& text : texts) {
    rows += std::all_of(words.begin(), words.end(),
                        [&text](const QString& word) { return text.contains(word); });
  }
  return rows;
}

// keys: how many of kKeys the floor cycles over (the first alone: the first key's floor).
void floorOver(benchmark::State& state, std::size_t keys) {
  static const std::vector<QString> texts = foldedTexts();
  std::vector<QStringList> words;
  for (std::size_t key = 0; key < keys; ++key) words.push_back(qt::filterWords(kKeys[key]));
  // Once, before the timings: the floor keeps as many rows as the filter shows.
  for (std::size_t key = 0; key < keys; ++key) {
    shown().type(kKeys[key]);
    const int expected = shown().list->listModel().rowCount();
    if (rowsHolding(texts, words[key]) != expected)
      state.SkipWithError("the floor kept other rows");
  }
  shown().type({});
  std::size_t key = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(rowsHolding(texts, words[key]));
    key = (key + 1) % keys;
  }
}

void FilterFloor(benchmark::State& state) {
  floorOver(state, kKeys.size());
}

void FirstKeyFloor(benchmark::State& state) {
  floorOver(state, 1);
}

BENCHMARK(FilterEachKey)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(FilterFirstKeyAfterRefill)->Unit(benchmark::kMillisecond)->Iterations(20);
BENCHMARK(FoldAtRefill)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(FilterFloor)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(FirstKeyFloor)->Unit(benchmark::kMillisecond)->MinTime(2);

}  // namespace
}  // namespace velmora::bench

int main(int argc, char** argv) {
  using namespace velmora::bench;
  return runShownWithSummary(
      argc, argv,
      {RatioGoal{"FilterEachKey", "FilterFloor", 3},
       RatioGoal{"FilterFirstKeyAfterRefill", "FirstKeyFloor", 20}},
      {TimeGoal{"FilterEachKey", 0.016}, TimeGoal{"FilterFirstKeyAfterRefill", 0.016}},
      [] { theShown.reset(); });  // its widgets go before the application
}

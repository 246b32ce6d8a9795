// The list sorts on long lists, beside their floor: the same rows and codes put in order
// with std::stable_sort and one pass of moves. The sorts must keep the exact order of the
// documented selection sort, so they cannot be a library sort, but they should stay within
// a small factor of one.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include <velmora/control/ctr_velmora_new.h>
#include "control/module_slots.h"
#include "rows/row_format.h"
#include "support/summary.h"

namespace velmora {

// Calls the private sort directly: the fills that end with it would measure the store.
class CtrDriver {
 public:
  explicit CtrDriver(Ctr_VelmoraNew& c) : c_(c) {}
  void Trie_Possible() { c_.Trie_Possible(); }
  void Trie_Selectionne() { c_.Trie_Selectionne(); }

 private:
  Ctr_VelmoraNew& c_;
};

namespace bench {
namespace {

// Catalogue-like rows: a few types and groups, many tasks, many ties on the columns.
std::vector<Text> rowsOf(int n) {
  std::mt19937 random(42);
  std::vector<Text> rows;
  rows.reserve(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    const Text type = u"Type " + numberText(random() % 6);
    const Text group = u"Groupe " + numberText(random() % 15);
    const Text task = u"Tâche " + numberText(random() % (n / 2 + 1));
    rows.push_back(rows::textColumn(type) + rows::textColumn(group) + rows::textColumn(task) +
                   rows::proposalDuration(numberText(random() % 120)) +
                   (random() % 4 == 0 ? u"  *" : u"  "));
  }
  return rows;
}

void load(toolkit::ListBox& rows, toolkit::ListBox& codes, const std::vector<Text>& content) {
  rows.Clear();
  codes.Clear();
  for (std::size_t i = 0; i < content.size(); ++i) {
    rows.AddItem(content[i]);
    codes.AddItem(numberText(static_cast<long long>(i)));
  }
}

void TriePossible(benchmark::State& state) {
  const auto content = rowsOf(static_cast<int>(state.range(0)));
  Variable::resetAll();
  Ctr_VelmoraNew control;
  CtrDriver driver(control);
  for (auto _ : state) {
    state.PauseTiming();
    load(control.Lst_Possible, control.Lst_CodePos, content);
    state.ResumeTiming();
    driver.Trie_Possible();
  }
  state.SetComplexityN(state.range(0));
}

void TrieSelectionne(benchmark::State& state) {
  const auto content = rowsOf(static_cast<int>(state.range(0)));
  Variable::resetAll();
  Ctr_VelmoraNew control;
  CtrDriver driver(control);
  for (auto _ : state) {
    state.PauseTiming();
    load(control.Lst_Selectionne, control.Lst_CodeSelect, content);
    Variable::R_Obs = newRecord();
    for (int a = 1; a <= static_cast<int>(content.size()); a += 3) Variable::R_Obs->set(a, u"obs");
    state.ResumeTiming();
    driver.Trie_Selectionne();
  }
  state.SetComplexityN(state.range(0));
}

// The floor: the same keys ordered by a library sort, then rows and codes written back.
void TriePossibleFloor(benchmark::State& state) {
  const auto content = rowsOf(static_cast<int>(state.range(0)));
  Ctr_VelmoraNew control;
  for (auto _ : state) {
    state.PauseTiming();
    load(control.Lst_Possible, control.Lst_CodePos, content);
    state.ResumeTiming();
    const int n = control.Lst_Possible.ListCount();
    std::vector<Text> keys;
    keys.reserve(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
      const Text& row = control.Lst_Possible.List(i);
      keys.push_back((trimBlanks(mid(row, 88, 1)).empty() ? u"1" : u"2") + row);
    }
    std::vector<int> order(static_cast<std::size_t>(n));
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return keys[a] < keys[b]; });
    std::vector<Text> rows;
    std::vector<Text> codes;
    for (const int i : order) {
      rows.push_back(control.Lst_Possible.List(i));
      codes.push_back(control.Lst_CodePos.List(i));
    }
    for (int i = 0; i < n; ++i) {
      control.Lst_Possible.setList(i, rows[static_cast<std::size_t>(i)]);
      control.Lst_CodePos.setList(i, codes[static_cast<std::size_t>(i)]);
    }
    benchmark::DoNotOptimize(control.Lst_Possible.List(0));
  }
}

BENCHMARK(TriePossible)->Arg(1000)->Arg(10000)->Arg(40000)->Unit(benchmark::kMillisecond);
BENCHMARK(TriePossibleFloor)->Arg(1000)->Arg(10000)->Arg(40000)->Unit(benchmark::kMillisecond);
BENCHMARK(TrieSelectionne)->Arg(1000)->Arg(10000)->Arg(40000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace bench
}  // namespace velmora

int main(int argc, char** argv) {
  using velmora::bench::RatioGoal;
  using velmora::bench::TimeGoal;
  return velmora::bench::runWithSummary(
      argc, argv,
      // Runs are kept by name, the last size (40,000 rows) winning.
      {RatioGoal{"TriePossible", "TriePossibleFloor", 4.0}}, {TimeGoal{"TrieSelectionne", 0.5}});
}

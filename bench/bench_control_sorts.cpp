// The list sorts on long lists, beside their floor: the same rows with their codes put in
// order by std::sort in place. The sorts must keep the exact order of the documented
// selection sort among equal rows, so they cannot be a library sort, but they should stay
// within a small factor of one.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include <velmora/control/ctr_velmora_new.h>
#include "control/inspection.h"
#include "rows/row_format.h"
#include "support/summary.h"

namespace velmora {

// The sorts are called directly through CtrDriver: the fills that end with them would
// measure the store.
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
  Session session;
  Ctr_VelmoraNew control(session);
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
  Session session;
  Ctr_VelmoraNew control(session);
  CtrDriver driver(control);
  for (auto _ : state) {
    state.PauseTiming();
    load(control.Lst_Selectionne, control.Lst_CodeSelect, content);
    CtrInspector(control).Variable().R_Obs = newRecord();
    for (int a = 1; a <= static_cast<int>(content.size()); a += 3)
      CtrInspector(control).Variable().R_Obs->set(a, u"obs");
    state.ResumeTiming();
    driver.Trie_Selectionne();
  }
  state.SetComplexityN(state.range(0));
}

// The floors: the same rows, with their codes (and observations), put in the same order
// by std::sort in place. Each checks once that its rows are the sort's.
struct Entry {
  Text row, code, observation;
};

std::vector<Entry> entriesOf(const std::vector<Text>& content) {
  std::vector<Entry> out;
  out.reserve(content.size());
  for (std::size_t i = 0; i < content.size(); ++i) {
    out.push_back({content[i], numberText(static_cast<long long>(i)), i % 3 == 0 ? u"obs" : u""});
  }
  return out;
}

// Trie_Possible's key: rows marked at position 88 behind the others, then the row.
bool proposalLess(const Entry& a, const Entry& b) {
  const auto marked = [](const Text& row) { return row.size() >= 88 && row[87] != u' '; };
  const bool ma = marked(a.row);
  const bool mb = marked(b.row);
  if (ma != mb) return mb;
  return a.row < b.row;
}

bool rowLess(const Entry& a, const Entry& b) {
  return a.row < b.row;
}

bool sameRows(const toolkit::ListBox& list, const std::vector<Entry>& entries) {
  if (list.ListCount() != static_cast<int>(entries.size())) return false;
  for (int i = 0; i < list.ListCount(); ++i) {
    if (list.List(i) != entries[static_cast<std::size_t>(i)].row) return false;
  }
  return true;
}

template <typename Less>
void runFloor(benchmark::State& state, Less less, bool selection) {
  const auto content = rowsOf(static_cast<int>(state.range(0)));
  const auto entries = entriesOf(content);
  {
    Session session;
    Ctr_VelmoraNew control(session);
    CtrDriver driver(control);
    auto sorted = entries;
    std::sort(sorted.begin(), sorted.end(), less);
    if (selection) {
      load(control.Lst_Selectionne, control.Lst_CodeSelect, content);
      CtrInspector(control).Variable().R_Obs = newRecord();
      driver.Trie_Selectionne();
    } else {
      load(control.Lst_Possible, control.Lst_CodePos, content);
      driver.Trie_Possible();
    }
    if (!sameRows(selection ? control.Lst_Selectionne : control.Lst_Possible, sorted)) {
      state.SkipWithError("the floor's rows differ from the sort's");
      return;
    }
  }
  for (auto _ : state) {
    state.PauseTiming();
    auto rows = entries;
    state.ResumeTiming();
    std::sort(rows.begin(), rows.end(), less);
    benchmark::DoNotOptimize(rows.data());
  }
}

void TriePossibleFloor(benchmark::State& state) {
  runFloor(state, proposalLess, false);
}
void TrieSelectionneFloor(benchmark::State& state) {
  runFloor(state, rowLess, true);
}

BENCHMARK(TriePossible)->Arg(1000)->Arg(10000)->Arg(40000)->Unit(benchmark::kMillisecond);
BENCHMARK(TriePossibleFloor)->Arg(1000)->Arg(10000)->Arg(40000)->Unit(benchmark::kMillisecond);
BENCHMARK(TrieSelectionne)->Arg(1000)->Arg(10000)->Arg(40000)->Unit(benchmark::kMillisecond);
BENCHMARK(TrieSelectionneFloor)->Arg(1000)->Arg(10000)->Arg(40000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace bench
}  // namespace velmora

int main(int argc, char** argv) {
  using velmora::bench::RatioGoal;
  return velmora::bench::runWithSummary(argc, argv,
                                        {RatioGoal{"TriePossible", "TriePossibleFloor", 1.5},
                                         RatioGoal{"TrieSelectionne", "TrieSelectionneFloor", 1.5}},
                                        {});
}

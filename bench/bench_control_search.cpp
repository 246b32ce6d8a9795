// The indexed merges and catalogue walk of the searches and the show-all switch, beside
// their floors (the same result from hash maps of the standard library, checked once
// equal) and beside the row-by-row walks they replace (the ratio to those says how much of
// the documented walk's time the indexed one takes).
#include <benchmark/benchmark.h>

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <velmora/store/record.h>
#include "catalogue/task_catalogue.h"
#include "support/summary.h"
#include "tables/item_merge.h"

namespace velmora::bench {
namespace {

// Prefix and number, appended rather than concatenated (GCC 12 warns wrongly on
// operator+ of a literal and a temporary at -O3).
Text named(const char16_t* prefix, long long n) {
  Text out(prefix);
  out += numberText(n);
  return out;
}

constexpr int kItems = 20000;  // items over all templates, a quarter of them repeated

struct Item {
  Text code, duration, observation;
};

const std::vector<Item>& templateItems() {
  static const std::vector<Item> items = [] {
    std::vector<Item> out;
    for (int i = 0; i < kItems; ++i) {
      const int code = i % 4 == 3 ? i / 2 : i;
      out.push_back({named(u"T", code), numberText(i % 90), i % 5 == 0 ? u"obs" : u""});
    }
    return out;
  }();
  return items;
}

int scan(const NorvikRecord& table, const Text& code) {
  int k = 1;
  while (!(table.r(k).empty() || table.r(k, 1) == code)) ++k;
  return k;
}

void RowByRowTemplateMerge(benchmark::State& state) {
  for (auto _ : state) {
    NorvikRecord possible, selection, durees;
    for (const auto& item : templateItems()) {
      const int k = scan(possible, item.code);
      if (possible.r(k).empty()) {
        possible.set(k, 1, item.code);
        possible.set(k, 2, item.duration);
        possible.set(k, 3, u"");
        const int last = durees.DCount() + 1;
        durees.set(last, 1, item.code);
        durees.set(last, 2, item.duration);
      }
      if (scan(selection, item.code) == selection.DCount() + 1) {
        const int last = selection.DCount() + 1;
        selection.set(last, 1, item.code);
        selection.set(last, 2, item.duration);
        selection.set(last, 3, item.observation);
      }
    }
    benchmark::DoNotOptimize(possible);
  }
}
BENCHMARK(RowByRowTemplateMerge)->Unit(benchmark::kMillisecond);

void IndexedTemplateMerge(benchmark::State& state) {
  for (auto _ : state) {
    NorvikRecord possible, selection, durees;
    tables::TemplateMerge merge(possible, selection, durees);
    for (const auto& item : templateItems()) {
      merge.merge({item.code, item.duration, item.observation}, tables::TemplateMerge::Mark::kFixed,
                  true, false);
    }
    benchmark::DoNotOptimize(possible);
  }
}
BENCHMARK(IndexedTemplateMerge)->Unit(benchmark::kMillisecond);

struct Merged {
  NorvikRecord possible, selection, durees;
};

// The least work giving the same tables: one hash set per table for the codes already in.
Merged mergedByHash() {
  Merged out;
  std::unordered_set<TextView> inPossible, inSelection;
  for (const auto& item : templateItems()) {
    if (inPossible.insert(item.code).second) {
      out.possible.appendAttribute({item.code, item.duration, u""});
      out.durees.appendAttribute({item.code, item.duration});
    }
    if (inSelection.insert(item.code).second) {
      out.selection.appendAttribute({item.code, item.duration, item.observation});
    }
  }
  return out;
}

void TemplateMergeFloor(benchmark::State& state) {
  Merged indexed;
  {
    tables::TemplateMerge merge(indexed.possible, indexed.selection, indexed.durees);
    for (const auto& item : templateItems()) {
      merge.merge({item.code, item.duration, item.observation}, tables::TemplateMerge::Mark::kFixed,
                  true, false);
    }
  }
  const Merged floor = mergedByHash();
  if (floor.possible.r() != indexed.possible.r() || floor.selection.r() != indexed.selection.r() ||
      floor.durees.r() != indexed.durees.r()) {
    state.SkipWithError("the floor's tables differ from the merge's");
    return;
  }
  for (auto _ : state) benchmark::DoNotOptimize(mergedByHash());
}
BENCHMARK(TemplateMergeFloor)->Unit(benchmark::kMillisecond);

// 40 types, 800 groups, 20000 tasks, sorted as the queries sort them.
struct Catalogue {
  NorvikRecord T, G, K;
};
const Catalogue& catalogue() {
  static const Catalogue c = [] {
    Catalogue out;
    for (int t = 0; t < 40; ++t) out.T.appendAttribute({named(u"TYPE", 100 + t), u"1"});
    for (int g = 0; g < 800; ++g) {
      out.G.appendAttribute({named(u"GROUPE", 1000 + g), u"1", named(u"TYPE", 100 + g / 20)});
    }
    for (int k = 0; k < 20000; ++k) {
      out.K.appendAttribute(
          {named(u"TACHE", 10000 + k), u"1", named(u"GROUPE", 1000 + k / 25), u"30"});
    }
    return out;
  }();
  return c;
}

void RowByRowCatalogueWalk(benchmark::State& state) {
  const auto& [T, G, K] = catalogue();
  for (auto _ : state) {
    long rows = 0;
    int j = 0;
    for (int i = 1; i <= T.DCount(); ++i) {
      for (;;) {
        if (G.r(j, 3) != T.r(i, 1)) {
          j = 0;
          do ++j;
          while (!(G.r(j, 3) == T.r(i, 1) || G.r(j, 3).empty()));
        }
        if (G.r(j, 3) == T.r(i, 1)) {
          int k = 0;
          do ++k;
          while (!(K.r(k, 3) == G.r(j, 1) || K.r(k, 3).empty()));
          while (!K.r(k, 3).empty() && K.r(k, 3) == G.r(j, 1)) {
            ++rows;
            ++k;
          }
        }
        ++j;
        if (!(G.r(j, 3) == T.r(i, 1) && !G.r(j, 3).empty())) break;
      }
    }
    benchmark::DoNotOptimize(rows);
  }
}
BENCHMARK(RowByRowCatalogueWalk)->Unit(benchmark::kMillisecond);

void IndexedCatalogueWalk(benchmark::State& state) {
  const auto& [T, G, K] = catalogue();
  for (auto _ : state) benchmark::DoNotOptimize(catalogue::taskCatalogueWalk(T, G, K));
}
BENCHMARK(IndexedCatalogueWalk)->Unit(benchmark::kMillisecond);

// The least work giving the same rows: the groups of each type and the tasks of each
// group in hash maps, in answer order.
std::vector<catalogue::CatalogueRow> catalogueByHash(const NorvikRecord& T, const NorvikRecord& G,
                                                     const NorvikRecord& K) {
  std::unordered_map<TextView, std::vector<int>> groupsOfType, tasksOfGroup;
  for (int j = 1; j <= G.DCount(); ++j) groupsOfType[G.r(j, 3)].push_back(j);
  for (int k = 1; k <= K.DCount(); ++k) tasksOfGroup[K.r(k, 3)].push_back(k);
  std::vector<catalogue::CatalogueRow> rows;
  rows.reserve(static_cast<std::size_t>(K.DCount()));
  for (int i = 1; i <= T.DCount(); ++i) {
    const auto groups = groupsOfType.find(T.r(i, 1));
    if (groups == groupsOfType.end()) continue;
    for (const int j : groups->second) {
      const auto tasks = tasksOfGroup.find(G.r(j, 1));
      if (tasks == tasksOfGroup.end()) continue;
      for (const int k : tasks->second) rows.push_back({i, j, k});
    }
  }
  return rows;
}

void CatalogueWalkFloor(benchmark::State& state) {
  const auto& [T, G, K] = catalogue();
  if (catalogueByHash(T, G, K) != catalogue::taskCatalogueWalk(T, G, K)) {
    state.SkipWithError("the floor's rows differ from the walk's");
    return;
  }
  for (auto _ : state) benchmark::DoNotOptimize(catalogueByHash(T, G, K));
}
BENCHMARK(CatalogueWalkFloor)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace velmora::bench

int main(int argc, char** argv) {
  using velmora::bench::RatioGoal;
  return velmora::bench::runWithSummary(
      argc, argv,
      {RatioGoal{"IndexedTemplateMerge", "TemplateMergeFloor", 1.5},
       RatioGoal{"IndexedCatalogueWalk", "CatalogueWalkFloor", 1.5},
       RatioGoal{"IndexedTemplateMerge", "RowByRowTemplateMerge", 0.05},
       RatioGoal{"IndexedCatalogueWalk", "RowByRowCatalogueWalk", 0.05}},
      {});
}

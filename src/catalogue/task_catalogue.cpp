// The show-all switch's walk over the task catalogue, answered from first positions
// computed once. Beside it, the durations known for the client that override the
// catalogue's.
#include "catalogue/task_catalogue.h"

#include <velmora/base/failure.h>

namespace velmora::catalogue {

namespace {

// First row n >= 1 of an answer whose value `column` equals a text, or reads "": the
// stop of a search from the top. Built once per answer.
class FirstPositions {
 public:
  FirstPositions(const NorvikRecord& answer, int column) {
    const int count = answer.DCount();
    for (int n = 1; n <= count; ++n) {
      const Text& cell = answer.r(n, column);
      if (cell.empty()) {
        firstEmpty_ = n;
        return;  // nothing behind the first "" can be reached
      }
      first_.try_emplace(cell, n);
    }
    firstEmpty_ = count + 1;
  }

  int stop(const Text& wanted) const {
    const auto found = first_.find(wanted);
    return found == first_.end() ? firstEmpty_ : found->second;
  }

 private:
  std::unordered_map<Text, int> first_;
  int firstEmpty_ = 1;
};

}  // namespace

std::vector<CatalogueRow> taskCatalogueWalk(const NorvikRecord& T, const NorvikRecord& G,
                                            const NorvikRecord& K) {
  const FirstPositions groupsByType(G, 3);
  const FirstPositions tasksByGroup(K, 3);
  std::vector<CatalogueRow> rows;
  int j = 0;  // the group cursor stays where it is from one type to the next
  const int types = T.DCount();
  for (int i = 1; i <= types; ++i) {
    const Text& type = T.r(i, 1);
    for (;;) {
      if (G.r(j, 3) != type) j = groupsByType.stop(type);
      if (G.r(j, 3) == type) {
        const Text& group = G.r(j, 1);
        int k = tasksByGroup.stop(group);
        while (!K.r(k, 3).empty() && K.r(k, 3) == group) {
          rows.push_back({i, j, k});
          ++k;
        }
      }
      ++j;
      if (G.r(j, 3) != type || G.r(j, 3).empty()) break;
    }
  }
  return rows;
}

DurationOverrides::DurationOverrides(const NorvikRecord& durees) {
  const int count = durees.DCount();
  for (int l = 1; l <= count; ++l) {
    const Text& duration = durees.r(l, 2);
    if (duration.empty() || duration == u"0") continue;
    auto& entry = byCode_[durees.r(l, 1)];
    if (duration.size() > 5) {
      entry.anyTooWide = true;
    } else {
      entry.duration = duration;
    }
  }
}

const DurationOverrides::Override* DurationOverrides::find(TextView code) const {
  const auto found = byCode_.find(code);
  return found == byCode_.end() ? nullptr : &found->second;
}

Text withOverriddenDuration(TextView row, TextView d) {
  if (d.size() > 5) {
    throw Failure(errors::kInvalidCall,
                  "appel non valide : la durée « " + toUtf8(d) + " » dépasse ses 5 caractères");
  }
  return left(row, 80) + padLeft(d, 5);
}

}  // namespace velmora::catalogue

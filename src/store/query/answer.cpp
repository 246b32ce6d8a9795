// The last stage of a query: the answer record built from the sorted rows, one attribute per
// hit and one value per column (the key for column 0). A multi-valued column becomes
// subvalues, so that one hit stays one attribute.
#include <algorithm>

#include "store/query/stages.h"

namespace velmora::store {

namespace {

Text joined(const std::vector<Text>& values, char16_t mark) {
  Text out = values.front();
  for (std::size_t i = 1; i < values.size(); ++i) {
    out.push_back(mark);
    out += values[i];
  }
  return out;
}

}  // namespace

NorvikRecord answerOf(const Plan& plan, std::vector<Row>& rows,
                      const std::vector<std::size_t>& order) {
  NorvikRecord answer;
  for (const std::size_t i : order) {
    Row& row = rows[i];
    std::vector<Text> cells;
    cells.reserve(plan.columns.size());
    for (std::size_t c = 0; c < plan.columns.size(); ++c) {
      // The sort is done: a row's texts move into the answer when no later column reads them.
      const int column = plan.columns[c];
      if (column == 0) {
        cells.push_back(plan.lastUse[c] ? std::move(row.key) : row.key);
        continue;
      }
      // Values of a multi-valued column become subvalues, so that one hit stays one
      // attribute and one column one value.
      auto& values = row.attributes[static_cast<std::size_t>(
          std::lower_bound(plan.attributes.begin(), plan.attributes.end(), column) -
          plan.attributes.begin())];
      if (values.size() != 1) {
        cells.push_back(joined(values, kSubvalueMark));
      } else {
        cells.push_back(plan.lastUse[c] ? std::move(values.front()) : values.front());
      }
    }
    answer.appendAttribute(std::move(cells));
  }
  return answer;
}

}  // namespace velmora::store

// The merges of template items and of a client's task lists into the working tables,
// each code kept at its first sight. The durations table follows every new proposal.
#include "tables/item_merge.h"

#include "control/error_regime.h"

namespace velmora::tables {

TemplateMerge::TemplateMerge(NorvikRecord& possible, NorvikRecord& selection, NorvikRecord& durees)
    : possible_(possible),
      selection_(selection),
      durees_(durees),
      possibleScan_(possible),
      selectionScan_(selection) {}

void TemplateMerge::merge(const TemplateItem& item, Mark mark, bool matched, bool cleLue) {
  static const Text kFixed;
  static const Text kFloating = u"*";
  const Text* value3 = mark == Mark::kFixed      ? &kFixed
                       : mark == Mark::kFloating ? &kFloating
                                                 : nullptr;
  mergeIntoPossible(item, value3);
  if (!cleLue && matched) mergeIntoSelection(item);
}

bool TemplateMerge::mergeIntoPossible(const TemplateItem& item, const Text* mark) {
  const int row = possibleScan_.stopRow(item.code);
  if (!rowIsEmpty(possible_, row)) return false;
  possible_.set(row, 1, item.code);
  possible_.set(row, 2, item.duration);
  if (mark != nullptr) possible_.set(row, 3, *mark);
  possibleScan_.noteWritten(possible_, row);
  const int last = durees_.DCount() + 1;
  durees_.set(last, 1, item.code);
  durees_.set(last, 2, item.duration);
  return true;
}

void TemplateMerge::mergeIntoSelection(const TemplateItem& item) {
  if (!rowIsEmpty(selection_, selectionScan_.stopRow(item.code))) return;
  const int last = selection_.DCount() + 1;
  selection_.set(last, 1, item.code);
  selection_.set(last, 2, item.duration);
  selection_.set(last, 3, item.observation);
  selectionScan_.noteWritten(selection_, last);
}

ClientListMerge::ClientListMerge(NorvikRecord& possible, NorvikRecord& durees)
    : possible_(possible), durees_(durees), possibleScan_(possible) {}

void ClientListMerge::merge(TextView code, TextView duration) {
  const int row = possibleScan_.stopRow(code);
  if (!rowIsEmpty(possible_, row)) return;  // the first sight wins
  possible_.set(row, 1, code);
  possible_.set(row, 2, duration);
  possibleScan_.noteWritten(possible_, row);
  durees_.set(durees_.DCount() + 1, 1, code);
  // "Value 2 of the new last attribute": an empty code on an empty table leaves no last
  // attribute, and that statement fails on its own.
  resumeNext([&] { durees_.set(durees_.DCount(), 2, duration); });
}

}  // namespace velmora::tables

// The words a planner types to narrow a list, matched against the rows' texts folded once
// (lower case, accents dropped), so that each key costs one pass over ready texts.
#pragma once

#include <functional>
#include <vector>

#include <QString>
#include <QStringList>

namespace velmora::qt {

// A text as the filter compares it: case folded, accents and other marks dropped
// ("Pansement Élémentaire" -> "pansement elementaire"), by Unicode decomposition.
QString foldForFilter(const QString& text);
// The same, appended to folded: a row's parts folded into one text without a copy each.
void appendFolded(QStringView text, QString& folded);

// The folded words of what the planner typed, split at spaces.
QStringList filterWords(const QString& typed);

// The folded texts of one list's rows, one per row.
class FoldedRows {
 public:
  // The folded text of every row anew (made by appendFolded or foldForFilter).
  void assign(int count, const std::function<QString(int row)>& folded);
  // One row's new folded text.
  void replace(int row, QString folded);
  void clear();
  int size() const { return static_cast<int>(texts_.size()); }
  QStringView text(int row) const { return texts_[static_cast<std::size_t>(row)]; }

  // The rows, ascending, whose text holds every word; only among the rows given when
  // among is not null (a narrower filter searches the rows the wider one kept).
  std::vector<int> matching(const QStringList& words, const std::vector<int>* among) const;

 private:
  std::vector<QString> texts_;
};

// Whether the rows kept for words stay a superset of those of narrower: each word of
// words lies inside a word of narrower.
bool narrows(const QStringList& words, const QStringList& narrower);

}  // namespace velmora::qt

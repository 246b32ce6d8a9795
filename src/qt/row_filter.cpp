// Folding and matching for the lists' filter lines. Folding uses Qt's Unicode tables (the
// canonical decomposition, then the marks dropped), never a table of our own; a text
// of plain ASCII skips the decomposition.
#include "qt/row_filter.h"

#include <algorithm>

namespace velmora::qt {

namespace {

bool isAscii(const QString& text) {
  return std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
}

bool holdsAll(QStringView text, const QStringList& words) {
  return std::all_of(words.begin(), words.end(),
                     [text](const QString& word) { return text.contains(word); });
}

}  // namespace

QString foldForFilter(const QString& text) {
  if (isAscii(text)) return text.toLower();
  QString folded = text.normalized(QString::NormalizationForm_D);
  folded.removeIf([](QChar c) { return c.isMark(); });
  return folded.toCaseFolded();
}

QStringList filterWords(const QString& typed) {
  return foldForFilter(typed).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

void FoldedRows::assign(int count, const std::function<QString(int row)>& text) {
  texts_.clear();
  texts_.reserve(static_cast<std::size_t>(std::max(0, count)));
  for (int row = 0; row < count; ++row) texts_.push_back(foldForFilter(text(row)));
}

void FoldedRows::replace(int row, const QString& text) {
  if (row >= 0 && row < size()) texts_[static_cast<std::size_t>(row)] = foldForFilter(text);
}

void FoldedRows::clear() {
  texts_.clear();
}

std::vector<int> FoldedRows::matching(const QStringList& words,
                                      const std::vector<int>* among) const {
  std::vector<int> rows;
  if (among) {
    for (const int row : *among) {
      if (row < size() && holdsAll(text(row), words)) rows.push_back(row);
    }
    return rows;
  }
  rows.reserve(texts_.size() / 8);
  for (int row = 0; row < size(); ++row) {
    if (holdsAll(text(row), words)) rows.push_back(row);
  }
  return rows;
}

bool narrows(const QStringList& words, const QStringList& narrower) {
  return std::all_of(words.begin(), words.end(), [&narrower](const QString& word) {
    return std::any_of(narrower.begin(), narrower.end(),
                       [&word](const QString& other) { return other.contains(word); });
  });
}

}  // namespace velmora::qt

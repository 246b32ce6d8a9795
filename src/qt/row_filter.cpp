// Folding and matching for the lists' filter lines. Folding uses Qt's Unicode tables (the
// canonical decomposition, then the marks dropped, then case folding), never a table of
// our own: each character's fold is asked of Qt once and remembered, so that folding a
// refilled catalogue costs about what lower-casing it does.
#include "qt/row_filter.h"

#include <algorithm>
#include <array>
#include <memory>

namespace velmora::qt {

namespace {

QString foldWhole(const QString& text) {
  QString folded = text.normalized(QString::NormalizationForm_D);
  folded.removeIf([](QChar c) { return c.isMark(); });
  return folded.toCaseFolded();
}

// What one character folds to, by the same steps as a whole text.
constexpr char16_t kUnknown = 0;
constexpr char16_t kDropped = 0xFFFE;  // a mark: nothing
constexpr char16_t kSeveral = 0xFFFF;  // more than one character: fold the text whole
char16_t foldOf(char16_t c) {
  const QString folded = foldWhole(QString(QChar(c)));
  if (folded.isEmpty()) return kDropped;
  if (folded.size() > 1 || folded.at(0).unicode() >= kDropped) return kSeveral;
  return folded.at(0).unicode();
}

bool holdsAll(QStringView text, const QStringList& words) {
  return std::all_of(words.begin(), words.end(),
                     [text](const QString& word) { return text.contains(word); });
}

}  // namespace

void appendFolded(QStringView text, QString& folded) {
  // The GUI thread's: the binding runs there only.
  static const auto folds = std::make_unique<std::array<char16_t, 0x10000>>();
  const qsizetype start = folded.size();
  folded.resize(start + text.size());
  char16_t* out = reinterpret_cast<char16_t*>(folded.data()) + start;
  qsizetype length = 0;
  for (const QChar c : text) {
    const char16_t u = c.unicode();
    if (u < 0x80) {
      out[length++] = u >= u'A' && u <= u'Z' ? static_cast<char16_t>(u + (u'a' - u'A')) : u;
      continue;
    }
    char16_t& fold = (*folds)[u];
    if (fold == kUnknown) fold = c.isSurrogate() ? kSeveral : foldOf(u);
    if (fold == kSeveral) {
      folded.truncate(start);
      folded += foldWhole(text.toString());
      return;
    }
    if (fold != kDropped) out[length++] = fold;
  }
  folded.truncate(start + length);
}

QString foldForFilter(const QString& text) {
  QString folded;
  appendFolded(text, folded);
  return folded;
}

QStringList filterWords(const QString& typed) {
  return foldForFilter(typed).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

void FoldedRows::assign(int count, const std::function<QString(int row)>& folded) {
  texts_.clear();
  texts_.reserve(static_cast<std::size_t>(std::max(0, count)));
  for (int row = 0; row < count; ++row) texts_.push_back(folded(row));
}

void FoldedRows::replace(int row, QString folded) {
  if (row >= 0 && row < size()) texts_[static_cast<std::size_t>(row)] = std::move(folded);
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

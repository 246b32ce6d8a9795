// The filter lines and their counts. The words are French and agree with the rows: "soin"
// is masculine, "tâche" feminine, zero and one take the singular.
#include "qt/list_filter.h"

#include <QKeyEvent>
#include <QLocale>
#include <QToolButton>

namespace velmora::qt {

namespace {

QString counted(int number, const QString& singular, const QString& plural) {
  return frenchNumber(number) + QLatin1Char(' ') + (number > 1 ? plural : singular);
}

// A participle agreeing with the rows, "marqué" -> "marqués" / "marquée" / "marquées".
QString agreed(int number, const char* stem, bool masculine) {
  QString word = QString::fromUtf8(stem);
  if (!masculine) word += QLatin1Char('e');
  if (number > 1) word += QLatin1Char('s');
  return word;
}

const QString kBetween = QStringLiteral(" \u00B7 ");  // a middle dot between the parts

QString shownOf(const ListCount& count, const QString& noun, const QString& nouns) {
  if (!count.filtered) return counted(count.rows, noun, nouns);
  return frenchNumber(count.shown) + QStringLiteral(" sur ") + counted(count.rows, noun, nouns);
}

}  // namespace

QString frenchNumber(int number) {
  // A locale made this way groups digits (QLocale::c() does not).
  QString text = QLocale(QLocale::French, QLocale::France).toString(number);
  // Whatever the version of the locale data, the group separator is the narrow one.
  text.replace(QChar(0x00A0), QChar(0x202F));
  return text;
}

QString proposalsCount(const ListCount& count, bool careActs) {
  QString text = careActs ? shownOf(count, QStringLiteral("soin"), QStringLiteral("soins"))
                          : shownOf(count, QStringLiteral("tâche"), QStringLiteral("tâches"));
  if (count.marked == 0) return text;
  text += kBetween + frenchNumber(count.marked) + QLatin1Char(' ') +
          agreed(count.marked, "marqué", careActs);
  if (count.hiddenMarked > 0) {
    text += QStringLiteral(", dont ") + frenchNumber(count.hiddenMarked) + QLatin1Char(' ') +
            agreed(count.hiddenMarked, "masqué", careActs);
  }
  return text;
}

QString selectionCount(const ListCount& count, bool careActs, const QString& total) {
  const int chosen = count.rows;
  QString text = frenchNumber(count.filtered ? count.shown : chosen);
  if (count.filtered) text += QStringLiteral(" sur ") + frenchNumber(chosen);
  text += QLatin1Char(' ') + agreed(chosen, "choisi", careActs);
  if (!total.isEmpty()) text += kBetween + total;
  return text;
}

FilterLine::FilterLine(ListBoxView& list, QWidget* parent) : QLineEdit(parent), list_(list) {
  setClearButtonEnabled(true);
  // The clear button, shown once something is typed, is named for screen readers too.
  for (QToolButton* button : findChildren<QToolButton*>()) {
    button->setAccessibleName(QStringLiteral("Vider le filtre"));
  }
  connect(this, &QLineEdit::textChanged, this,
          [this](const QString& typed) { list_.listModel().setFilter(typed); });
  list.setFilterLine(this);
}

void FilterLine::keyPressEvent(QKeyEvent* event) {
  if (event->modifiers() == Qt::NoModifier && event->key() == Qt::Key_Down) {
    list_.setFocus(Qt::OtherFocusReason);
    return;
  }
  if (event->modifiers() == Qt::NoModifier && event->key() == Qt::Key_Escape && !text().isEmpty()) {
    clear();
    return;
  }
  QLineEdit::keyPressEvent(event);
}

}  // namespace velmora::qt

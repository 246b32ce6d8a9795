// What assistive technology reads of the control and its dialog: names, descriptions and
// label buddies set by object name, the frame's children that stay out of the tree, and a
// list row read column by column under its headings. The surface and the dialog call it
// once their views are made; the announcements of changes are the widget's.
#include "qt/accessibility.h"

#include <algorithm>

#include <QAccessible>
#include <QAccessibleWidget>
#include <QLabel>

#include <velmora/qt/twips.h>

namespace velmora::qt {

namespace {

struct Naming {
  const char* surface;
  const char* child;
  const char* name;         // nullptr: the caption or the linked label names it
  const char* description;  // nullptr: the name is enough
};

// The names chosen for the children that have no caption of their own, and the
// descriptions where the name is not enough. Assistive-technology journeys rely on them:
// they are listed in docs/architecture/qt.md and stay as they are.
constexpr std::array kNamings{
    Naming{"Ctr_VelmoraNew", "Cdr_Soins", "Contenu de l'intervention", nullptr},
    Naming{"Ctr_VelmoraNew", "Lst_Possible", "Possibles",
           "Propositions : marquer des lignes (Espace) puis Sélectionner (Entrée)"},
    Naming{"Ctr_VelmoraNew", "Lst_Selectionne", "Sélection",
           "Lignes choisies : Entrée modifie la durée, Suppr supprime la ligne"},
    Naming{"Ctr_VelmoraNew", "Cmd_Select", "Sélectionner",
           "Ajoute les lignes marquées à la sélection"},
    Naming{"Ctr_VelmoraNew", "Txt_DureeSoin", "Durée", nullptr},
    Naming{"Ctr_VelmoraNew", "Txt_Duree", nullptr,
           "Durée totale de la sélection, en heures et minutes"},
    Naming{"Ctr_VelmoraNew", "Cmd_Obs", nullptr, "Observations de la ligne choisie"},
    Naming{"Ctr_VelmoraNew", "Etq_Imperativite", nullptr,
           "Avertissement : la sélection contient au moins une tâche impérative"},
    Naming{"Ctr_VelmoraNew", "Label1", nullptr,
           "Colonne F : tâche facultative, d'une semaine type flottante"},
    Naming{"Ctr_VelmoraNew", "Label3", nullptr, "Colonne Obs. : la ligne a une observation"},
    // The dialog's button says "Ok", the control's "OK": one name for both.
    Naming{"Frm_AjoutObsTache", "Cmd_OkObs", "OK", nullptr},
};

// Labels that name a box: the label's caption becomes the box's name.
constexpr std::array<std::array<const char*, 3>, 5> kBuddies{{
    {"Ctr_VelmoraNew", "Etq_DureeTotale", "Txt_Duree"},
    {"Frm_AjoutObsTache", "Label1", "Txt_Type"},
    {"Frm_AjoutObsTache", "Label3", "Txt_Groupe"},
    {"Frm_AjoutObsTache", "Label2", "Txt_Tache"},
    {"Frm_AjoutObsTache", "Label4", "Txt_Obs"},
}};

// The frame's interface lists only the children that can be seen: the hidden code lists,
// the bar that lies beyond the frame's edge and a label that another child covers
// (Etq_Duree, beneath the selection) stay out of the tree.
class FrameAccessible : public QAccessibleWidget {
 public:
  explicit FrameAccessible(QWidget* frame) : QAccessibleWidget(frame, QAccessible::Grouping) {}

  int childCount() const override { return static_cast<int>(shown().size()); }
  QAccessibleInterface* child(int index) const override {
    const QList<QWidget*> children = shown();
    if (index < 0 || index >= children.size()) return nullptr;
    return QAccessible::queryAccessibleInterface(children[index]);
  }
  int indexOfChild(const QAccessibleInterface* child) const override {
    return static_cast<int>(shown().indexOf(qobject_cast<QWidget*>(child->object())));
  }

 private:
  QList<QWidget*> shown() const {
    QList<QWidget*> children;
    for (QObject* object : widget()->children()) {
      auto* child = qobject_cast<QWidget*>(object);
      if (child && !child->isWindow() && child->isVisibleTo(widget()) &&
          widget()->rect().intersects(child->geometry())) {
        children.append(child);
      }
    }
    const auto covered = [&children](const QWidget* label) {
      return std::any_of(children.begin(), children.end(), [label](const QWidget* other) {
        return !qobject_cast<const QLabel*>(other) && other->geometry().contains(label->geometry());
      });
    };
    children.removeIf([&covered](const QWidget* child) {
      return qobject_cast<const QLabel*>(child) && covered(child);
    });
    return children;
  }
};

QAccessibleInterface* frameFactory(const QString& key, QObject* object) {
  if (key == QLatin1String("velmora::qt::FrameView") && object->isWidgetType()) {
    return new FrameAccessible(static_cast<QWidget*>(object));
  }
  return nullptr;
}

QString trimmed(TextView text) {
  return toQString(text).trimmed();
}

}  // namespace

void nameForAssistiveTechnology(QWidget& surface) {
  static const bool installed = [] {
    QAccessible::installFactory(frameFactory);
    return true;
  }();
  (void)installed;
  const QString surfaceName = surface.objectName();
  const auto childNamed = [&surface](const char* name) {
    return surface.findChild<QWidget*>(QString::fromUtf8(name));
  };
  for (const Naming& naming : kNamings) {
    if (surfaceName != QLatin1String(naming.surface)) continue;
    QWidget* child = childNamed(naming.child);
    if (!child) continue;
    if (naming.name) child->setAccessibleName(QString::fromUtf8(naming.name));
    if (naming.description) child->setAccessibleDescription(QString::fromUtf8(naming.description));
  }
  for (const auto& [owner, label, box] : kBuddies) {
    if (surfaceName != QLatin1String(owner)) continue;
    auto* labelView = qobject_cast<QLabel*>(childNamed(label));
    if (labelView) labelView->setBuddy(childNamed(box));
  }
}

QString readRow(TextView row, const std::array<QString, 3>& headings,
                const std::vector<Text>& wholeColumns, bool selectionRow) {
  QStringList parts;
  for (std::size_t column = 0; column < headings.size(); ++column) {
    const Text shown = mid(row, static_cast<int>(column) * 26 + 1, 25);
    QString value = trimmed(shown);
    // The whole value, if the row shows its beginning (a row rewritten since shows itself).
    if (column < wholeColumns.size() && trimmed(left(wholeColumns[column], 25)) == value) {
      value = toQString(wholeColumns[column]).trimmed();
    }
    if (!value.isEmpty()) parts << headings[column] + QStringLiteral(" : ") + value;
  }
  const QString minutes = trimmed(mid(row, 81, 5));
  parts << (minutes.isEmpty() ? QStringLiteral("sans durée")
                              : QStringLiteral("Durée : %1 min").arg(minutes));
  if (selectionRow && mid(row, 79, 1) == u"X") parts << QStringLiteral("avec observation");
  if (!selectionRow && trimmed(mid(row, 88, 1)) == QStringLiteral("*")) {
    parts << QStringLiteral("facultative");
  }
  return parts.join(QStringLiteral(", "));
}

}  // namespace velmora::qt

// What assistive technology reads and hears of the control and its dialog: the French
// names and descriptions, the labels linked to their boxes, the children that stay out of
// the tree, the reading of a row column by column, and the announcements of what a
// sighted planner sees change.
#pragma once

#include <array>
#include <vector>

#include <QString>
#include <QWidget>

#include <velmora/base/text.h>

namespace velmora::qt {

// Names, descriptions and label buddies for the children of a surface ("Ctr_VelmoraNew")
// or of a dialog ("Frm_AjoutObsTache"), found by their object names; hides from the tree
// the children that nobody can see or reach.
void nameForAssistiveTechnology(QWidget& surface);

// One row read column by column under its headings, with the whole values where the row
// cuts them: "Type : Ménage, Groupe : Entretien, Tâche : Aspirateur, Durée : 20 min".
// A proposal row's "*" reads "facultative", a selection row's marker "avec observation".
QString readRow(TextView row, const std::array<QString, 3>& headings,
                const std::vector<Text>& wholeColumns, bool selectionRow);

}  // namespace velmora::qt

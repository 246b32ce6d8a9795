// The end of an edit of a selected row's duration, shared by OK, Annuler and the
// removal of the row under edit.
#pragma once

#include <velmora/control/ctr_velmora_new.h>

namespace velmora::selection {

// The edit's buttons and box go grey, no row is current any more (the Click of
// Lst_Selectionne then greys Cmd_Obs and Cmd_SupprVelmora), and the selection takes
// clicks again.
void closeDurationEdit(Ctr_VelmoraNew& control);

}  // namespace velmora::selection

// How the selection's operations move the total. Txt_Duree's own change
// notification turns the minutes written here into the NhMM form at once, so every
// read that follows a write sees the display form.
#pragma once

#include <velmora/base/currency.h>
#include <velmora/base/text.h>
#include <velmora/toolkit/widgets.h>
#include "rows/row_format.h"

namespace velmora::rows {

// Show first, then sum: D goes into an empty total as it is, otherwise onto the
// read-back of what is shown. Returns the read-back of the text just written.
inline Currency addToShownTotal(toolkit::TextBox& total, TextView minutes) {
  if (total.getText().empty()) {
    total.setText(minutes);
  } else {
    total.setText((rows::readBack(total.getText()) + Currency::fromText(minutes)).toText());
  }
  return rows::readBack(total.getText());
}

}  // namespace velmora::rows

// The total's display and the duration box's keys. Code writes a plain number of minutes
// into Txt_Duree, and its change notification turns it at once into hours and minutes.
#include <cmath>

#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"

namespace velmora::rows {

namespace {

double minutesOf(const Text& shown) {
  const auto minutes = parseNumber(shown);
  if (!minutes) {
    throw Failure(errors::kTypeMismatch, "type incompatible : le total « " + toUtf8(shown) +
                                             " » n'est pas un nombre de minutes");
  }
  if (!std::isfinite(*minutes) || std::fabs(*minutes) >= 9.0e15) {
    throw Failure(errors::kOverflow,
                  "dépassement de capacité : le total « " + toUtf8(shown) + " » est trop grand");
  }
  return *minutes;
}

}  // namespace

}  // namespace velmora::rows

namespace velmora {

void Ctr_VelmoraNew::Txt_Duree_Change() {
  // Our own write below comes back here: nothing to do then.
  if (d_->W_ChangeActif == kFalse) return;
  // A cleared total stays cleared.
  if (Txt_Duree.getText().empty()) return;
  // The write below must not convert again.
  d_->W_ChangeActif = kFalse;
  // Hours by the floor, so that a negative total reads back to itself: -5 is -1h55.
  double T = 0;
  try {
    T = rows::minutesOf(Txt_Duree.getText());
  } catch (const Failure&) {
    // Leave the text as written and re-arm the guard, so that the next write converts.
    d_->W_ChangeActif = kTrue;
    throw;
  }
  const double hours = std::floor(T / 60);
  const Text H = numberText(static_cast<long long>(hours));
  // Minutes in "00": at least two digits, a fraction rounded to whole.
  const Text M = zeroPadded(T - 60 * hours, 2);
  Txt_Duree.setText(H + u"h" + M);
  // Armed again for the next write.
  d_->W_ChangeActif = kTrue;
}

void Ctr_VelmoraNew::Txt_DureeSoin_KeyPress(int& KeyAscii) {
  // Digits and backspace only: a duration is a whole number of minutes.
  const bool backspace = KeyAscii == 8;
  const bool digit = KeyAscii >= 48 && KeyAscii <= 57;
  if (!backspace && !digit) KeyAscii = 0;
}

// Connected to the text box; the edit is taken when OK is pressed.
void Ctr_VelmoraNew::Txt_DureeSoin_LostFocus() {}

}  // namespace velmora

// Direct calls of the control's private procedures, for unit tests that need one step
// without the journey that normally leads to it.
#pragma once

#include <velmora/control/ctr_velmora_new.h>

namespace velmora {

class CtrDriver {
 public:
  explicit CtrDriver(Ctr_VelmoraNew& c) : c_(c) {}
  void Trie_Possible() { c_.Trie_Possible(); }
  void Trie_Selectionne() { c_.Trie_Selectionne(); }
  void Txt_DureeSoin_KeyPress(int& key) { c_.Txt_DureeSoin_KeyPress(key); }
  void Txt_DureeSoin_LostFocus() { c_.Txt_DureeSoin_LostFocus(); }
  void setTypeAct(const Text& typeAct) { c_.W_TypeAct = typeAct; }

 private:
  Ctr_VelmoraNew& c_;
};

}  // namespace velmora

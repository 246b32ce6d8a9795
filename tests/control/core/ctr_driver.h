// Direct calls of the control's sorts, to prove them against the documented sort on lists
// no gesture could build quickly.
#pragma once

#include <velmora/control/ctr_velmora_new.h>

namespace velmora {

class CtrDriver {
 public:
  explicit CtrDriver(Ctr_VelmoraNew& c) : c_(c) {}
  void Trie_Possible() { c_.Trie_Possible(); }
  void Trie_Selectionne() { c_.Trie_Selectionne(); }

 private:
  Ctr_VelmoraNew& c_;
};

}  // namespace velmora

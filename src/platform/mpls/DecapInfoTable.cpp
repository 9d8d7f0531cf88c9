#include "DecapInfoTable.h"

namespace FalPw {

void DecapInfoTable::labelToPwDecapInfoIs(Wire::MplsLabel label, const PwDecapInfo& info) {
   if (Kor::mapAssignIfChanged(labelToPwDecapInfo_, label, info)) {
      notify(&NotifieeConst::onLabelToPwDecapInfo, label);
   }
}

void DecapInfoTable::labelToPwDecapInfoDel(Wire::MplsLabel label) {
   if (labelToPwDecapInfo_.erase(label)) {
      notify(&NotifieeConst::onLabelToPwDecapInfo, label);
   }
}

void DecapInfoTable::labelToPwDecapInfoDelAll() {
   Kor::deleteEachKey(labelToPwDecapInfo_,
                      [this](Wire::MplsLabel label) { labelToPwDecapInfoDel(label); });
}

}  // namespace FalPw

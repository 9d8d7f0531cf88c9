#include "AttrLogSm.h"

namespace Loom {

// Raises onClogged after the attribute's own notification when the answer differs from the last
// one announced; comparing with the announced answer, not with the one before this change, keeps
// the notifications right when a reactor changes the log again from inside a notification.
void AttrLogSm::announceClogged() {
   const bool now = isAttrLogOutClogged();
   if (now != announced_) {
      announced_ = now;
      notify(&NotifieeConst::onClogged);
   }
}

void AttrLogSm::outputBacklogIs(std::uint64_t n) {
   if (n == outputBacklog_) {
      return;
   }
   outputBacklog_ = n;
   notify(&NotifieeConst::onOutputBacklog);
   announceClogged();
}

void AttrLogSm::clogThresholdIs(std::uint64_t n) {
   if (n == clogThreshold_) {
      return;
   }
   clogThreshold_ = n;
   notify(&NotifieeConst::onClogThreshold);
   announceClogged();
}

void AttrLogSm::cloggedIs(bool clogged) {
   if (forced_ == clogged) {
      return;
   }
   forced_ = clogged;
   announceClogged();
}

void AttrLogSm::cloggedDel() {
   if (!forced_) {
      return;
   }
   forced_.reset();
   announceClogged();
}

}  // namespace Loom

#pragma once

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Entity.h>

namespace Mpls {

// The control plane's MPLS routing switch.
class RoutingInfo : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<RoutingInfo> {
    public:
      using Kor::Notifiee<RoutingInfo>::Notifiee;
      virtual void onMplsRouting() {}
   };

   explicit RoutingInfo(Kor::Name name) : Kor::Entity(std::move(name)) {}

   bool mplsRouting() const { return mplsRouting_; }
   void mplsRoutingIs(bool v) {
      if (Kor::assignIfChanged(mplsRouting_, v)) {
         notify(&NotifieeConst::onMplsRouting);
      }
   }

 private:
   bool mplsRouting_ = false;
};

}  // namespace Mpls

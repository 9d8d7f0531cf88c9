#pragma once

#include <cstddef>

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/wire/MplsLabel.h>

#include "PwDecapInfo.h"

namespace FalPw {

// The pseudowire decap info table: which pseudowire each decap label ends. Written by the
// pseudowire decap state machine (which empties it at start-up, since records of an earlier
// incarnation are not trusted), consumed by the platform, which programs one decap entry per
// label. A label holds at most one record; a lookup of an absent label yields the default record.
class DecapInfoTable : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<DecapInfoTable> {
    public:
      using Kor::Notifiee<DecapInfoTable>::Notifiee;
      virtual void onLabelToPwDecapInfo(Wire::MplsLabel /*label*/) {}
   };
   using LabelToPwDecapInfoMap = Kor::HashMap<Wire::MplsLabel, PwDecapInfo>;

   explicit DecapInfoTable(Kor::Name name = "decapInfoTable") : Kor::Entity(std::move(name)) {}

   PwDecapInfo labelToPwDecapInfo(Wire::MplsLabel label) const {
      return Kor::mapValueOr(labelToPwDecapInfo_, label);
   }
   bool labelToPwDecapInfoHas(Wire::MplsLabel label) const {
      return labelToPwDecapInfo_.contains(label);
   }
   void labelToPwDecapInfoIs(Wire::MplsLabel label, const PwDecapInfo& info);
   void labelToPwDecapInfoDel(Wire::MplsLabel label);
   void labelToPwDecapInfoDelAll();
   std::size_t labelToPwDecapInfos() const { return labelToPwDecapInfo_.size(); }
   const LabelToPwDecapInfoMap& labelToPwDecapInfoMap() const { return labelToPwDecapInfo_; }

 private:
   LabelToPwDecapInfoMap labelToPwDecapInfo_;
};

}  // namespace FalPw

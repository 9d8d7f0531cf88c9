#pragma once

#include <cstdint>
#include <optional>

#include <mplsfwd/kor/Entity.h>

namespace Loom {

// The output side of the attribute log: how many entries wait to be sent to readers. Work loops
// that produce many attribute changes (the route reviews) ask isAttrLogOutClogged() and stop
// early while the output is backed up, so the log can drain.
//
// The log's writer drives outputBacklogIs(); the clog threshold is configuration. A simulation
// can force the state with cloggedIs() until cloggedDel(). Invariant: clogged is the forced
// value when there is one, else outputBacklog >= clogThreshold; onClogged fires exactly when that
// answer changes.
class AttrLogSm : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<AttrLogSm> {
    public:
      using Kor::Notifiee<AttrLogSm>::Notifiee;
      virtual void onOutputBacklog() {}
      virtual void onClogThreshold() {}
      virtual void onClogged() {}
   };

   static constexpr std::uint64_t defaultClogThreshold() { return 1024; }

   explicit AttrLogSm(Kor::Name name = "attrLogSm",
                      std::uint64_t clogThreshold = defaultClogThreshold())
       : Kor::Entity(std::move(name)),
         clogThreshold_(clogThreshold),
         announced_(isAttrLogOutClogged()) {}

   bool isAttrLogOutClogged() const {
      return forced_ ? *forced_ : outputBacklog_ >= clogThreshold_;
   }

   std::uint64_t outputBacklog() const { return outputBacklog_; }
   void outputBacklogIs(std::uint64_t n);
   std::uint64_t clogThreshold() const { return clogThreshold_; }
   void clogThresholdIs(std::uint64_t n);

   // The forced state, if any.
   std::optional<bool> clogged() const { return forced_; }
   void cloggedIs(bool clogged);
   void cloggedDel();

 private:
   void announceClogged();

   std::uint64_t outputBacklog_ = 0;
   std::uint64_t clogThreshold_;
   std::optional<bool> forced_;
   bool announced_;  // the clogged answer reactors last heard of
};

}  // namespace Loom

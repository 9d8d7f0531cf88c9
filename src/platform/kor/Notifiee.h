#pragma once

#include <cstddef>
#include <vector>

#include "Ptr.h"

namespace Kor {

// Base of every reactor. A reactor is live unless its owner is being torn down (owner's count
// marked negative) or it was explicitly marked dead; a reactor that is not live drops
// notifications, so nothing reaches a half-destroyed state machine.
class NotifieeBase {
 public:
   NotifieeBase() = default;
   NotifieeBase(const NotifieeBase&) = delete;
   NotifieeBase& operator=(const NotifieeBase&) = delete;
   virtual ~NotifieeBase() = default;

   bool isLive() const { return !dead_ && !(owner_ && owner_->isTornDown()); }
   void deadIs(bool dead) { dead_ = dead; }
   const PtrInterface* owner() const { return owner_; }
   void ownerIs(const PtrInterface* owner) { owner_ = owner; }

 private:
   const PtrInterface* owner_ = nullptr;
   bool dead_ = false;
};

// The reactors of one notifier. Delivery walks the list by position and tolerates reactors being
// added (they are not called in the delivery under way) or removed (their slot is emptied and the
// list compacted once no delivery is running) from inside a notification.
class NotifieeList {
 public:
   void add(NotifieeBase* n) { list_.push_back(n); }
   void remove(NotifieeBase* n) {
      for (auto& slot : list_) {
         if (slot == n) {
            slot = nullptr;
            holes_ = true;
            break;
         }
      }
      compactIfIdle();
   }
   std::size_t size() const {
      std::size_t n = 0;
      for (auto* r : list_) {
         n += r != nullptr;
      }
      return n;
   }
   bool empty() const { return size() == 0; }

   template <class F>
   void forEach(F&& f) {
      if (list_.empty()) {
         return;
      }
      Delivery guard(*this);
      for (std::size_t i = 0, n = list_.size(); i < n; ++i) {
         NotifieeBase* r = list_[i];
         if (r && r->isLive()) {
            f(*r);
         }
      }
   }

 private:
   struct Delivery {
      explicit Delivery(NotifieeList& l) : list(l) { ++list.depth_; }
      ~Delivery() {
         --list.depth_;
         list.compactIfIdle();
      }
      NotifieeList& list;
   };
   void compactIfIdle() {
      if (depth_ != 0 || !holes_) {
         return;
      }
      std::erase(list_, nullptr);
      holes_ = false;
   }

   std::vector<NotifieeBase*> list_;
   int depth_ = 0;
   bool holes_ = false;
};

// Base of the nested NotifieeConst reactor class of a notifier type T. It registers itself with its
// notifier and unregisters when destroyed or pointed elsewhere, and it holds a counted reference
// so the notifier outlives it.
template <class T>
class Notifiee : public NotifieeBase {
 public:
   using NotifierType = T;

   Notifiee() = default;
   explicit Notifiee(Ptr<const T> notifier) { notifierIs(std::move(notifier)); }
   ~Notifiee() override { detach(); }

   const Ptr<const T>& notifier() const { return notifier_; }
   void notifierIs(Ptr<const T> notifier) {
      if (notifier == notifier_) {
         return;
      }
      detach();
      notifier_ = std::move(notifier);
      if (notifier_) {
         notifier_->notifieeAdd(this);
      }
   }

 private:
   void detach() {
      if (notifier_) {
         notifier_->notifieeDel(this);
         notifier_ = nullptr;
      }
   }
   Ptr<const T> notifier_;
};

}  // namespace Kor

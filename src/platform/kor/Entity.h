#pragma once

#include <utility>

#include "Name.h"
#include "Notifiee.h"
#include "Ptr.h"

namespace Kor {

// Base of every entity: a named, reference-counted object with attributes and reactors. Derived
// classes declare a nested `NotifieeConst : Kor::Notifiee<Derived>` with a virtual no-op onX per
// attribute and raise notifications through notify(&NotifieeConst::onX, args...), only when an
// attribute really changed.
class Entity : public PtrInterface {
 public:
   explicit Entity(Name name = {}) : name_(std::move(name)) {}
   Entity(const Entity&) = delete;
   Entity& operator=(const Entity&) = delete;

   const Name& name() const { return name_; }

   void notifieeAdd(NotifieeBase* n) const { notifiees_.add(n); }
   void notifieeDel(NotifieeBase* n) const { notifiees_.remove(n); }
   std::size_t notifiees() const { return notifiees_.size(); }

 protected:
   template <class N, class... P, class... A>
   void notify(void (N::*fn)(P...), A&&... args) const {
      notifiees_.forEach([&](NotifieeBase& b) { (static_cast<N&>(b).*fn)(args...); });
   }

 private:
   Name name_;
   mutable NotifieeList notifiees_;
};

}  // namespace Kor

#pragma once

#include <memory>
#include <utility>

#include "Notifiee.h"
#include "Ptr.h"

namespace Kor {

// The skeleton that every state machine builds its reactors on. A reactor of machine `Sm` on one
// input forwards the notifications that it overrides to the machine's handlers. The machine owns
// it, so it falls silent once the machine's teardown begins; the machine's destructor starts with
// silence(...) over all its reactors, so that nothing reaches it while its state goes, whether or
// not it is held through a counted reference.
template <class NotifieeT, class Sm>
class SmReactor : public NotifieeT {
 public:
   SmReactor(Ptr<const typename NotifieeT::NotifierType> notifier, Sm& sm)
       : NotifieeT(std::move(notifier)), sm_(sm) {
      this->ownerIs(&sm);
   }

 protected:
   Sm& sm_;
};

// (Re)creates the reactor of `sm` on `input`; a null input gets none.
template <class Reactor, class Input, class Sm>
void attachReactor(std::unique_ptr<Reactor>& reactor, const Input& input, Sm& sm) {
   reactor.reset();
   if (input) {
      reactor = std::make_unique<Reactor>(input, sm);
   }
}

// The teardown rule: every reactor goes dead before anything else of its machine goes.
template <class... Reactors>
void silence(const std::unique_ptr<Reactors>&... reactors) {
   auto one = [](NotifieeBase* r) {
      if (r) {
         r->deadIs(true);
      }
   };
   (one(reactors.get()), ...);
}

}  // namespace Kor

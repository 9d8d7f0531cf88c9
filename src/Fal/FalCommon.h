#pragma once

#include <string>

#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/kor/Name.h>

namespace Fal {

// Base of every helper interface that a platform implements for the library. It carries the
// helper's name (a helper restored from a backup takes its name from there) and the helpers'
// assertion: the message goes to standard error and the agent aborts.
class FalBaseHelper : public Kor::Entity {
 public:
   explicit FalBaseHelper(const Kor::Name& name) : Kor::Entity(name), helperName_(name) {}

   const Kor::Name& helperName() const { return helperName_; }
   void nameIsFromBackup(const Kor::Name& name) { helperName_ = name; }

   // Writes `message` and an end of line to standard error, then aborts. Never returns.
   [[noreturn]] void falAssert(const Kor::String& message) const;

 private:
   Kor::Name helperName_;
};

}  // namespace Fal

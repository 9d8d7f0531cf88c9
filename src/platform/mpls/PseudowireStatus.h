#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/wire/IntfId.h>

#include "PseudowireLocalConnectorInfo.h"

namespace Pseudowire {

// A record read from shared memory did not pass its size check. The text names the expected and
// the found size, the buffer's address and a hex dump of its contents, for the operator to hand
// to whoever debugs the writer.
class CorruptionError : public std::runtime_error {
 public:
   explicit CorruptionError(const std::string& what) : std::runtime_error(what) {}
};

// The pseudowire agent's status as the forwarding agent sees it: the local connector of each
// pseudowire interface. Written by the pseudowire agent (the simulator, tests), read by the
// pseudowire decap state machine, which follows onLocalConnectorInfo.
//
// The records live in shared memory, where a reader can find one whose size word was overwritten.
// The table can be told that the record of an interface is corrupt
// (localConnectorInfoCorruptIs): reads of that interface then throw CorruptionError, until the
// writer rewrites or deletes the record. Marking or clearing corruption is a change of the
// record's bytes and notifies like any write. A reader that catches the error reports it with
// corruptionDetected().
class Status : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<Status> {
    public:
      using Kor::Notifiee<Status>::Notifiee;
      virtual void onLocalConnectorInfo(Wire::IntfId /*pwIntfId*/) {}
   };
   using LocalConnectorInfoMap = Kor::HashMap<Wire::IntfId, LocalConnectorInfo>;

   explicit Status(Kor::Name name = "pseudowireStatus") : Kor::Entity(std::move(name)) {}

   // The connector of a pseudowire interface, the default record when there is none. Throws
   // CorruptionError when the interface's record is marked corrupt.
   LocalConnectorInfo localConnectorInfo(Wire::IntfId pwIntfId) const;
   bool localConnectorInfoHas(Wire::IntfId pwIntfId) const {
      return localConnectorInfo_.contains(pwIntfId);
   }
   // Writing a record also repairs a corrupt one.
   void localConnectorInfoIs(Wire::IntfId pwIntfId, const LocalConnectorInfo& info);
   void localConnectorInfoDel(Wire::IntfId pwIntfId);
   void localConnectorInfoDelAll();
   // The stored records, without the size check (the writer's view).
   const LocalConnectorInfoMap& localConnectorInfoMap() const { return localConnectorInfo_; }

   bool localConnectorInfoCorrupt(Wire::IntfId pwIntfId) const {
      return corrupt_.contains(pwIntfId);
   }
   void localConnectorInfoCorruptIs(Wire::IntfId pwIntfId, bool corrupt);

   // A reader found a record corrupt; counted and kept for the operator.
   void corruptionDetected(const std::string& what) const;
   std::uint64_t corruptions() const { return corruptions_; }
   const std::string& lastCorruption() const { return lastCorruption_; }

 private:
   [[noreturn]] void throwCorruption(Wire::IntfId pwIntfId) const;

   LocalConnectorInfoMap localConnectorInfo_;
   Kor::HashSet<Wire::IntfId> corrupt_;
   mutable std::uint64_t corruptions_ = 0;
   mutable std::string lastCorruption_;
};

}  // namespace Pseudowire

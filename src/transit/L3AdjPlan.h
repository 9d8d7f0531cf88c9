#pragma once

#include <cstdint>

#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/mpls/LfibExtFecVia.h>

#include "AdjacencyObjects.h"
#include "CachedLFibMplsViaColl.h"

namespace Fal {

// What the review does with one L3 adjacency, decided from the state without changing it
// (MplsSm::classifyL3Adj) and then done (MplsSm::applyL3AdjPlan).
struct L3AdjPlan {
   // How the adjacency is programmed.
   enum class Way : std::uint8_t {
      skip,         // not at all, for the reason in `skip`; what it held is cleaned up
      keepFec,      // only its backup is not ready: it keeps its FEC and the FEC's id
      externalFec,  // an external-FEC via set: into the FIB FEC that its via names
      fec,          // the FEC way: a FEC of its own, published for the platform
      l2,           // the L2 way: its next hops resolved into a shared L2 adjacency
   };
   // The first rule that held the adjacency back.
   enum class Skip : std::uint8_t {
      none,
      viaSetDeleted,
      notSane,
      noVias,
      backupMissing,
      backupHasBackup,
      backupNew,          // the backup has no adjacency yet (backing off)
      backupInReview,     // the backup waits for its review (backing off)
      needsFecForBackup,  // a backup relation without forwarding into FECs
      needsFecForTunnel,  // tunnel or next-hop-group vias without forwarding into FECs
      backupWithoutFec,   // the backup has no FEC yet (backing off)
      extFecRejected,
   };
   // What is done about the via set's backup, whatever the way.
   enum class Backup : std::uint8_t {
      none,
      drop,         // the via set lost its backup: the old backup adjacency is let go
      await,        // the backup via set is not in the LFIB: look again when it comes
      create,       // no adjacency for the backup yet: create it, link it, review both
      linkAndWait,  // the backup waits for its review: link it, review the primary again
      link,         // the backup is ready: link it
   };

   Way way = Way::skip;
   Skip skip = Skip::none;
   Backup backup = Backup::none;
   L3AdjacencyPtr backupAdj;                    // linkAndWait and link
   Kor::Ptr<const CachedLFibMplsViaColl> vias;  // the sane vias of an MPLS-IP via set
   Mpls::LfibExtFecVia extFecVia;               // externalFec

   // Skips that only wait for the backup: the adjacency keeps a FEC it already has.
   bool backingOff() const {
      return skip == Skip::backupNew || skip == Skip::backupInReview ||
             skip == Skip::backupWithoutFec;
   }
};

}  // namespace Fal

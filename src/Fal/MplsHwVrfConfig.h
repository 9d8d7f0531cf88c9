#pragma once

#include "MplsHwVrfTables.h"

namespace Fal {

// What the transit state machine wants programmed in one VRF: MPLS routing, the L2 adjacencies
// with a programming count that rises at every (re)programming so a retry reaches the platform as
// a change, and the routes. Written by the library, watched by the platform.
class MplsHwVrfConfig : public MplsHwVrfTables<MplsHwVrfConfig> {
 public:
   class NotifieeConst : public TablesNotifiee {
    public:
      using TablesNotifiee::TablesNotifiee;
   };
   using MplsHwVrfTables::MplsHwVrfTables;

   // The library's own mark, kept here because the table outlives an agent restart: FULL was
   // logged for this VRF and NORMAL is still owed. The platform ignores it.
   bool resourceFullLogged() const { return resourceFullLogged_; }
   void resourceFullLoggedIs(bool v) { resourceFullLogged_ = v; }

 private:
   bool resourceFullLogged_ = false;
};

}  // namespace Fal

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
};

}  // namespace Fal

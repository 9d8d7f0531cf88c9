#include "VrfMplsState.h"

namespace Fal {

VrfMplsState::VrfMplsState(const L3::VrfName& vrfName)
    : Kor::Entity(vrfName.stringValue()), vrfName_(vrfName) {}

VrfMplsState::~VrfMplsState() {
   // Routes first, then next hops, L3 adjacencies, L2 adjacencies and FEC records; each holds
   // references into the later ones, whose own back references are cleared here so that no
   // cycle outlives the state.
   route_.clear();
   mplsNextHop_.clear();
   for (const auto& [index, l3Adj] : l3Adjacency_.map()) {
      l3Adj->l2AdjacencyIs(nullptr);
      l3Adj->extFecInfoIs(nullptr);
      l3Adj->backupAdjIs(nullptr);
   }
   l3Adjacency_.clear();
   l2Adjacency_.clear();
   extFecInfo_.clear();
}

}  // namespace Fal

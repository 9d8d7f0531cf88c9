#include "VrfMplsState.h"

#include <mplsfwd/kor/AttrOps.h>

namespace Fal {

namespace {

template <class Map, class K>
typename Map::mapped_type instantiate(Map& map, const K& key) {
   auto [it, inserted] = map.try_emplace(key);
   if (inserted) {
      Kor::valueOf(it) = Kor::make<typename Map::mapped_type::element_type>(key);
   }
   return it->second;
}

}  // namespace

VrfMplsState::VrfMplsState(const L3::VrfName& vrfName)
    : Kor::Entity(vrfName.stringValue()), vrfName_(vrfName) {}

VrfMplsState::~VrfMplsState() {
   // Routes first, then next hops, L3 adjacencies, L2 adjacencies and FEC records; each holds
   // references into the later ones, whose own back references are cleared here so that no
   // cycle outlives the state.
   route_.clear();
   mplsNextHop_.clear();
   for (auto& [index, l3Adj] : l3Adjacency_) {
      l3Adj->l2AdjacencyIs(nullptr);
      l3Adj->extFecInfoIs(nullptr);
      l3Adj->backupAdjIs(nullptr);
   }
   l3Adjacency_.clear();
   l2Adjacency_.clear();
   extFecInfo_.clear();
}

Kor::Ptr<MplsRoute> VrfMplsState::routeIs(const Mpls::RouteKey& k) {
   return instantiate(route_, k);
}

Kor::Ptr<MplsNextHop> VrfMplsState::mplsNextHopIs(const IpAddrIntfId& k) {
   return instantiate(mplsNextHop_, k);
}

L3AdjacencyPtr VrfMplsState::l3AdjacencyIs(std::uint64_t i) {
   return instantiate(l3Adjacency_, i);
}

MplsL2AdjacencyPtr VrfMplsState::l2AdjacencyIs(std::uint64_t i) {
   return instantiate(l2Adjacency_, i);
}

ExternalFecInfoPtr VrfMplsState::extFecInfoIs(Memtab::Fib::FecId id) {
   return instantiate(extFecInfo_, id);
}

}  // namespace Fal

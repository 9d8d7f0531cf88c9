// Via sets and L3 adjacencies: the via-set backlog, validation with its rejection rules,
// classification, backup links, and the choice between the FEC way and the hardware-adjacency way.
#include "FalMplsSm.h"

#include <sstream>

#include <mplsfwd/log/ToggleService.h>

#include "MplsSmTrace.h"

// A rejection: recorded in `rule` when the caller only asks, traced otherwise.
#define SM_REJECT(which, expr)      \
   do {                             \
      if (rule) {                   \
         *rule = ViaSetRule::which; \
      } else {                      \
         SM_DECISION(1, expr);      \
      }                             \
   } while (false)

namespace Fal {

namespace {

const L3::VrfName& defaultVrf() {
   static const L3::VrfName name = L3::VrfName::defaultVrf();
   return name;
}

// Regular via sets of this source go the FEC way even where hardware adjacencies would do: the
// platform numbers the source whose routes it wants forwarded through the FIB as 5.
constexpr unsigned kFecForwardedViaSetSource = 5;

enum class ViaKind { regular, nexthopGroup, dynamicTunnel };

ViaKind viaKind(Wire::IntfId intf) {
   if (Wire::FecIdIntfId::isNexthopGroupIdIntfId(intf)) {
      return ViaKind::nexthopGroup;
   }
   if (Wire::DynamicTunnelIntfId::isDynamicTunnelIntfId(intf)) {
      return ViaKind::dynamicTunnel;
   }
   return ViaKind::regular;
}

}  // namespace

// ---- The via-set backlog.

void MplsSm::handleLFibViaSet() {
   // Copy: handling deletes keys from the backlog.
   std::vector<Mpls::LfibViaSetKey> keys(lfibTrackingStatus_->viaSetKeyBacklogSet().begin(),
                                         lfibTrackingStatus_->viaSetKeyBacklogSet().end());
   for (const auto& key : keys) {
      handleLFibViaSetHelper(key, true);
   }
}

void MplsSm::handleLFibViaSet(const Mpls::LfibViaSetKey& key) {
   // The reactor sees the key both arrive on and leave the backlog; only an arrival is work.
   if (!initialized_ || !lfibTrackingStatus_->viaSetKeyBacklog(key)) {
      return;
   }
   handleLFibViaSetHelper(key, true);
}

// A via set of a kind that this machine does not program (a decap set) matters to it only
// through routes that it took up, primaries that wait for the set as their backup or an
// adjacency made for it; with none of these, and nothing else waiting for a review, handling it
// changes nothing and is skipped before the VRF's lookups by name. While any trace of the machine
// is read, the full handling runs, so that the traces say what they always said.
bool MplsSm::foreignViaSetUnused(const Mpls::LfibViaSetKey& key) const {
   if (key.viaType() == Mpls::viaTypeMplsIp_ || key.viaType() == Mpls::viaTypeExternalFec_ ||
       SM_TRACING()) {
      return false;
   }
   const auto users = transitLfib_->routeKeysOfViaSet(key);
   if (!defaultState_) {
      // With users, the handling would make the VRF's state.
      return users.empty();
   }
   if (defaultState_->needReview() || defaultState_->hasUnprogrammed() ||
       defaultState_->lFibViaSetToL3AdjHas(key) || defaultState_->primariesAwaitingBackupHas(key)) {
      return false;
   }
   for (const auto& routeKey : users) {
      if (mplsIpRouteKey_.contains(routeKey)) {
         return false;
      }
   }
   return true;
}

void MplsSm::handleLFibViaSetHelper(const Mpls::LfibViaSetKey& key, bool delFromBacklog) {
   const L3::VrfName& vrfName = defaultVrf();
   if (delFromBacklog) {
      lfibTrackingStatus_->viaSetKeyBacklogDel(key);
   }
   // Whether or not the change is taken up below, the adjacency's vias are no longer known to be
   // what its hardware adjacency holds: a neighbour's move must not be patched into them.
   if (defaultState_ && key.viaType() == Mpls::viaTypeMplsIp_) {
      if (L3AdjacencyPtr l3Adj = defaultState_->l3AdjacencyOfViaSet(key)) {
         l3Adj->neighbourPatchableIs(false);
      }
   }
   if (foreignViaSetUnused(key)) {
      return;
   }
   // While a VRF state still exists (routing was switched off and its routes are draining, or it
   // is already back on) the change is taken up: dropped here it would be lost for good if routing
   // returns before the state is gone, as nothing walks the via sets again then.
   if (!vrfKnown(vrfName)) {
      // Not a routing switch: the platform's confirmation cannot be read before the VRF is named.
      SM_TRACE(1, "Vrf name has not been added yet; Not processing viaSet");
      return;
   }
   if (!platformRoutingEnabled(vrfName) || (!controlPlaneRouting() && !mplsState(vrfName))) {
      SM_TRACE(1, "mplsRouting disabled in vrf " << vrfName << "; Not processing viaSet");
      return;
   }
   const auto& users = transitLfib_->routeKeysOfViaSet(key);
   Kor::Ptr<VrfMplsState> vrf = mplsState(vrfName);
   if (!vrf) {
      if (users.empty()) {
         SM_TRACE(1, "No mplsState for vrf, and viaSet not used by any route");
         return;
      }
      vrf = mplsStateIs(vrfName);
   }
   if (vrf->lFibViaSetToL3AdjHas(key)) {
      std::uint64_t index = vrf->lFibViaSetToL3Adj(key);
      vrf->l3AdjForReviewIs(index, true);
      // The adjacency's review reaches only the routes bound to it. Routes dropped while the set
      // could not be carried, and routes that moved to the set while it was missing (they wait
      // on their old adjacency), come back with it too: the adjacency may have outlived the
      // set's absence, held by a route that was already bound to it.
      L3AdjacencyPtr l3Adj = vrf->l3Adjacency(index);
      for (const auto& routeKey : users) {
         if (!mplsIpRouteKey_.contains(routeKey)) {
            continue;
         }
         Kor::Ptr<MplsRoute> route = vrf->route(routeKey);
         if (!route || route->l3Adj() != l3Adj) {
            acceptRoute(*vrf, routeKey);
            vrf->routeKeyForReviewIs(routeKey, true);
         }
      }
   } else {
      SM_TRACE(1, "No L3Adj for viaSet. Scheduling all user Routes");
      for (const auto& routeKey : users) {
         if (mplsIpRouteKey_.contains(routeKey)) {
            acceptRoute(*vrf, routeKey);
            vrf->routeKeyForReviewIs(routeKey, true);
         }
      }
   }
   // Primaries held back because this set, their backup, was missing get another look.
   for (const auto& primary : vrf->primariesAwaitingBackupTake(key)) {
      if (vrf->lFibViaSetToL3AdjHas(primary)) {
         SM_TRACE(5, "backup viaSet idx " << key.index() << " arrived; review primary viaSet idx "
                                          << primary.index());
         vrf->l3AdjForReviewIs(vrf->lFibViaSetToL3Adj(primary), true);
      }
   }
   doMaybeScheduleReview(vrfName);
}

// ---- L3 adjacencies.

L3AdjacencyPtr MplsSm::newL3Adjacency(VrfMplsState& vrf) {
   std::uint64_t index = ++adjacencyIndex_;
   routingHwMplsStatus_->adjacencyIs(index);
   L3AdjacencyPtr l3Adj = vrf.l3AdjacencyIs(index);
   SM_TRACE(1, "create l3 adj " << index);
   return l3Adj;
}

void MplsSm::l3AdjRoutesForReview(VrfMplsState& vrf, const L3Adjacency& l3Adj) {
   vrf.forEachRoute(l3Adj, [&](const Mpls::RouteKey& routeKey, const MplsRoute&) {
      SM_TRACE(8, "add routeKey " << routeKey << " for review");
      vrf.routeKeyForReviewIs(routeKey, true);
   });
}

void MplsSm::processL3Adj(VrfMplsState& vrf, std::uint64_t index) {
   SM_TRACE(1, "process l3 adj " << index);
   L3AdjacencyPtr l3Adj = vrf.l3Adjacency(index);
   if (!l3Adj) {
      return;
   }
   if (vrf.l3AdjNeighbourReviewTake(*l3Adj) && patchMovedNeighbours(vrf, l3Adj)) {
      return;
   }
   l3Adj->neighbourPatchableIs(false);
   const Mpls::LfibViaSetKey key = l3Adj->lFibViaSetKey();
   // An adjacency that no route and no primary uses any more has done its job.
   if (l3Adj->routeKeys() == 0 && l3Adj->primaryAdjs() == 0) {
      deleteL3Adj(vrf, index);
      return;
   }
   FAL_ASSERT(key.viaType() == Mpls::viaTypeMplsIp_ || key.viaType() == Mpls::viaTypeExternalFec_,
              "lFibViaSetKey.viaType() == Mpls::viaTypeMplsIp_ || lFibViaSetKey.viaType() == "
              "Mpls::viaTypeExternalFec_");
   const MplsL2AdjacencyPtr l2Before = l3Adj->l2Adjacency();
   const ExternalFecInfoPtr fecBefore = l3Adj->extFecInfo();
   const bool unprogrammedBefore = l3Adj->unprogrammed();
   const bool programmed = applyL3AdjPlan(vrf, l3Adj, classifyL3Adj(vrf, *l3Adj));
   l3Adj->unprogrammedIs(!programmed);
   if (auto hwAdj = routingHwMplsStatus_->adjacency(index)) {
      hwAdj->unprogrammedIs(!programmed);
   }
   // The routes follow the adjacency only when what they are programmed through changed: an L2
   // adjacency updated in place, or reprogrammed as it was, leaves every route as it is.
   if (l3Adj->l2Adjacency() != l2Before || l3Adj->extFecInfo() != fecBefore ||
       l3Adj->unprogrammed() != unprogrammedBefore || !programmed) {
      l3AdjRoutesForReview(vrf, *l3Adj);
   }
   // Primaries that wait for this backup can go on now.
   for (std::uint64_t primary : l3Adj->primaryAdjSet()) {
      if (programmed) {
         vrf.l3AdjForReviewIs(primary, true);
      }
   }
}

// ---- Classification: the rules in their order, each traced where it fires; nothing changes.

L3AdjPlan MplsSm::classifyL3Adj(const VrfMplsState& vrf, const L3Adjacency& l3Adj) const {
   using Skip = L3AdjPlan::Skip;
   L3AdjPlan plan;
   const Mpls::LfibViaSetKey& key = l3Adj.lFibViaSetKey();
   if (key.viaType() == Mpls::viaTypeExternalFec_) {
      plan.extFecVia = getAndValidateExtFecVia(vrf, key);
      if (plan.extFecVia == Mpls::LfibExtFecVia()) {
         plan.skip = Skip::extFecRejected;
      } else {
         plan.way = L3AdjPlan::Way::externalFec;
      }
      return plan;
   }
   const Mpls::LfibViaSet* viaSet = transitLfib_->viaSetPtr(key);
   plan.vias = viaSet ? getSaneMplsIpLFibVias(*viaSet) : nullptr;
   validateMplsIpL3Adj(vrf, viaSet, key, plan.vias, plan.skip);
   if (viaSet && !viaSet->hasBackup() && l3Adj.backupAdj()) {
      plan.backup = L3AdjPlan::Backup::drop;
   }
   if (plan.skip == Skip::none && viaSet->hasBackup()) {
      validateBackupAdjInfo(vrf, *viaSet, plan);
   }
   // A backup relation exists only between FECs (a FEC names its backup FEC), so both sides of
   // one go the FEC way; without FEC forwarding there is no way to program them.
   const bool inBackupRelation =
       plan.skip == Skip::none && (viaSet->hasBackup() || l3Adj.primaryAdjs() > 0);
   if (plan.skip == Skip::none && inBackupRelation && !forwardingIntoExternalFecsSupported()) {
      SM_DECISION(1, "lFib viaSet " << key
                                    << " is in a backup relation, which needs forwarding into "
                                       "FECs; skipping l3 adj");
      plan.skip = Skip::needsFecForBackup;
   }
   if (plan.skip == Skip::none && !inBackupRelation &&
       findL3AdjLFibAdjType(plan.vias.ptr()) != adjTypeRegular_ &&
       !forwardingIntoExternalFecsSupported()) {
      SM_DECISION(1, "lFib viaSet " << key
                                    << " holds tunnel vias, which need forwarding into FECs; "
                                       "skipping l3 adj");
      plan.skip = Skip::needsFecForTunnel;
   }
   if (plan.skip == Skip::none && viaSet->hasBackup() &&
       !vrf.lFibViaSetToFecIdHas(viaSet->backupViaSetKey())) {
      SM_DECISION(1, "backup viaSet of " << key << " has no FEC yet, backing off");
      plan.skip = Skip::backupWithoutFec;
   }
   if (plan.skip != Skip::none) {
      // Only the backup is not ready: the primary keeps its FEC and its id, and names the
      // backup's FEC once there is one. Freeing it here would renumber a FEC that routes are
      // programmed through. After a restart a primary whose routes the route helper still holds
      // is in the same place: it gets its FEC now, so that the helper's routes are rewritten in
      // place rather than deleted until the backup is ready.
      if (plan.backingOff() && (l3Adj.extFecInfo() || helperHeldRouteOf(vrf, l3Adj))) {
         SM_DECISION(1,
                     "l3 adj " << l3Adj.index() << " keeps its FEC while its backup is not ready");
         plan.way = L3AdjPlan::Way::keepFec;
      }
   } else if (inBackupRelation || shouldProcessAdjAsExtFec(key, *plan.vias)) {
      plan.way = L3AdjPlan::Way::fec;
   } else {
      plan.way = L3AdjPlan::Way::l2;
   }
   return plan;
}

bool MplsSm::validateMplsIpL3Adj(const VrfMplsState&, const Mpls::LfibViaSet* viaSet,
                                 const Mpls::LfibViaSetKey& key,
                                 const Kor::Ptr<const CachedLFibMplsViaColl>& vias,
                                 L3AdjPlan::Skip& why) const {
   FAL_ASSERT(key.viaType() == Mpls::viaTypeMplsIp_,
              "lFibViaSetKey.viaType() == Mpls::viaTypeMplsIp_");
   if (!viaSet) {
      SM_DECISION(1,
                  "lFib viaSet idx " << key.index() << " viaType " << key.viaType() << " deleted");
      why = L3AdjPlan::Skip::viaSetDeleted;
      return false;
   }
   if (!vias) {
      SM_DECISION(1, "LFib via set " << key << ", type " << key.viaType() << " is not sane");
      why = L3AdjPlan::Skip::notSane;
      return false;
   }
   if (viaSet->vias() == 0) {
      SM_DECISION(1, "LFib via set " << key << ", type " << key.viaType() << " has no vias");
      why = L3AdjPlan::Skip::noVias;
      return false;
   }
   SM_TRACE(1, " via size " << viaSet->vias());
   return true;
}

void MplsSm::validateBackupAdjInfo(const VrfMplsState& vrf, const Mpls::LfibViaSet& viaSet,
                                   L3AdjPlan& plan) const {
   const Mpls::LfibViaSetKey& backupKey = viaSet.backupViaSetKey();
   const Mpls::LfibViaSet* backupSet = transitLfib_->viaSetPtr(backupKey);
   if (!backupSet) {
      SM_DECISION(1, "backup viaSet idx " << backupKey.index() << " viaType " << backupKey.viaType()
                                          << " missing from lfib");
      // Nothing about the primary changes when its backup arrives: look again then.
      plan.skip = L3AdjPlan::Skip::backupMissing;
      plan.backup = L3AdjPlan::Backup::await;
      return;
   }
   if (backupSet->hasBackup()) {
      // A backup of a backup is not something the hardware can express; skip the set.
      SM_DECISION(1, "backup viaSet idx " << backupKey.index() << " viaType " << backupKey.viaType()
                                          << " has a backup of its own");
      plan.skip = L3AdjPlan::Skip::backupHasBackup;
      return;
   }
   plan.backupAdj = vrf.lFibViaSetToL3AdjHas(backupKey)
                        ? vrf.l3Adjacency(vrf.lFibViaSetToL3Adj(backupKey))
                        : nullptr;
   if (!plan.backupAdj) {
      SM_DECISION(1, "backup viaSet idx " << backupKey.index() << " viaType " << backupKey.viaType()
                                          << " not yet up for review, kicking off review and "
                                             "backing off");
      plan.skip = L3AdjPlan::Skip::backupNew;
      plan.backup = L3AdjPlan::Backup::create;
      return;
   }
   if (vrf.l3AdjForReview(plan.backupAdj->index())) {
      SM_DECISION(1, "backup viaSet idx " << backupKey.index() << " viaType " << backupKey.viaType()
                                          << " waiting to be reviewed, backing off until reviewed");
      plan.skip = L3AdjPlan::Skip::backupInReview;
      plan.backup = L3AdjPlan::Backup::linkAndWait;
      return;
   }
   plan.backup = L3AdjPlan::Backup::link;
}

// ---- Applying a plan: true when the adjacency is programmed.

bool MplsSm::applyL3AdjPlan(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj, const L3AdjPlan& plan) {
   const Mpls::LfibViaSetKey key = l3Adj->lFibViaSetKey();
   const Mpls::LfibViaSet* viaSet = transitLfib_->viaSetPtr(key);
   maybeUpdateBackupAdjInfo(vrf, l3Adj, plan, viaSet);
   switch (plan.way) {
      case L3AdjPlan::Way::skip:
         cleanupL3AdjInfo(vrf, l3Adj, true, true);
         return false;
      case L3AdjPlan::Way::keepFec:
         return processMplsIpL3AdjAsExtFec(vrf, l3Adj, *viaSet, plan.vias,
                                           vrf.lFibViaSetToFecIdHas(viaSet->backupViaSetKey()));
      case L3AdjPlan::Way::externalFec:
         processExtFecL3Adj(vrf, l3Adj, key, plan.extFecVia);
         return true;
      case L3AdjPlan::Way::fec:
         cleanupL3AdjInfo(vrf, l3Adj, true, false);
         return processMplsIpL3AdjAsExtFec(vrf, l3Adj, *viaSet, plan.vias);
      case L3AdjPlan::Way::l2:
         break;
   }
   cleanupL3AdjInfo(vrf, l3Adj, false, true);
   MplsL2AdjacencyPtr l2Adj = processMplsIpL3Adj(vrf, l3Adj, *viaSet, *plan.vias);
   if (!l2Adj) {
      SM_TRACE(1, "l3Adj " << l3Adj->index() << " not resolved");
      return false;
   }
   SM_TRACE(1, "prog l2 adj " << l2Adj->index() << " in vrf " << vrf.vrfName());
   progHwL2Adj(vrf.vrfName(), routingHwMplsStatus_->l2Adjacency(l2Adj->index()));
   return true;
}

void MplsSm::maybeUpdateBackupAdjInfo(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                                      const L3AdjPlan& plan, const Mpls::LfibViaSet* viaSet) {
   switch (plan.backup) {
      case L3AdjPlan::Backup::none:
         return;
      case L3AdjPlan::Backup::drop: {
         // The via set dropped its backup: let the old one go; its own review deletes it once
         // nothing else uses it.
         L3AdjacencyPtr old = l3Adj->backupAdj();
         l3Adj->backupAdjIs(nullptr);
         old->primaryAdjDel(l3Adj->index());
         vrf.l3AdjForReviewIs(old->index(), true);
         return;
      }
      case L3AdjPlan::Backup::await:
         vrf.primaryAwaitingBackupIs(viaSet->backupViaSetKey(), viaSet->key());
         return;
      case L3AdjPlan::Backup::create: {
         const Mpls::LfibViaSetKey& backupKey = viaSet->backupViaSetKey();
         L3AdjacencyPtr backupAdj = newL3Adjacency(vrf);
         backupAdj->lFibViaSetKeyIs(backupKey);
         vrf.lFibViaSetToL3AdjIs(backupKey, backupAdj->index());
         // Linked at once so that the backup is kept while it waits for its review.
         linkBackupAdj(vrf, l3Adj, backupAdj);
         vrf.l3AdjForReviewIs(backupAdj->index(), true);
         vrf.l3AdjForReviewIs(l3Adj->index(), true);
         return;
      }
      case L3AdjPlan::Backup::linkAndWait:
         linkBackupAdj(vrf, l3Adj, plan.backupAdj);
         vrf.l3AdjForReviewIs(l3Adj->index(), true);
         return;
      case L3AdjPlan::Backup::link:
         if (l3Adj->backupAdj() == plan.backupAdj) {
            FAL_ASSERT(l3Adj->backupAdj()->lFibViaSetKey() == viaSet->backupViaSetKey(),
                       "l3Adj->backupAdj()->lFibViaSetKey() == backupLFibViaSetKey");
         } else {
            linkBackupAdj(vrf, l3Adj, plan.backupAdj);
         }
         return;
   }
}

// ---- Validation.

Kor::Ptr<const CachedLFibMplsViaColl> MplsSm::getSaneMplsIpLFibVias(
    const Mpls::LfibViaSet& viaSet) const {
   auto cache = Kor::make<CachedLFibMplsViaColl>();
   cache->reserve(viaSet.vias());
   if (!checkMplsIpLFibVias(viaSet, cache.ptr())) {
      return nullptr;
   }
   return cache;
}

bool MplsSm::checkMplsIpLFibVias(const Mpls::LfibViaSet& viaSet, CachedLFibMplsViaColl* cache,
                                 ViaSetRule* rule) const {
   bool sawNhg = false;
   bool sawTunnel = false;
   bool sawRegular = false;
   // Every processed route asks this of its via set, so the vias are read in place, not copied.
   const Mpls::LfibMplsVia* firstTunnel = nullptr;
   // With `rule`, the check only answers (for explainRoute): nothing is traced.
   auto reject = [&](const Mpls::LfibMplsVia& via) {
      if (!rule) {
         SM_TRACE(1, "Unsupported lFib Adj " << via);
      }
      return false;
   };
   for (std::uint32_t position = 0; position < viaSet.vias(); ++position) {
      Mpls::LfibViaIndexRange index(position);
      const Mpls::LfibViaKey& viaKey = viaSet.via(index);
      if (viaKey.viaType() != Mpls::viaTypeMplsIp_) {
         SM_REJECT(viaNotMplsIp,
                   "Via " << position << " ViaType " << viaKey.viaType() << " is not mplsIp");
         return reject(Mpls::LfibMplsVia());
      }
      const Mpls::LfibMplsVia* found = transitLfib_->mplsViaPtr(viaKey);
      if (!found || *found == Mpls::LfibMplsVia()) {
         SM_REJECT(viaNotFound,
                   "LfibMplsVia index " << position << ", source " << viaKey << " was not found");
         return reject(Mpls::LfibMplsVia());
      }
      const Mpls::LfibMplsVia& via = *found;
      if (via.labelStack().stackSize() > 1) {
         SM_REJECT(moreThanOneLabel, "Vias with more than one label is not supported");
         return reject(via);
      }
      ViaKind kind = viaKind(via.intf());
      if ((kind == ViaKind::nexthopGroup && sawTunnel) ||
          (kind == ViaKind::dynamicTunnel && sawNhg)) {
         SM_REJECT(mixOfDynamicTunnelAndNhg, "Mix of dynamic tunnel and NHG via is not supported");
         return reject(via);
      }
      bool tunnel = kind != ViaKind::regular;
      if ((tunnel && sawRegular) || (!tunnel && (sawNhg || sawTunnel))) {
         SM_REJECT(mixOfTunnelAndNonTunnel, "Mix of tunnel and non-tunnel via is not supported");
         return reject(via);
      }
      if (kind == ViaKind::nexthopGroup && sawNhg) {
         SM_REJECT(moreThanOneNhg, "Only one NHG via is supported now");
         return reject(via);
      }
      if (kind == ViaKind::dynamicTunnel) {
         if (!firstTunnel) {
            firstTunnel = &via;
         } else if (via.labelAction() != firstTunnel->labelAction()) {
            SM_REJECT(tunnelLabelActionsDiffer,
                      "Adjacencies of dynamic tunnel should have the samelabel action. The "
                      "conflicting labelActions are: "
                          << firstTunnel->labelAction() << " and " << via.labelAction());
            return reject(via);
         } else if (via.payloadType() != firstTunnel->payloadType()) {
            SM_REJECT(tunnelPayloadTypesDiffer,
                      "Adjacencies of dynamic tunnel should have the samepayloadTypes. The "
                      "conflicting payloadTypes are: "
                          << firstTunnel->payloadType() << " and " << via.payloadType());
            return reject(via);
         }
      }
      sawNhg |= kind == ViaKind::nexthopGroup;
      sawTunnel |= kind == ViaKind::dynamicTunnel;
      sawRegular |= kind == ViaKind::regular;
      if (cache) {
         cache->viaIs(index, via);
      }
   }
   return true;
}

bool MplsSm::isLFibViaSetSane(const Mpls::LfibViaSet& viaSet) const {
   if (viaSet.key().viaType() != Mpls::viaTypeMplsIp_) {
      return true;  // only MPLS-IP sets carry vias that this test looks into
   }
   // Every processed route asks this of its via set: answer without building the via cache.
   return checkMplsIpLFibVias(viaSet, nullptr);
}

bool MplsSm::isLFibViaSetSane(const Mpls::LfibViaSet& viaSet, L3Adjacency* l3Adj) const {
   bool sane = false;
   if (l3Adj && l3Adj->viaSetSaneInPass(passUnderWay_, sane)) {
      return sane;
   }
   sane = isLFibViaSetSane(viaSet);
   if (l3Adj && passUnderWay_ != 0) {
      l3Adj->viaSetSaneInPassIs(passUnderWay_, sane);
   }
   return sane;
}

L3AdjLFibAdjType MplsSm::findL3AdjLFibAdjType(const CachedLFibMplsViaColl* vias) {
   if (!vias) {
      return adjTypeUnknown_;
   }
   if (hasDynamicTunnelAdj(*vias)) {
      return adjTypeDynamicTunnel_;
   }
   if (hasNHGAdj(*vias)) {
      return adjTypeNexthopGroup_;
   }
   return adjTypeRegular_;
}

bool MplsSm::hasNHGAdj(const CachedLFibMplsViaColl& vias) {
   for (const auto& [position, via] : vias.viaMap()) {
      if (Wire::FecIdIntfId::isNexthopGroupIdIntfId(via.intf())) {
         return true;
      }
   }
   return false;
}

bool MplsSm::hasDynamicTunnelAdj(const CachedLFibMplsViaColl& vias) {
   for (const auto& [position, via] : vias.viaMap()) {
      if (Wire::DynamicTunnelIntfId::isDynamicTunnelIntfId(via.intf())) {
         return true;
      }
   }
   return false;
}

bool MplsSm::shouldProcessAdjAsExtFec(const Mpls::LfibViaSetKey& key,
                                      const CachedLFibMplsViaColl& vias) const {
   FAL_ASSERT(key.viaType() == Mpls::viaTypeMplsIp_,
              "lFibViaSetKey.viaType() == Mpls::viaTypeMplsIp_");
   if (!forwardingIntoExternalFecsSupported()) {
      SM_TRACE(1, "Fwd into external fecs is not supported, process with MplsHwConfig");
      return false;
   }
   L3AdjLFibAdjType type = findL3AdjLFibAdjType(&vias);
   if (type == adjTypeDynamicTunnel_ || type == adjTypeNexthopGroup_ || fecForwardedSource(key)) {
      SM_TRACE(1, "Process as ext fec");
      return true;
   }
   SM_TRACE(1, "Process with MplsHwConfig");
   return false;
}

bool MplsSm::fecForwardedSource(const Mpls::LfibViaSetKey& key) {
   return static_cast<unsigned>(key.source()) == kFecForwardedViaSetSource;
}

Mpls::LfibExtFecVia MplsSm::getAndValidateExtFecVia(const VrfMplsState&,
                                                    const Mpls::LfibViaSetKey& key) const {
   return checkExtFecVia(key, nullptr);
}

Mpls::LfibExtFecVia MplsSm::checkExtFecVia(const Mpls::LfibViaSetKey& key, ViaSetRule* rule) const {
   FAL_ASSERT(key.viaType() == Mpls::viaTypeExternalFec_,
              "lFibViaSetKey.viaType() == Mpls::viaTypeExternalFec_");
   const Mpls::LfibViaSet* viaSet = transitLfib_->viaSetPtr(key);
   if (!viaSet) {
      SM_REJECT(viaSetDeleted,
                "lFib viaSet idx " << key.index() << " viaType " << key.viaType() << " deleted");
      return {};
   }
   if (!forwardingIntoExternalFecsSupported()) {
      SM_REJECT(extFecNotSupported, "External FEC not supported on this platform; skipping l3 adj");
      return {};
   }
   if (viaSet->vias() != 1) {
      SM_REJECT(extFecViaCount, "lFib viaSet "
                                    << key << " has " << viaSet->vias()
                                    << " vias, but should only have one; skipping l3 adj");
      return {};
   }
   const Mpls::LfibViaKey& viaKey = viaSet->via(Mpls::LfibViaIndexRange(0));
   if (viaKey.viaType() != Mpls::viaTypeExternalFec_) {
      SM_REJECT(extFecViaNotExtFec, "lFib via idx " << viaKey.index() << " is viaType "
                                                    << viaKey.viaType()
                                                    << " instead of externalFec; skipping l3 adj");
      return {};
   }
   Mpls::LfibExtFecVia via = transitLfib_->extFecVia(viaKey);
   if (via == Mpls::LfibExtFecVia()) {
      SM_REJECT(extFecViaNotFound,
                "lFib via idx " << viaKey.index() << " not found; skipping l3 adj");
      return {};
   }
   // An id with a type past the FIB's bound is as unusable as a zero one.
   if (!via.fecId().isValid() || !via.fecId().adjTypeInRange()) {
      SM_REJECT(extFecIdInvalid, "lFib via idx " << viaKey.index()
                                                 << " has invalid external FecId; skipping l3 adj");
      return {};
   }
   return via;
}

// ---- The FEC way.

void MplsSm::processExtFecL3Adj(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                                const Mpls::LfibViaSetKey& key,
                                const Mpls::LfibExtFecVia& extFecVia) {
   FAL_ASSERT(forwardingIntoExternalFecsSupported());
   FAL_ASSERT(extFecVia.fecId().isValid(), "fecId.isValid()");
   cleanupL3AdjInfo(vrf, l3Adj, true, false);
   l3Adj->labelActionIs(extFecVia.labelAction());
   requestHwFecIdAndUpdateDependencyMaps(extFecVia.fecId(), Memtab::Fib::Fec(), vrf, l3Adj, key);
}

bool MplsSm::processMplsIpL3AdjAsExtFec(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                                        const Mpls::LfibViaSet& viaSet,
                                        const Kor::Ptr<const CachedLFibMplsViaColl>& vias,
                                        bool withBackup) {
   if (findL3AdjLFibAdjType(vias.ptr()) == adjTypeNexthopGroup_) {
      FAL_ASSERT(vias->vias() == 1, "mplsVias->vias() == 1");
      FAL_ASSERT(Wire::FecIdIntfId::isNexthopGroupIdIntfId(vias->viaMap().begin()->second.intf()),
                 "Wire::FecIdIntfId::isNexthopGroupIdIntfId( intf )");
   }
   Memtab::Fib::FecId backupFecId;
   if (viaSet.hasBackup() && withBackup) {
      FAL_ASSERT(vrf.lFibViaSetToFecIdHas(viaSet.backupViaSetKey()),
                 "vrfMplsState->lFibViaSetToFecIdHas( backupViaSetKey )");
      backupFecId = vrf.lFibViaSetToFecId(viaSet.backupViaSetKey());
   }
   const auto& first = vias->viaMap().begin()->second;
   l3Adj->labelActionIs(first.labelAction());
   l3Adj->payloadTypeIs(first.payloadType());
   if (auto hwAdj = routingHwMplsStatus_->adjacency(l3Adj->index())) {
      setHwAdjacencyVias(*hwAdj, *vias);
   }
   Memtab::Fib::FecId fecId = getOrAllocateMplsV4FecId(viaSet.key(), vrf);
   Memtab::Fib::Fec fec = createMplsV4Fec(fecId, *vias, backupFecId);
   requestHwFecIdAndUpdateDependencyMaps(fecId, fec, vrf, l3Adj, viaSet.key());
   return true;
}

// ---- Backups.

void MplsSm::linkBackupAdj(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                           const L3AdjacencyPtr& backupAdj) {
   if (l3Adj->backupAdj() == backupAdj) {
      return;
   }
   if (L3AdjacencyPtr old = l3Adj->backupAdj()) {
      old->primaryAdjDel(l3Adj->index());
      vrf.l3AdjForReviewIs(old->index(), true);
   }
   l3Adj->backupAdjIs(backupAdj);
   backupAdj->primaryAdjIs(l3Adj->index());
}

// ---- The toggle.

bool MplsSm::inPlaceAdjacencyUpdateSupported() {
   if (!(inPlaceToggleWord_ & Log::toggleValidBit)) {
      inPlaceToggleWord_ = Log::getToggleState("InPlaceMplsAdjacencyUpdate", true);
   }
   return (inPlaceToggleWord_ & Log::toggleStateBit) != 0;
}

void MplsSm::setHwAdjacencyVias(Mpls::Hardware::Adjacency& hwL3Adj,
                                const CachedLFibMplsViaColl& vias) {
   // The L3 view of each via as it stands in the LFIB; the layer-2 half is filled in by next-hop
   // resolution for the vias that resolve.
   hwL3Adj.viaDelAll();
   for (const auto& [position, via] : vias.viaMap()) {
      Mpls::Hardware::Via hwVia;
      hwVia.nextHopIs(via.nextHop());
      hwVia.labelStackIs(via.labelStack());
      hwVia.l3IntfIs(via.intf());
      hwL3Adj.viaIs(hwVia, true);
   }
}

}  // namespace Fal

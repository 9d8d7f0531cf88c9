// The LFIB's records and tables on byte-driven sequences of writes, against a model: every
// bounded value (label, via position, via count, FEC id, FIB via index) is refused with
// Kor::RangeError exactly when it is out of range, a refused write leaves the tables as they were,
// and after each write the tables and their reverse indices (routes of a via set, via sets of a
// via) hold exactly what the model holds.
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/mpls/FibFecId.h>
#include <mplsfwd/mpls/FibVia.h>
#include <mplsfwd/mpls/LfibStatus.h>

namespace {

class Input {
 public:
   Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
   bool empty() const { return pos_ >= size_; }
   std::uint8_t byte() { return pos_ < size_ ? data_[pos_++] : 0; }
   std::uint32_t u32() {
      std::uint32_t v = 0;
      for (int i = 0; i < 4; ++i) {
         v = v << 8 | byte();
      }
      return v;
   }
   std::uint64_t u64() { return std::uint64_t(u32()) << 32 | u32(); }

 private:
   const std::uint8_t* data_;
   std::size_t size_;
   std::size_t pos_ = 0;
};

void require(bool ok) {
   if (!ok) {
      __builtin_trap();
   }
}

// Runs `make`; it must throw Kor::RangeError exactly when `outOfRange`.
template <class F>
void refusedIff(bool outOfRange, F make) {
   bool refused = false;
   try {
      make();
   } catch (const Kor::RangeError&) {
      refused = true;
   }
   require(refused == outOfRange);
}

// Small key spaces so that writes meet each other.
Mpls::LfibViaSetKey setKey(std::uint8_t b) {
   return Mpls::LfibViaSetKey(Mpls::viaTypeMplsIp_, b % 8, Mpls::lfibSourceStatic_);
}
Mpls::LfibViaKey viaKey(std::uint8_t b) {
   return Mpls::LfibViaKey(Mpls::viaTypeMplsIp_, b % 16, Mpls::lfibSourceStatic_);
}

struct Model {
   std::map<std::uint32_t, Mpls::LfibViaSetKey> routes;
   std::map<std::uint32_t, std::vector<Mpls::LfibViaKey>> viaSets;  // by set index
};

void compare(const Mpls::LfibStatus& lfib, const Model& m) {
   require(lfib.lfibRoutes() == m.routes.size());
   for (const auto& [label, set] : m.routes) {
      const auto* r = lfib.lfibRoutePtr(Mpls::RouteKey(Wire::MplsLabel(label)));
      require(r && r->viaSetKey() == set);
   }
   for (std::uint32_t s = 0; s < 8; ++s) {
      auto key = setKey(static_cast<std::uint8_t>(s));
      std::size_t users = 0;
      for (const auto& [label, set] : m.routes) {
         users += set == key;
         if (set == key) {
            require(lfib.routeKeysOfViaSet(key).count(Mpls::RouteKey(Wire::MplsLabel(label))) == 1);
         }
      }
      require(lfib.routeKeysOfViaSet(key).size() == users);
      auto it = m.viaSets.find(s);
      const auto* stored = lfib.viaSetPtr(key);
      require((it != m.viaSets.end()) == (stored != nullptr));
      if (stored) {
         require(stored->vias() == it->second.size());
         for (std::uint32_t i = 0; i < stored->vias(); ++i) {
            require(stored->via(Mpls::LfibViaIndexRange(i)) == it->second[i]);
         }
      }
   }
   for (std::uint32_t v = 0; v < 16; ++v) {
      auto via = viaKey(static_cast<std::uint8_t>(v));
      std::set<std::uint32_t> naming;
      for (const auto& [s, vias] : m.viaSets) {
         for (const auto& k : vias) {
            if (k == via) {
               naming.insert(s);
            }
         }
      }
      require(lfib.viaSetsOfVia(via).size() == naming.size());
   }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
   Input in(data, size);
   auto lfib = Kor::make<Mpls::LfibStatus>("lfib");
   Model m;
   while (!in.empty()) {
      switch (in.byte() % 7) {
         case 0: {  // a route: a label value past the no-label value cannot be built, and a route
                    // without a label (none, or the no-label value itself) is refused by the LFIB
            std::uint32_t v = in.u32() >> (in.byte() % 32);
            bool none = in.byte() % 4 == 0;
            auto set = setKey(in.byte());
            const bool noLabel = none || v == Wire::MplsLabel::kNoLabel;
            refusedIff(!none && v > Wire::MplsLabel::kNoLabel, [&] {
               Mpls::RouteKey key = none ? Mpls::RouteKey() : Mpls::RouteKey(Wire::MplsLabel(v));
               refusedIff(noLabel, [&] { lfib->lfibRouteIs(Mpls::LfibRoute(key, set)); });
               if (!noLabel) {
                  m.routes[v] = set;
               }
            });
            break;
         }
         case 1: {
            std::uint32_t v = in.u32() % (Wire::MplsLabel::kMax + 1);
            lfib->lfibRouteDel(Mpls::RouteKey(Wire::MplsLabel(v)));
            m.routes.erase(v);
            break;
         }
         case 2: {  // a via set: at most 128 vias, by count or by appending
            std::uint8_t s = in.byte();
            std::uint32_t count = in.byte();
            Mpls::LfibViaSet set(setKey(s), Mpls::viaSetTypeEcmp_);
            refusedIff(count > Mpls::LfibViaSet::kMaxVias, [&] { set.viasIs(count); });
            set.viasIs(0);
            std::vector<Mpls::LfibViaKey> vias;
            for (std::uint32_t i = 0; i < count; ++i) {
               auto via = viaKey(in.byte());
               refusedIff(i >= Mpls::LfibViaSet::kMaxVias, [&] { set.viaAppend(via); });
               if (i < Mpls::LfibViaSet::kMaxVias) {
                  vias.push_back(via);
               }
            }
            lfib->viaSetIs(set);
            m.viaSets[s % 8] = vias;
            break;
         }
         case 3: {
            std::uint8_t s = in.byte();
            lfib->viaSetDel(setKey(s));
            m.viaSets.erase(s % 8);
            break;
         }
         case 4: {  // a via position
            std::uint32_t v = in.byte() | (in.byte() % 2) << 8;
            refusedIff(v > Mpls::LfibViaIndexRange::max,
                       [&] { static_cast<void>(Mpls::LfibViaIndexRange(v)); });
            break;
         }
         case 5: {  // a FEC id from its type and index
            std::uint64_t type = in.byte() % 32;
            std::uint64_t index = in.u64() >> (in.byte() % 64);
            refusedIff(type >= Memtab::Fib::adjTypeMax() || index > Memtab::Fib::FecId::kIndexMask,
                       [&] {
                          auto id = Memtab::Fib::FecId::fecIdForAdjType(
                              static_cast<Memtab::Fib::AdjType>(type), index);
                          require(id.adjTypeInRange() && id.index() == index);
                       });
            break;
         }
         default: {  // a FIB via index
            std::uint32_t v = in.u32() >> (in.byte() % 32);
            refusedIff(v > Memtab::Fib::ViaIndex::max,
                       [&] { static_cast<void>(Memtab::Fib::ViaIndex(v)); });
            break;
         }
      }
      compare(*lfib, m);
   }
   return 0;
}

#include "ResolvedNexthop.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>

namespace Fal {

const Kor::EnumRegistry<NexthopType>& nexthopTypeRegistry() {
   static const Kor::EnumRegistry<NexthopType> registry("Fal::NexthopType",
                                                        {
                                                            {NexthopType::unresolved, "unresolved"},
                                                            {NexthopType::connected, "connected"},
                                                            {NexthopType::gateway, "gateway"},
                                                            {NexthopType::drop, "drop"},
                                                            {NexthopType::receive, "receive"},
                                                        });
   return registry;
}

std::string stringValue(NexthopType type) {
   return nexthopTypeRegistry().name(type);
}

std::ostream& operator<<(std::ostream& os, NexthopType type) {
   return os << stringValue(type);
}

std::size_t ResolvedNexthop::hash() const {
   std::size_t h = prefix_.hash();
   h = Kor::hashCombine(h, nexthop_.hash());
   h = Kor::hashCombine(h, l3Intf_.value());
   return Kor::hashCombine(h, static_cast<std::uint64_t>(nexthopType_));
}

std::string ResolvedNexthop::stringValue() const {
   return "Value('Fal::ResolvedNexthop', ** {'prefix': " + prefix_.stringValue() +
          ", 'nexthop': " + nexthop_.stringValue() + ", 'l3Intf': " + l3Intf_.stringValue() +
          ", 'nexthopType': " + Fal::stringValue(nexthopType_) + "})";
}

std::ostream& operator<<(std::ostream& os, const ResolvedNexthop& resolved) {
   return os << resolved.stringValue();
}

}  // namespace Fal

#include "UnprogrammedReason.h"

namespace Fal {

const Kor::EnumRegistry<UnprogrammedReason>& unprogrammedReasonRegistry() {
   static const Kor::EnumRegistry<UnprogrammedReason> registry(
       "Fal::UnprogrammedReason", {{UnprogrammedReason::Success, "Success"},
                                   {UnprogrammedReason::AdjacencyFull, "AdjacencyFull"},
                                   {UnprogrammedReason::RouteFull, "RouteFull"},
                                   {UnprogrammedReason::InterfaceNotReady, "InterfaceNotReady"}});
   return registry;
}

UnprogrammedReason UnprogrammedReasonInstance(unsigned value) {
   return unprogrammedReasonRegistry().instance(value);
}

UnprogrammedReason UnprogrammedReasonInstance(std::string_view name) {
   return unprogrammedReasonRegistry().instance(name);
}

std::string stringValue(UnprogrammedReason reason) {
   return unprogrammedReasonRegistry().name(reason);
}

std::ostream& operator<<(std::ostream& os, UnprogrammedReason reason) {
   return os << stringValue(reason);
}

}  // namespace Fal

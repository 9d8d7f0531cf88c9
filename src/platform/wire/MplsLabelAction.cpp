#include "MplsLabelAction.h"

#include <ostream>

namespace Wire {

const Kor::EnumRegistry<MplsLabelAction>& mplsLabelActionRegistry() {
   static const Kor::EnumRegistry<MplsLabelAction> registry(
       "Wire::MplsLabelAction", {{MplsLabelAction::none, "none"},
                                 {MplsLabelAction::push, "push"},
                                 {MplsLabelAction::swap, "swap"},
                                 {MplsLabelAction::pop, "pop"},
                                 {MplsLabelAction::forward, "forward"},
                                 {MplsLabelAction::popAndLookup, "popAndLookup"}});
   return registry;
}

std::string stringValue(MplsLabelAction action) {
   return mplsLabelActionRegistry().name(action);
}

MplsLabelAction parseMplsLabelAction(std::string_view text) {
   return mplsLabelActionRegistry().instance(text);
}

std::ostream& operator<<(std::ostream& os, MplsLabelAction action) {
   return os << stringValue(action);
}

const Kor::EnumRegistry<AddressingMethod>& addressingMethodRegistry() {
   static const Kor::EnumRegistry<AddressingMethod> registry(
       "Wire::AddressingMethod", {{AddressingMethod::unknown, "unknown"},
                                  {AddressingMethod::direct, "direct"},
                                  {AddressingMethod::indirect, "indirect"}});
   return registry;
}

std::string stringValue(AddressingMethod method) {
   return addressingMethodRegistry().name(method);
}

AddressingMethod parseAddressingMethod(std::string_view text) {
   return addressingMethodRegistry().instance(text);
}

std::ostream& operator<<(std::ostream& os, AddressingMethod method) {
   return os << stringValue(method);
}

}  // namespace Wire

#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

#include <mplsfwd/kor/EnumRegistry.h>

namespace Wire {

// What a via does to the label stack of a packet. The zero value is "nothing", the value of a
// via that carries no label operation (a decap FEC's via, a default-constructed via).
enum class MplsLabelAction : std::uint8_t {
   none = 0,
   push = 1,          // push the via's labels on top of the incoming stack
   swap = 2,          // replace the top label by the via's labels
   pop = 3,           // remove the top label and forward on the rest
   forward = 4,       // forward with the stack unchanged
   popAndLookup = 5,  // remove the top label and look the payload up again
};

const Kor::EnumRegistry<MplsLabelAction>& mplsLabelActionRegistry();
std::string stringValue(MplsLabelAction action);
// By name; throws Kor::EnumError.
MplsLabelAction parseMplsLabelAction(std::string_view text);
std::ostream& operator<<(std::ostream& os, MplsLabelAction action);

// How the platform reaches the next hop of a forwarded route: directly over an interface, or
// indirectly through a FEC (next-hop group, tunnel) that resolves it.
enum class AddressingMethod : std::uint8_t {
   unknown = 0,
   direct = 1,
   indirect = 2,
};

const Kor::EnumRegistry<AddressingMethod>& addressingMethodRegistry();
std::string stringValue(AddressingMethod method);
AddressingMethod parseAddressingMethod(std::string_view text);
std::ostream& operator<<(std::ostream& os, AddressingMethod method);

}  // namespace Wire

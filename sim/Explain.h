#pragma once

#include <optional>
#include <ostream>
#include <string>

#include <nlohmann/json.hpp>

#include "Agent.h"

namespace sim {

class Runner;

// Which machine answers for a label: the one whose routes it names in the LFIB (or, for a
// pseudowire route, in the MPLS status).
enum class LabelFamily { none, transit, decap, pseudowire };

LabelFamily labelFamily(const Agent& agent, const Mpls::RouteKey& key);

// The cause that holds a route back, by the name its machine gives it ("nextHopUnresolved",
// "helperRefused", "programmed", ...); "" when the machine that would answer is not running.
std::string blockingCause(const Agent& agent, const Mpls::RouteKey& key);

// The label action of a transit route's first via ("swap", "push", "pop"), or "".
std::string labelActionOf(const Agent& agent, const Mpls::RouteKey& key);

// The machine's answer for one label, in words (one fact a line) and as JSON.
void writeExplanation(std::ostream& os, const Agent& agent, const Mpls::RouteKey& key);
nlohmann::json explanationJson(const Agent& agent, const Mpls::RouteKey& key);

// Whether a trace or FastLog text names the label (as a route key, or as the decap and pseudowire
// traces print it).
bool textNamesLabel(const std::string& text, std::uint32_t label);

// `mplsfwd-sim explain FILE --label N [--after-step K] [--json]`: runs the scenario (up to step K)
// with every trace handle and FastLog on, then writes the answer followed by the trace lines and
// FastLog texts that name the label, each with its simulated time. Answers the exit code.
int explainCommand(const std::string& file, std::uint64_t label,
                   std::optional<std::size_t> afterStep, bool json, std::ostream& out,
                   std::ostream& err);

}  // namespace sim

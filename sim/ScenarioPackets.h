#pragma once

#include <functional>
#include <vector>

#include <nlohmann/json.hpp>

#include "Forwarder.h"
#include "Frame.h"

namespace sim {

class Fields;
class Runner;

// The scenario steps that send frames through the forwarding model: `packet` builds a frame and
// forwards it on its ingress port, keeping the result in the runner; `expectPacket` checks that
// result. The field names of each are listed for the table of operations.
extern const std::vector<const char*> packetFields;
extern const std::vector<const char*> expectPacketFields;
std::function<void(Runner&)> packetStep(const Fields& f, const ForwarderOptions& options);
std::function<void(Runner&)> expectPacketStep(const Fields& f);

// The `packet` step's frame description, checked; the router MAC is the default destination.
// Throws ScenarioError.
Frame frameFromJson(const Fields& f, const Wire::EthAddr& routerMac);

// The forwarder options of a scenario's config ("routerMac", "ttlMode").
ForwarderOptions forwarderOptionsFromConfig(const Fields& config);

}  // namespace sim

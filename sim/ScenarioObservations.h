#pragma once

#include <functional>

#include "ScenarioFields.h"

namespace sim {

class Runner;

// Expectations that look into what the library asked of the platform and why a route stands
// where it does (ScenarioObservations.cpp); the operation table of Scenario.cpp names them.
using ObservationAction = std::function<void(Runner&)>;
ObservationAction expectExplainStep(const Fields& f);
ObservationAction expectHelperCallsStep(const Fields& f);
ObservationAction expectDecapMismatchedDeletesStep(const Fields& f);
ObservationAction expectFecContentsStep(const Fields& f);
ObservationAction expectMplsIpStatusStep(const Fields& f);

}  // namespace sim

#include "Timeline.h"

#include <fstream>
#include <iomanip>

namespace sim {

Timeline::Timeline(Agent& agent, double resolution) : agent_(agent), resolution_(resolution) {
   agent_.loop()->afterStepIs([this] { sample(); });
   sample();
}

Timeline::~Timeline() {
   agent_.loop()->afterStepIs(nullptr);
}

Timeline::Row Timeline::counts() const {
   Row r;
   r.time = agent_.now();
   auto config = agent_.defaultVrfConfig();
   auto status = agent_.defaultVrfStatus();
   std::size_t configured = config ? config->routes() : 0;
   std::size_t chip = status ? status->routes() : 0;
   r.unprogrammed = status ? status->unprogrammedRoutes() : 0;
   r.programmed = chip + agent_.routeHelper()->routes();
   // Configured routes the chip has neither taken nor refused yet.
   r.pending = configured > chip + r.unprogrammed ? configured - chip - r.unprogrammed : 0;
   r.l2Adjacencies = config ? config->l2Adjacencies() : 0;
   r.decapMappings = agent_.decapHelper()->mappings();
   return r;
}

void Timeline::sample() {
   Row r = counts();
   if (!rows_.empty() && rows_.back() == r) {
      return;
   }
   if (rows_.size() > 1 && r.time - rows_[rows_.size() - 2].time < resolution_) {
      rows_.back() = r;
      return;
   }
   rows_.push_back(r);
}

void Timeline::write(std::ostream& os) const {
   os << "time,programmed,unprogrammed,pending,l2Adjacencies,decapMappings\n";
   for (const auto& r : rows_) {
      os << std::setprecision(9) << r.time << "," << r.programmed << "," << r.unprogrammed << ","
         << r.pending << "," << r.l2Adjacencies << "," << r.decapMappings << "\n";
   }
}

bool Timeline::writeFile(const std::string& path) const {
   std::ofstream out(path);
   if (!out) {
      return false;
   }
   write(out);
   return static_cast<bool>(out);
}

}  // namespace sim

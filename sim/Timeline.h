#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "Agent.h"

namespace sim {

// How the hardware fills up over time: at every change, the time and the counts of programmed,
// unprogrammed and pending transit routes, configured L2 adjacencies and decap mappings. Attached
// to an agent's loop, it samples after every wake-up and task; a sample whose counts did not change
// adds nothing, and samples closer than `resolution` seconds to the last row replace it (a bench on
// real time would otherwise write a row per review pass). Every count is read in constant time.
class Timeline {
 public:
   struct Row {
      double time = 0.0;
      std::size_t programmed = 0;
      std::size_t unprogrammed = 0;
      std::size_t pending = 0;
      std::size_t l2Adjacencies = 0;
      std::size_t decapMappings = 0;
      bool operator==(const Row& o) const {
         return programmed == o.programmed && unprogrammed == o.unprogrammed &&
                pending == o.pending && l2Adjacencies == o.l2Adjacencies &&
                decapMappings == o.decapMappings;
      }
   };

   Timeline(Agent& agent, double resolution = 0.0);
   ~Timeline();
   Timeline(const Timeline&) = delete;
   Timeline& operator=(const Timeline&) = delete;

   void sample();
   const std::vector<Row>& rows() const { return rows_; }
   // CSV with a header line: time,programmed,unprogrammed,pending,l2Adjacencies,decapMappings.
   void write(std::ostream& os) const;
   // Writes the CSV to a file; false (and nothing written) when it cannot be opened.
   bool writeFile(const std::string& path) const;

 private:
   Row counts() const;

   Agent& agent_;
   double resolution_;
   std::vector<Row> rows_;
};

}  // namespace sim

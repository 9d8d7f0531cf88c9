#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

// Console reporter that also prints, after the run, each benchmark's time as a ratio to the floor
// benchmark of the same run (named "BM_Floor..."), so figures from different machines compare.
class FloorReporter : public benchmark::ConsoleReporter {
public:
   void ReportRuns(const std::vector<Run>& runs) override {
      ConsoleReporter::ReportRuns(runs);
      for (const auto& run : runs) {
         if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
            times_[run.benchmark_name()] = run.GetAdjustedCPUTime();
         }
      }
   }
   void Finalize() override {
      ConsoleReporter::Finalize();
      double floor = 0;
      std::string floorName;
      for (const auto& [name, t] : times_) {
         if (name.rfind("BM_Floor", 0) == 0) {
            floor = t;
            floorName = name;
         }
      }
      if (floor <= 0) {
         return;
      }
      std::printf("\nratio to %s (%.2f ns):\n", floorName.c_str(), floor);
      for (const auto& [name, t] : times_) {
         std::printf("  %-48s %8.2f\n", name.c_str(), t / floor);
      }
   }

private:
   std::map<std::string, double> times_;
};

#define MPLSFWD_BENCHMARK_MAIN()                            \
   int main(int argc, char** argv) {                        \
      benchmark::Initialize(&argc, argv);                   \
      FloorReporter reporter;                               \
      benchmark::RunSpecifiedBenchmarks(&reporter);         \
      benchmark::Shutdown();                                \
      return 0;                                             \
   }

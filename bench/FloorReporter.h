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
            // Real time: the manual-time benchmarks report what they measured there.
            times_[run.benchmark_name()] =
                run.GetAdjustedRealTime() * unitNanoseconds(run.time_unit);
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
      std::printf("\nratio to %s (%.2f ns real time):\n", floorName.c_str(), floor);
      for (const auto& [name, t] : times_) {
         std::printf("  %-48s %8.2f\n", name.c_str(), t / floor);
      }
   }

 private:
   static double unitNanoseconds(benchmark::TimeUnit unit) {
      switch (unit) {
         case benchmark::kSecond:
            return 1e9;
         case benchmark::kMillisecond:
            return 1e6;
         case benchmark::kMicrosecond:
            return 1e3;
         default:
            return 1.0;
      }
   }
   std::map<std::string, double> times_;
};

#define MPLSFWD_BENCHMARK_MAIN()                    \
   int main(int argc, char** argv) {                \
      benchmark::Initialize(&argc, argv);           \
      FloorReporter reporter;                       \
      benchmark::RunSpecifiedBenchmarks(&reporter); \
      benchmark::Shutdown();                        \
      return 0;                                     \
   }

#pragma once

#include <string>
#include <utility>

namespace Log {

// The definition of one operator log message, made once when the program loads and passed to
// Log::emit each time the message is raised.
//
// The two numeric parameters drive the message's rate check (see RateLimiter):
//   minInterval  seconds between emissions once the burst is used up (0 or less: never limited);
//   burst        emissions allowed back to back before the interval applies (below 1 counts as 1).
// So (0.0, 1.0) lets every emission through, and (5.0, 1.0) at most one every 5 s.
// The format may hold %-conversions (see LogFacility::format); severity follows the syslog
// numbering (0 emergency to 7 debug; 3 is an error).
class MessageDef {
 public:
   MessageDef(std::string name, int severity, std::string format, std::string explanation,
              std::string recommendedAction, double minInterval, double burst)
       : name_(std::move(name)),
         severity_(severity),
         format_(std::move(format)),
         explanation_(std::move(explanation)),
         recommendedAction_(std::move(recommendedAction)),
         minInterval_(minInterval),
         burst_(burst) {}

   const std::string& name() const { return name_; }
   int severity() const { return severity_; }
   const std::string& format() const { return format_; }
   const std::string& explanation() const { return explanation_; }
   const std::string& recommendedAction() const { return recommendedAction_; }
   double minInterval() const { return minInterval_; }
   double burst() const { return burst_; }

 private:
   std::string name_;
   int severity_;
   std::string format_;
   std::string explanation_;
   std::string recommendedAction_;
   double minInterval_;
   double burst_;
};

}  // namespace Log

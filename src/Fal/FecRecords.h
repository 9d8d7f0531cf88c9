#pragma once

#include <cstdint>
#include <ostream>

#include <mplsfwd/mpls/FibFecId.h>

namespace Fal {

// The platform's hardware FEC id.
using HwFecId = std::uint64_t;

// One request for a hardware FEC id, keyed by the FIB FEC id. A default request means "none".
class HwFecIdRequest {
 public:
   HwFecIdRequest() = default;
   explicit HwFecIdRequest(Memtab::Fib::FecId fecId) : fecId_(fecId) {}

   Memtab::Fib::FecId key() const { return fecId_; }
   Memtab::Fib::FecId fecId() const { return fecId_; }
   bool operator==(const HwFecIdRequest&) const = default;

 private:
   Memtab::Fib::FecId fecId_;
};

// The platform's answer to a request: the hardware FEC id it assigned. A default answer means
// "none".
class FecToHwFecId {
 public:
   FecToHwFecId() = default;
   FecToHwFecId(Memtab::Fib::FecId fecId, HwFecId hwFecId) : fecId_(fecId), hwFecId_(hwFecId) {}

   Memtab::Fib::FecId key() const { return fecId_; }
   Memtab::Fib::FecId fecId() const { return fecId_; }
   HwFecId hwFecId() const { return hwFecId_; }
   bool operator==(const FecToHwFecId&) const = default;

 private:
   Memtab::Fib::FecId fecId_;
   HwFecId hwFecId_ = 0;
};

std::ostream& operator<<(std::ostream& os, const HwFecIdRequest& r);
std::ostream& operator<<(std::ostream& os, const FecToHwFecId& r);

}  // namespace Fal

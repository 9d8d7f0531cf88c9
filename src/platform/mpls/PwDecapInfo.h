#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/MplsLabel.h>

namespace FalPw {

// One pseudowire decap record: traffic arriving with `label` on top is decapsulated and handed
// to the pseudowire interface `pwIntfId`. A default record (the no-label value 1048576, empty
// interface) means "none".
class PwDecapInfo {
 public:
   PwDecapInfo() = default;
   PwDecapInfo(Wire::MplsLabel label, Wire::IntfId pwIntfId) : label_(label), pwIntfId_(pwIntfId) {}

   Wire::MplsLabel label() const { return label_; }
   void labelIs(Wire::MplsLabel v) { label_ = v; }
   Wire::IntfId pwIntfId() const { return pwIntfId_; }
   void pwIntfIdIs(Wire::IntfId v) { pwIntfId_ = v; }

   bool operator==(const PwDecapInfo&) const = default;
   bool operator!() const { return *this == PwDecapInfo(); }
   std::size_t hash() const;

   // "Value('FalPw::PwDecapInfo', ** {'label': 16, 'pwIntfId': VlanPseudowire3})".
   std::string stringValue() const;
   // Reverse of stringValue(); throws Kor::ParseError.
   static PwDecapInfo parse(std::string_view text);

 private:
   Wire::MplsLabel label_;
   Wire::IntfId pwIntfId_;
};

std::ostream& operator<<(std::ostream& os, const PwDecapInfo& info);

}  // namespace FalPw

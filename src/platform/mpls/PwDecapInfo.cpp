#include "PwDecapInfo.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>
#include <mplsfwd/kor/TextForm.h>

namespace FalPw {

std::size_t PwDecapInfo::hash() const {
   return Kor::hashCombine(Kor::hashCombine(0x5044, label_.value()), pwIntfId_.value());
}

std::string PwDecapInfo::stringValue() const {
   return "Value('FalPw::PwDecapInfo', ** {'label': " + label_.stringValue() +
          ", 'pwIntfId': " + pwIntfId_.stringValue() + "})";
}

PwDecapInfo PwDecapInfo::parse(std::string_view text) {
   Kor::ValueTextReader reader(text, "FalPw::PwDecapInfo");
   Wire::MplsLabel label = Wire::MplsLabel::parse(reader.field("label"));
   Wire::IntfId pwIntfId = Wire::IntfId::parse(reader.field("pwIntfId"));
   reader.finish();
   return PwDecapInfo(label, pwIntfId);
}

std::ostream& operator<<(std::ostream& os, const PwDecapInfo& info) {
   return os << info.stringValue();
}

}  // namespace FalPw

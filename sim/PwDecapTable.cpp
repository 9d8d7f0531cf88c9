#include "PwDecapTable.h"

namespace sim {

class PwDecapTable::TableReactor : public FalPw::DecapInfoTable::NotifieeConst {
 public:
   TableReactor(Kor::Ptr<const FalPw::DecapInfoTable> t, PwDecapTable& owner)
       : FalPw::DecapInfoTable::NotifieeConst(std::move(t)), owner_(owner) {}
   void onLabelToPwDecapInfo(Wire::MplsLabel label) override { owner_.labelChanged(label); }

 private:
   PwDecapTable& owner_;
};

PwDecapTable::PwDecapTable(Kor::Ptr<const FalPw::DecapInfoTable> table) : table_(std::move(table)) {
   reactor_ = std::make_unique<TableReactor>(table_, *this);
   for (const auto& [label, info] : table_->labelToPwDecapInfoMap()) {
      labelChanged(label);
   }
}

PwDecapTable::~PwDecapTable() = default;

void PwDecapTable::labelChanged(Wire::MplsLabel label) {
   if (!table_->labelToPwDecapInfoHas(label)) {
      deletes_ += entry_.erase(label);
      return;
   }
   FalPw::PwDecapInfo info = table_->labelToPwDecapInfo(label);
   auto [it, inserted] = entry_.try_emplace(label, info);
   if (inserted || !(it->second == info)) {
      it->second = info;
      ++writes_;
   }
}

}  // namespace sim

#include "platform/qt/DescriptorBudget.h"

#include "platform/DescriptorReserve.h"

namespace zeb {

std::size_t DescriptorBudget::Reserve() const {
  return DescriptorReserve(limit_);
}

std::string DescriptorBudget::Reason() const {
  return "too many open files, the limit is " + std::to_string(limit_) + ": raise LimitNOFILE";
}

}  // namespace zeb

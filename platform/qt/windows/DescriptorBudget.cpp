#include "platform/qt/DescriptorBudget.h"

namespace zeb {

// Windows counts no descriptors.
DescriptorBudget::DescriptorBudget() : DescriptorBudget(0) {}

}  // namespace zeb

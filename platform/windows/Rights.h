// Rights on what a publisher keeps, for an account that is no administrator's.
#pragma once

#include <string>

#include "platform/Result.h"

namespace zeb {

enum class Account {
  kLocalService,  // Windows' account for small services
  kUsers          // everybody who may log on to this computer
};

// Lets the account change the settings (the key Software\Hexmoor of 32-bit programs, which is made where it
// is missing) and the data folder. Needs an administrator's rights; the reason names what failed.
Outcome OpenTo(Account account, const std::string& dataFolder);

}  // namespace zeb

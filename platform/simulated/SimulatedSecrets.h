// SimulatedSecrets: tokens that count up, and hashes that can be read.
#pragma once

#include <functional>
#include <string>

#include "platform/Secrets.h"

namespace zeb {

class SimulatedSecrets : public Secrets {
 public:
  std::string RandomToken() override { return "token" + std::to_string(++tokens_); }
  Result<std::string> HashPassword(const std::string& password) override { return "$hash$" + password; }
  bool IsPassword(const std::string& hash, const std::string& password) override {
    ++checked;
    if (onCheck) onCheck();
    return hash == "$hash$" + password;
  }
  int checked = 0;
  std::function<void()> onCheck;  // for what happens meanwhile

 private:
  int tokens_ = 0;
};

}  // namespace zeb

// SodiumSecrets: libsodium's argon2id, with 64 MiB and two passes: about a tenth of a second a password.
#pragma once

#include <memory>

#include "platform/Secrets.h"

namespace zeb {

class SodiumSecrets : public Secrets {
 public:
  // Fails when the library finds no source of randomness.
  static Result<std::shared_ptr<Secrets>> Make();

  std::string RandomToken() override;
  Result<std::string> HashPassword(const std::string& password) override;
  bool IsPassword(const std::string& hash, const std::string& password) override;
};

}  // namespace zeb

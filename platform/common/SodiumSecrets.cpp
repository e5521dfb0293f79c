#include "platform/common/SodiumSecrets.h"

#include <sodium.h>

#include <array>

namespace zeb {

Result<std::shared_ptr<Secrets>> SodiumSecrets::Make() {
  if (sodium_init() < 0) return Failure{"the system gives no randomness"};
  return std::shared_ptr<Secrets>(std::make_shared<SodiumSecrets>());
}

std::string SodiumSecrets::RandomToken() {
  std::array<unsigned char, 32> bytes{};
  randombytes_buf(bytes.data(), bytes.size());
  constexpr int kVariant = sodium_base64_VARIANT_URLSAFE_NO_PADDING;
  std::string token(sodium_base64_ENCODED_LEN(bytes.size(), kVariant), '\0');
  sodium_bin2base64(token.data(), token.size(), bytes.data(), bytes.size(), kVariant);
  token.pop_back();  // the zero at its end
  return token;
}

Result<std::string> SodiumSecrets::HashPassword(const std::string& password) {
  std::array<char, crypto_pwhash_STRBYTES> hash{};
  if (crypto_pwhash_str(hash.data(), password.data(), password.size(), crypto_pwhash_OPSLIMIT_INTERACTIVE,
                        crypto_pwhash_MEMLIMIT_INTERACTIVE) != 0)
    return Failure{"there is not enough memory for the password's hash: it takes 64 MiB"};
  return std::string(hash.data());
}

bool SodiumSecrets::IsPassword(const std::string& hash, const std::string& password) {
  return hash.size() < crypto_pwhash_STRBYTES &&
         crypto_pwhash_str_verify(hash.c_str(), password.data(), password.size()) == 0;
}

}  // namespace zeb

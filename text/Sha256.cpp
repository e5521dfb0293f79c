#include "text/Sha256.h"

// Where OpenSSL is not at hand, the library that hashes passwords does it, more slowly.
#ifdef _WIN32
#include <sodium.h>
#else
#include <openssl/sha.h>
#endif

namespace zeb {

std::string Sha256(std::string_view bytes) {
  constexpr std::size_t kDigestBytes = 32;
  std::string digest(kDigestBytes, '\0');
  const auto* const from = reinterpret_cast<const unsigned char*>(bytes.data());
  auto* const to = reinterpret_cast<unsigned char*>(digest.data());
#ifdef _WIN32
  crypto_hash_sha256(to, from, bytes.size());
#else
  SHA256(from, bytes.size(), to);
#endif
  return digest;
}

std::string Sha256Text(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char byte : Sha256(bytes)) {
    text += kDigits[static_cast<unsigned char>(byte) >> 4];
    text += kDigits[static_cast<unsigned char>(byte) & 0xFu];
  }
  return text;
}

}  // namespace zeb

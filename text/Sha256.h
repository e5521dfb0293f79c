// SHA-256: tells whether two pages are the same without keeping them, and gives what `sha256sum` gives, so
// that anyone can compare a file with what was published.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

// The 32 bytes of the digest.
std::string Sha256(std::string_view bytes);
// The same as 64 digits, small letters.
std::string Sha256Text(std::string_view bytes);

}  // namespace zeb

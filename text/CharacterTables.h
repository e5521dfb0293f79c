// The 256 characters of each single-byte character set; used inside this folder only.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "text/Encodings.h"

namespace zeb {

// The character of a Windows-1252 byte. The five bytes that the set leaves undefined give the control
// character of the same number, so that they survive a round trip.
char32_t FromWindows1252(unsigned char byte);

// The byte of a character in a single-byte set (any but kUtf8), or nothing.
std::optional<unsigned char> ByteFor(char32_t character, CharacterSet set);

}  // namespace zeb

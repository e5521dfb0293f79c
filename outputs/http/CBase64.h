// CBase64: standard base64 (RFC 4648), for HTTP authentication.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

class CBase64 {
 public:
  static std::string EncodeString(std::string_view bytes);
  static std::string EncodeByteArray(const std::vector<std::uint8_t>& bytes);
  // CR LF pairs and "=" are removed first; other characters outside the alphabet are passed over.
  static std::string DecodeToString(std::string_view text);
  static std::vector<std::uint8_t> DecodeToByteArray(std::string_view text);
};

}  // namespace zeb

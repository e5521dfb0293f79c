#include "platform/posix/IconvCodePages.h"

#include <iconv.h>

namespace zeb {
namespace {

// A conversion for as long as it is used.
class Conversion {
 public:
  explicit Conversion(const std::string& from) : handle_(iconv_open("UTF-8", from.c_str())) {}
  ~Conversion() {
    if (Given()) iconv_close(handle_);
  }
  Conversion(const Conversion&) = delete;
  Conversion& operator=(const Conversion&) = delete;
  bool Given() const { return handle_ != reinterpret_cast<iconv_t>(-1); }
  iconv_t Get() const { return handle_; }

 private:
  iconv_t handle_;
};

}  // namespace

std::optional<std::string> IconvCodePages::Decode(int codePage, std::string_view bytes) const {
  if (!IsKnownCodePage(codePage)) return std::nullopt;
  const Conversion conversion(codePage == kUtf8CodePage ? "UTF-8" : "CP" + std::to_string(codePage));
  if (!conversion.Given()) return std::nullopt;
  std::string input(bytes);
  // No character of these pages takes more than three bytes for each of its own.
  std::string output(bytes.size() * 4 + 16, '\0');
  char* from = input.data();
  char* to = output.data();
  std::size_t fromLeft = input.size();
  std::size_t toLeft = output.size();
  const auto failed = static_cast<std::size_t>(-1);
  if (iconv(conversion.Get(), &from, &fromLeft, &to, &toLeft) == failed || fromLeft > 0) return std::nullopt;
  // What it still holds back (a base letter that a mark might have followed, in 1255).
  if (iconv(conversion.Get(), nullptr, nullptr, &to, &toLeft) == failed) return std::nullopt;
  output.resize(output.size() - toLeft);
  return output;
}

}  // namespace zeb

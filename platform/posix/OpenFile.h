// OpenFile: what the implementations on POSIX files share: a descriptor that is closed in the end, and whole
// reads and writes on it.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>
#include <utility>

#include "platform/Result.h"

namespace zeb {

std::string ErrorText(int error);
// "cannot write '/x': No such file or directory"
Failure Cannot(const std::string& verb, const std::string& path, const std::string& why);

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { static_cast<void>(Close()); }

  bool IsOpen() const { return number_ >= 0; }
  int Number() const { return number_; }
  // A share may tell only now that the disk is full.
  bool Close();

 private:
  int number_ = -1;
};

// A name with a NUL inside would reach the system cut short, as another file's.
bool HasNul(const std::string& path);

std::int64_t Nanoseconds(const timespec& moment);

ssize_t ReadSome(const Descriptor& file, char* to, std::size_t size);
bool WriteAll(const Descriptor& file, std::string_view bytes);

}  // namespace zeb

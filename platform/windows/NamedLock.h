// NamedLock: what only one process of this machine has at a time. A process that ends lets go of it.
//
// It belongs to the thread that took it, which may take it again, also through another object.
#pragma once

#include <chrono>
#include <string>

namespace zeb {

class NamedLock {
 public:
  // All users' processes with the same name share the lock, whatever session they are in: a service and the
  // programs on the screen. Throws SettingsError when the system does not let this one in.
  explicit NamedLock(const std::string& name);
  NamedLock(const NamedLock&) = delete;
  ~NamedLock();

  bool Take(std::chrono::milliseconds patience);  // false: another one has it for so long
  void LetGo();                                   // once for each time it was taken

 private:
  void* mutex_;
};

}  // namespace zeb

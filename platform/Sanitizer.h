// What the address sanitizer must be told about stacks other than the thread's own. Nothing in other builds.
#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define ZEB_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZEB_ADDRESS_SANITIZER 1
#endif
#endif

#if defined(ZEB_ADDRESS_SANITIZER)
#include <sanitizer/asan_interface.h>
#include <sanitizer/common_interface_defs.h>
#include <sanitizer/lsan_interface.h>
#endif

namespace zeb {

#if defined(ZEB_ADDRESS_SANITIZER)

constexpr bool kAddressSanitizer = true;

// Before a switch to the stack [bottom, bottom + size). `save` keeps the sanitizer's data on the stack that
// is left; null when that stack is left for good.
inline void BeforeSwitch(void** save, const void* bottom, std::size_t size) {
  __sanitizer_start_switch_fiber(save, bottom, size);
}
// After a switch, on the stack arrived at, with what BeforeSwitch saved when it was left. Tells which stack
// was left.
inline void AfterSwitch(void* saved, const void** leftBottom, std::size_t* leftSize) {
  __sanitizer_finish_switch_fiber(saved, leftBottom, leftSize);
}
inline void ForgetStackMarks(const void* bottom, std::size_t size) {
  __asan_unpoison_memory_region(bottom, size);
}
// What a stack that is kept for good refers to is not lost.
inline void KeepStack(const void* bottom, std::size_t size) {
  __lsan_register_root_region(bottom, size);
}

#else

constexpr bool kAddressSanitizer = false;

inline void BeforeSwitch(void**, const void*, std::size_t) {}
inline void AfterSwitch(void*, const void**, std::size_t*) {}
inline void ForgetStackMarks(const void*, std::size_t) {}
inline void KeepStack(const void*, std::size_t) {}

#endif

}  // namespace zeb

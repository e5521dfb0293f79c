#include "text/Sha256Instructions.h"

#if defined(__x86_64__)
#include <cpuid.h>
#include <immintrin.h>

#include "text/Sha256.h"
#endif

namespace zeb {

#if defined(__x86_64__)

namespace {

constexpr unsigned int kSsse3 = 1u << 9, kSse41 = 1u << 19;  // of leaf 1, ecx
constexpr unsigned int kSha = 1u << 29;                      // of leaf 7, ebx

bool Look() {
  unsigned int a = 0, b = 0, c = 0, d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & kSsse3) == 0 || (c & kSse41) == 0) return false;
  return __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & kSha) != 0;
}

__m128i Load(const void* from) {
  return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

}  // namespace

bool HasSha256Instructions() {
  static const bool has = Look();
  return has;
}

// The instructions want the eight words as A B E F and C D G H, and do two rounds each.
__attribute__((target("sha,sse4.1,ssse3"))) void TakeSha256Blocks(std::array<std::uint32_t, 8>& state,
                                                                  const char* bytes, std::size_t blocks) {
  const __m128i swap = _mm_set_epi64x(0x0c0d0e0f08090a0bLL, 0x0405060700010203LL);
  const __m128i low = _mm_shuffle_epi32(Load(state.data()), 0xB1);
  const __m128i high = _mm_shuffle_epi32(Load(state.data() + 4), 0x1B);
  __m128i abef = _mm_alignr_epi8(low, high, 8);
  __m128i cdgh = _mm_blend_epi16(high, low, 0xF0);
  for (; blocks > 0; --blocks, bytes += 64) {
    const __m128i abefBefore = abef, cdghBefore = cdgh;
    __m128i w[4];
    for (int i = 0; i < 16; ++i) {
      __m128i& now = w[i % 4];
      if (i < 4) {
        now = _mm_shuffle_epi8(Load(bytes + 16 * i), swap);
      } else {
        const __m128i last = w[(i + 3) % 4];
        const __m128i older = _mm_sha256msg1_epu32(now, w[(i + 1) % 4]);
        now = _mm_sha256msg2_epu32(_mm_add_epi32(older, _mm_alignr_epi8(last, w[(i + 2) % 4], 4)), last);
      }
      const __m128i rounds = _mm_add_epi32(now, Load(kSha256Rounds.data() + 4 * i));
      cdgh = _mm_sha256rnds2_epu32(cdgh, abef, rounds);
      abef = _mm_sha256rnds2_epu32(abef, cdgh, _mm_shuffle_epi32(rounds, 0x0E));
    }
    abef = _mm_add_epi32(abef, abefBefore);
    cdgh = _mm_add_epi32(cdgh, cdghBefore);
  }
  const __m128i feba = _mm_shuffle_epi32(abef, 0x1B);
  const __m128i dchg = _mm_shuffle_epi32(cdgh, 0xB1);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(state.data()), _mm_blend_epi16(feba, dchg, 0xF0));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(state.data() + 4), _mm_alignr_epi8(dchg, feba, 8));
}

#else

bool HasSha256Instructions() {
  return false;
}

void TakeSha256Blocks(std::array<std::uint32_t, 8>&, const char*, std::size_t) {}

#endif

}  // namespace zeb

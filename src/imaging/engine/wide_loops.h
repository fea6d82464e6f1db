#pragma once

// Helpers for the byte loops of the neighbourhood and geometric filters. The loops are
// written plainly and left to the compiler's vectoriser; TOLMAR_WIDE builds each one twice,
// for AVX2 and for the baseline, and the loader picks the one the CPU runs. Integer loops
// give the same bytes either way; float loops too, since the engine never contracts a
// multiply and an add.

#include "imaging/engine/pixel_math.h"

#include <cstdint>

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__)) && defined(__linux__)
#define TOLMAR_WIDE __attribute__((target_clones("avx2", "default")))
#else
#define TOLMAR_WIDE
#endif

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define TOLMAR_HAVE_AVX2_LOOPS 1
#include <immintrin.h>
#endif

namespace tolmar::imaging {

// Whether hand-written AVX2 loops may run; a filter also asks WideVectorsAllowed().
inline bool cpuHasAvx2()
{
#ifdef TOLMAR_HAVE_AVX2_LOOPS
    static const bool yes = __builtin_cpu_supports("avx2");
    return yes;
#else
    return false;
#endif
}

// The same with fused multiply-add, for float loops whose results are checked against a
// bound rather than required to round alike.
inline bool cpuHasAvx2Fma()
{
#ifdef TOLMAR_HAVE_AVX2_LOOPS
    static const bool yes = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    return yes;
#else
    return false;
#endif
}

// Loops that compute all four bytes of a pixel put the spare byte back afterwards.
inline void restoreSpare(const uint8_t* s, uint8_t* d, int32_t n)
{
    for (int32_t i = 0; i < n; ++i)
        storePixel(d + i * 4,
                   (loadPixel(d + i * 4) & ~kSpareMask) | (loadPixel(s + i * 4) & kSpareMask));
}

// Pixels are handled in chunks so that the spare byte is put back while the chunk is still
// in the first-level cache.
constexpr int32_t kChunkPixels = 256;

template <class RowFn>
inline void inChunks(const uint8_t* s, uint8_t* d, int32_t n, RowFn&& fn)
{
    for (int32_t i = 0; i < n; i += kChunkPixels) {
        const int32_t m = n - i < kChunkPixels ? n - i : kChunkPixels;
        fn(s + i * 4, d + i * 4, m);
        restoreSpare(s + i * 4, d + i * 4, m);
    }
}

} // namespace tolmar::imaging

#include "rastergraphics/WidePixelOps.h"

#include "rastergraphics/WideLoops.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tallyforge {

#if defined(__x86_64__)

namespace {

constexpr int kPixels = 8; // in a register

WIDE_INLINED __m256i load(const uint32_t* pixels) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pixels));
}

WIDE_INLINED void store(uint32_t* pixels, __m256i eight) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels), eight);
}

/// Factors for eight pixels, one for each channel, as 16-bit numbers: pixels 0, 1, 4, 5, then 2, 3, 6, 7.
struct Factors {
    __m256i low, high;
};

WIDE_INLINED Factors same(int factor) {
    __m256i all = _mm256_set1_epi16(int16_t(factor));
    return {all, all};
}

/// The top byte of each pixel.
WIDE_INLINED Factors alphasOf(__m256i pixels) {
    const __m256i low = _mm256_setr_epi8(3, -1, 3, -1, 3, -1, 3, -1, 7, -1, 7, -1, 7, -1, 7, -1, 3, -1, 3, -1,
                                         3, -1, 3, -1, 7, -1, 7, -1, 7, -1, 7, -1);
    const __m256i high = _mm256_setr_epi8(11, -1, 11, -1, 11, -1, 11, -1, 15, -1, 15, -1, 15, -1, 15, -1, 11,
                                          -1, 11, -1, 11, -1, 11, -1, 15, -1, 15, -1, 15, -1, 15, -1);
    return {_mm256_shuffle_epi8(pixels, low), _mm256_shuffle_epi8(pixels, high)};
}

/// Every channel times its factor / 255, rounded to nearest.
WIDE_INLINED __m256i scaled(__m256i pixels, const Factors& by) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i half = _mm256_set1_epi16(128);
    __m256i low = _mm256_add_epi16(_mm256_mullo_epi16(_mm256_unpacklo_epi8(pixels, zero), by.low), half);
    __m256i high = _mm256_add_epi16(_mm256_mullo_epi16(_mm256_unpackhi_epi8(pixels, zero), by.high), half);
    // (v + (v >> 8)) >> 8 is (v + v / 256) / 256 cut off once, since what is cut off first is less than 1.
    const __m256i divide = _mm256_set1_epi16(257);
    return _mm256_packus_epi16(_mm256_mulhi_epu16(low, divide), _mm256_mulhi_epu16(high, divide));
}

WIDE_INLINED __m256i over(__m256i below, __m256i source) {
    __m256i rest = _mm256_xor_si256(source, _mm256_set1_epi32(-1));
    return _mm256_add_epi8(source, scaled(below, alphasOf(rest)));
}

WIDE_INLINED bool allOpaque(__m256i pixels) {
    // Only then every bit of the alphas is set.
    return _mm256_testc_si256(pixels, _mm256_set1_epi32(int32_t(0xff000000))) != 0;
}

WIDE_INLINED bool nothing(__m256i pixels) {
    return _mm256_testz_si256(pixels, pixels) != 0;
}

/// Of eight pixels, as factors in their top bytes.
WIDE_INLINED __m256i coverageOf(uint64_t eight) {
    return _mm256_slli_epi32(_mm256_cvtepu8_epi32(_mm_cvtsi64_si128(int64_t(eight))), 24);
}

WIDE_INLINED uint64_t eightBytes(const uint8_t* bytes) {
    uint64_t eight;
    __builtin_memcpy(&eight, bytes, sizeof eight);
    return eight;
}

WIDE int fillWide(uint32_t* pixels, int count, uint32_t pixel) {
    const __m256i eight = _mm256_set1_epi32(int32_t(pixel));
    int i = 0;
    if (count >= 2 * kPixels) {
        // Stores that do not straddle two lines of the cache are faster by a third.
        store(pixels, eight);
        i = int((32 - (reinterpret_cast<uintptr_t>(pixels) & 31)) / sizeof(uint32_t));
    }
    for (; i + 4 * kPixels <= count; i += 4 * kPixels) {
        uint32_t* at = pixels + i;
        for (int k = 0; k < 4; ++k, at += kPixels)
            store(at, eight);
    }
    for (; i + kPixels <= count; i += kPixels)
        store(pixels + i, eight);
    return i;
}

WIDE int inkOverWide(uint32_t* pixels, int count, const Ink& ink) {
    const __m256i source = _mm256_set1_epi32(int32_t(ink.pixel));
    const Factors rest = same(int(255 - (ink.pixel >> 24)));
    int i = 0;
    for (; i + kPixels <= count; i += kPixels)
        store(pixels + i, _mm256_add_epi8(source, scaled(load(pixels + i), rest)));
    return i;
}

/// What is left of a run, less than a register: the pixels before the end of the mask count.
struct Rest {
    __m256i mask;
    uint64_t coverage; ///< 0 for those that do not count
};

WIDE_INLINED Rest restOf(int count, const uint8_t* coverage) {
    const __m256i places = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
    Rest rest{_mm256_cmpgt_epi32(_mm256_set1_epi32(count), places), 0};
    if (coverage) __builtin_memcpy(&rest.coverage, coverage, size_t(count));
    return rest;
}

WIDE_INLINED __m256i load(const uint32_t* pixels, const Rest& rest) {
    return _mm256_maskload_epi32(reinterpret_cast<const int*>(pixels), rest.mask);
}

WIDE_INLINED void store(uint32_t* pixels, __m256i eight, const Rest& rest) {
    _mm256_maskstore_epi32(reinterpret_cast<int*>(pixels), rest.mask, eight);
}

WIDE int inkOverWide(uint32_t* pixels, int count, const Ink& ink, const uint8_t* coverage) {
    const __m256i source = _mm256_set1_epi32(int32_t(ink.pixel));
    const bool opaque = ink.opaque();
    int i = 0;
    for (; i + kPixels <= count; i += kPixels) {
        uint64_t eight = eightBytes(coverage + i);
        if (eight == 0) continue;
        if (opaque && eight == ~uint64_t(0))
            store(pixels + i, source);
        else
            store(pixels + i, over(load(pixels + i), scaled(source, alphasOf(coverageOf(eight)))));
    }
    if (i == count) return count;
    const Rest rest = restOf(count - i, coverage + i);
    __m256i painted = scaled(source, alphasOf(coverageOf(rest.coverage)));
    store(pixels + i, over(load(pixels + i, rest), painted), rest);
    return count;
}

WIDE int inkAtopWide(uint32_t* pixels, int count, const Ink& ink) {
    // Each channel beside the alpha of its pixel; the alpha itself beside an alpha that counts for nothing.
    const __m256i beside[4] = {
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, -1, 3, -1, 1, -1, 3, -1, 2, -1, 3, -1, 3, -1, 3, -1)),
        _mm256_broadcastsi128_si256(_mm_setr_epi8(4, -1, 7, -1, 5, -1, 7, -1, 6, -1, 7, -1, 7, -1, 7, -1)),
        _mm256_broadcastsi128_si256(
            _mm_setr_epi8(8, -1, 11, -1, 9, -1, 11, -1, 10, -1, 11, -1, 11, -1, 11, -1)),
        _mm256_broadcastsi128_si256(
            _mm_setr_epi8(12, -1, 15, -1, 13, -1, 15, -1, 14, -1, 15, -1, 15, -1, 15, -1))};
    const auto one = int16_t(kInkOne);
    const auto rest = int16_t(kInkOne - ink.weight[3]);
    const __m256i weights = _mm256_broadcastsi128_si256(_mm_setr_epi16(
        rest, int16_t(ink.weight[0]), rest, int16_t(ink.weight[1]), rest, int16_t(ink.weight[2]), one, 0));
    const __m256i half = _mm256_set1_epi32(kInkOne / 2);
    int i = 0;
    for (; i + kPixels <= count; i += kPixels) {
        __m256i below = load(pixels + i);
        __m256i sums[4];
        for (int k = 0; k < 4; ++k) {
            sums[k] = _mm256_madd_epi16(_mm256_shuffle_epi8(below, beside[k]), weights);
            sums[k] = _mm256_srli_epi32(_mm256_add_epi32(sums[k], half), kInkBits);
        }
        store(pixels + i, _mm256_packus_epi16(_mm256_packs_epi32(sums[0], sums[1]),
                                              _mm256_packs_epi32(sums[2], sums[3])));
    }
    return i;
}

WIDE int pixelsOverWide(uint32_t* pixels, const uint32_t* source, int count, int alpha,
                        const uint8_t* coverage) {
    const Factors fade = same(alpha);
    int i = 0;
    for (; i + kPixels <= count; i += kPixels) {
        __m256i eight = load(source + i);
        if (nothing(eight)) continue;
        if (alpha != 255) eight = scaled(eight, fade);
        if (coverage) {
            uint64_t covered = eightBytes(coverage + i);
            if (covered == 0) continue;
            eight = scaled(eight, alphasOf(coverageOf(covered)));
        }
        store(pixels + i, allOpaque(eight) ? eight : over(load(pixels + i), eight));
    }
    if (i == count) return count;
    const Rest rest = restOf(count - i, coverage ? coverage + i : nullptr);
    __m256i last = load(source + i, rest);
    if (alpha != 255) last = scaled(last, fade);
    if (coverage) last = scaled(last, alphasOf(coverageOf(rest.coverage)));
    store(pixels + i, over(load(pixels + i, rest), last), rest);
    return count;
}

} // namespace

int WideFill(uint32_t* pixels, int count, uint32_t pixel) {
    return WideRegisters() ? fillWide(pixels, count, pixel) : 0;
}

int WideInkOver(uint32_t* pixels, int count, const Ink& ink) {
    return WideRegisters() ? inkOverWide(pixels, count, ink) : 0;
}

int WideInkOver(uint32_t* pixels, int count, const Ink& ink, const uint8_t* coverage) {
    return WideRegisters() ? inkOverWide(pixels, count, ink, coverage) : 0;
}

int WideInkAtop(uint32_t* pixels, int count, const Ink& ink) {
    return WideRegisters() ? inkAtopWide(pixels, count, ink) : 0;
}

int WidePixelsOver(uint32_t* pixels, const uint32_t* source, int count, int alpha, const uint8_t* coverage) {
    return WideRegisters() ? pixelsOverWide(pixels, source, count, alpha, coverage) : 0;
}

#else

int WideFill(uint32_t*, int, uint32_t) {
    return 0;
}
int WideInkOver(uint32_t*, int, const Ink&) {
    return 0;
}
int WideInkOver(uint32_t*, int, const Ink&, const uint8_t*) {
    return 0;
}
int WideInkAtop(uint32_t*, int, const Ink&) {
    return 0;
}
int WidePixelsOver(uint32_t*, const uint32_t*, int, int, const uint8_t*) {
    return 0;
}

#endif

} // namespace tallyforge

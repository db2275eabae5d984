#include "rastergraphics/SampleGrid.h"

#include "rastergraphics/WideLoops.h"

#include <algorithm>
#include <cmath>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tallyforge {

namespace {

/// Two channels at a time, each with 8 free bits above it: from + (to - from) x amount / 256.
uint32_t between(uint32_t from, uint32_t to, uint32_t amount) {
    constexpr uint32_t kChannels = 0x00ff00ff;
    uint32_t low = (from & kChannels) * (256 - amount) + (to & kChannels) * amount + 0x00800080;
    uint32_t high =
        ((from >> 8) & kChannels) * (256 - amount) + ((to >> 8) & kChannels) * amount + 0x00800080;
    return ((low >> 8) & kChannels) | (high & ~kChannels);
}

/// Places on the image in units of 1/65536 pixel, made ready for splitting: the rounding to the nearest of
/// the 256 steps between pixels is added.
constexpr int kPlaceBits = 16;
constexpr int64_t kStepRounding = 128;
/// With so many more bits places are added up exactly, so that a pixel's place is the same wherever a line
/// begins.
constexpr int kExactBits = 16;
constexpr double kExactOne = double(int64_t(1) << (kPlaceBits + kExactBits));

struct ExactPlace {
    int64_t x, y;
};

int64_t placeOf(int64_t exact) {
    return (exact >> kExactBits) + kStepRounding;
}

#if defined(__x86_64__)
/// from + (to - from) x amount / 256 in every 16 bits.
WIDE_INLINED __m256i wideBetween(__m256i from, __m256i to, __m256i amount) {
    __m256i way = _mm256_mullo_epi16(_mm256_sub_epi16(to, from), amount);
    __m256i start = _mm256_add_epi16(_mm256_slli_epi16(from, 8), _mm256_set1_epi16(128));
    return _mm256_srli_epi16(_mm256_add_epi16(start, way), 8);
}

/// Two neighbouring pixels at each of four places. Only loads and blends: shuffles would be the bottleneck.
WIDE_INLINED __m256i twoColumns(const uint32_t* pixels, const int64_t* offset) {
    __m256i at[4];
    for (int k = 0; k < 4; ++k) {
        long long two;
        __builtin_memcpy(&two, pixels + offset[k], sizeof two);
        at[k] = _mm256_set1_epi64x(two);
    }
    return _mm256_blend_epi32(_mm256_blend_epi32(at[0], at[1], 0b00001100),
                              _mm256_blend_epi32(at[2], at[3], 0b11000000), 0b11110000);
}

/// The beginning of sampleInside's work: four places at a time, each in 64 bits. Returns how many were done.
WIDE int sampleInsideWide(const CGImage& image, ExactPlace at, ExactPlace step, int count, uint32_t* result) {
    const uint32_t* upper = image.row(0);
    const uint32_t* lower = upper + image.width();
    const __m256i width = _mm256_set1_epi64x(image.width());
    const __m256i even = _mm256_set1_epi32(0x00ff00ff);
    // The step of 256 between two pixels, for all channels.
    const __m256i spread = _mm256_setr_epi8(3, -1, 3, -1, 3, -1, 3, -1, 11, -1, 11, -1, 11, -1, 11, -1, 3, -1,
                                            3, -1, 3, -1, 3, -1, 11, -1, 11, -1, 11, -1, 11, -1);
    const __m256i lowHalves = _mm256_setr_epi32(0, 2, 4, 6, 0, 2, 4, 6);
    constexpr int64_t kRounding = kStepRounding << kExactBits;
    at = {at.x + kRounding, at.y + kRounding};
    __m256i x = _mm256_setr_epi64x(at.x, at.x + step.x, at.x + 2 * step.x, at.x + 3 * step.x);
    __m256i y = _mm256_setr_epi64x(at.y, at.y + step.y, at.y + 2 * step.y, at.y + 3 * step.y);
    const __m256i stepX = _mm256_set1_epi64x(4 * step.x);
    const __m256i stepY = _mm256_set1_epi64x(4 * step.y);
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        static_assert(kPlaceBits + kExactBits == 32);
        __m256i rows = _mm256_mul_epu32(_mm256_srli_epi64(y, 32), width);
        alignas(32) int64_t offset[4];
        _mm256_store_si256(reinterpret_cast<__m256i*>(offset),
                           _mm256_add_epi64(rows, _mm256_srli_epi64(x, 32)));
        __m256i fx = _mm256_shuffle_epi8(x, spread);
        __m256i fy = _mm256_shuffle_epi8(y, spread);
        x = _mm256_add_epi64(x, stepX);
        y = _mm256_add_epi64(y, stepY);
        __m256i above = twoColumns(upper, offset);
        __m256i below = twoColumns(lower, offset);
        // Blue and red, then green and alpha, of the left column in the low half and of the right in the
        // high.
        __m256i evens = wideBetween(_mm256_and_si256(above, even), _mm256_and_si256(below, even), fy);
        __m256i odds = wideBetween(_mm256_srli_epi16(above, 8), _mm256_srli_epi16(below, 8), fy);
        __m256i left = _mm256_blend_epi32(evens, _mm256_slli_epi64(odds, 32), 0b10101010);
        __m256i right = _mm256_blend_epi32(_mm256_srli_epi64(evens, 32), odds, 0b10101010);
        __m256i four = wideBetween(left, right, fx);
        four = _mm256_or_si256(four, _mm256_srli_epi64(four, 24));
        four = _mm256_permutevar8x32_epi32(four, lowHalves);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(result + i), _mm256_castsi256_si128(four));
    }
    return i;
}
#endif

/// The part of a line whose places all have four neighbours.
void sampleInside(const CGImage& image, ExactPlace at, ExactPlace step, int count, uint32_t* result) {
    const uint32_t* pixels = image.row(0);
    const ptrdiff_t width = image.width();
    int i = 0;
#if defined(__x86_64__)
    if (WideRegisters()) i = sampleInsideWide(image, at, step, count, result);
#endif
    at = {at.x + i * step.x, at.y + i * step.y};
    for (; i < count; ++i, at.x += step.x, at.y += step.y) {
        auto x = int32_t(placeOf(at.x));
        auto y = int32_t(placeOf(at.y));
        const uint32_t* upper = pixels + (y >> kPlaceBits) * width + (x >> kPlaceBits);
        const uint32_t* lower = upper + width;
        int fx = (x >> 8) & 255;
        int fy = (y >> 8) & 255;
#if defined(__x86_64__)
        const __m128i zero = _mm_setzero_si128();
        const __m128i half = _mm_set1_epi16(128);
        __m128i above = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(upper)), zero);
        __m128i below = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(lower)), zero);
        __m128i column = _mm_add_epi16(_mm_mullo_epi16(above, _mm_set1_epi16(int16_t(256 - fy))),
                                       _mm_mullo_epi16(below, _mm_set1_epi16(int16_t(fy))));
        column = _mm_srli_epi16(_mm_add_epi16(column, half), 8);
        __m128i parts = _mm_unpacklo_epi64(_mm_set1_epi16(int16_t(256 - fx)), _mm_set1_epi16(int16_t(fx)));
        column = _mm_mullo_epi16(column, parts);
        column = _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(column, _mm_srli_si128(column, 8)), half), 8);
        result[i] = uint32_t(_mm_cvtsi128_si32(_mm_packus_epi16(column, column)));
#else
        result[i] = between(between(upper[0], lower[0], uint32_t(fy)),
                            between(upper[1], lower[1], uint32_t(fy)), uint32_t(fx));
#endif
    }
}

/// Anywhere, also on the border and beyond; the same as above where both will do.
uint32_t sampleAt(const CGImage& image, int64_t x, int64_t y) {
    auto hold = [](int64_t place, int length) {
        return int32_t(std::clamp<int64_t>(place, 0, int64_t(length - 1) << kPlaceBits));
    };
    int32_t heldX = hold(x, image.width());
    int32_t heldY = hold(y, image.height());
    int column = std::max(0, std::min(heldX >> kPlaceBits, image.width() - 2));
    int row = std::max(0, std::min(heldY >> kPlaceBits, image.height() - 2));
    auto fx = uint32_t((heldX - (column << kPlaceBits)) >> 8);
    auto fy = uint32_t((heldY - (row << kPlaceBits)) >> 8);
    const uint32_t* upper = image.row(row) + column;
    const uint32_t* lower = upper + (image.height() > 1 ? image.width() : 0);
    int next = image.width() > 1 ? 1 : 0;
    return between(between(upper[0], lower[0], fy), between(upper[next], lower[next], fy), fx);
}

/// The first step from the start at which a place is at or above the limit, held to 0..count. The pace is
/// positive, and `perStep` is 1 / pace as near as can be told.
int firstStepAt(int64_t limit, int64_t start, int64_t pace, double perStep, int count) {
    // The exact one is at most a step away from the estimate.
    auto step = int64_t(std::clamp(double(limit - start) * perStep, 0.0, double(count)));
    while (step > 0 && start + (step - 1) * pace >= limit)
        --step;
    while (step < count && start + step * pace < limit)
        ++step;
    return int(step);
}

/// The steps whose places are at or above `low` and below `limit`.
SampleGrid::Steps stepsWithin(int64_t start, int64_t pace, double perStep, int64_t low, int64_t limit,
                              int count) {
    if (pace < 0) return stepsWithin(-start, -pace, -perStep, 1 - limit, 1 - low, count);
    if (pace == 0) return {0, start >= low && start < limit ? count : 0};
    return {firstStepAt(low, start, pace, perStep, count), firstStepAt(limit, start, pace, perStep, count)};
}

} // namespace

SampleGrid::SampleGrid(const CGImage& image, const CGAffineTransform& pixelsToImage)
    : image_(image), t_(pixelsToImage) {
    // From the middle of a pixel, and between the middles of the image's pixels.
    t_.tx += 0.5 * (t_.a + t_.c) - 0.5;
    t_.ty += 0.5 * (t_.b + t_.d) - 0.5;
    constexpr double kSteepest = 1 << 12;
    constexpr double kFarthest = 1 << 28;
    exact_ = std::fabs(t_.a) < kSteepest && std::fabs(t_.b) < kSteepest && std::fabs(t_.c) < kSteepest &&
             std::fabs(t_.d) < kSteepest && std::fabs(t_.tx) < kFarthest && std::fabs(t_.ty) < kFarthest;
    if (!exact_) return;
    auto fixed = [](double v) { return int64_t(std::llround(v * kExactOne)); };
    a_ = fixed(t_.a);
    b_ = fixed(t_.b);
    c_ = fixed(t_.c);
    d_ = fixed(t_.d);
    tx_ = fixed(t_.tx);
    ty_ = fixed(t_.ty);
    perStepX_ = 1 / double(a_);
    perStepY_ = 1 / double(b_);
}

SampleGrid::Steps SampleGrid::within(int64_t x, int64_t y, const PixelRect& part, int count) const {
    // A place belongs to the pixel at its left, and the rounding to the nearest step is yet to be added.
    const auto exact = [](int pixel) {
        return ((int64_t(pixel) << kPlaceBits) - kStepRounding) * (int64_t(1) << kExactBits);
    };
    const Steps across = stepsWithin(x, a_, perStepX_, exact(part.left), exact(part.right - 1), count);
    const Steps down = stepsWithin(y, b_, perStepY_, exact(part.top), exact(part.bottom - 1), count);
    return {std::max(across.begin, down.begin), std::min(across.end, down.end)};
}

bool SampleGrid::lineInside(int y, int x, int count, const PixelRect& part, Steps& steps,
                            std::vector<uint32_t>& result) const {
    const ExactPlace start{tx_ + x * a_ + y * c_, ty_ + x * b_ + y * d_};
    steps = within(start.x, start.y, part, count);
    if (steps.end <= steps.begin) return false;
    const int length = steps.end - steps.begin;
    if (result.size() < size_t(length)) result.resize(size_t(length));
    sampleInside(image_, {start.x + steps.begin * a_, start.y + steps.begin * b_}, {a_, b_}, length,
                 result.data());
    return true;
}

void SampleGrid::line(int y, int x, int count, uint32_t* result) const {
    if (!exact_) return lineFarOut(y, x, count, result);
    ExactPlace start{tx_ + x * a_ + y * c_, ty_ + x * b_ + y * d_};
    // Where nothing can reach over the border it goes without looking.
    const Steps inside = within(start.x, start.y, {0, 0, image_.width(), image_.height()}, count);
    const int first = inside.end > inside.begin ? inside.begin : count;
    const int last = inside.end > inside.begin ? inside.end : count;
    auto anywhere = [&](int from, int to) {
        for (int i = from; i < to; ++i)
            result[i] = sampleAt(image_, placeOf(start.x + i * a_), placeOf(start.y + i * b_));
    };
    anywhere(0, first);
    sampleInside(image_, {start.x + first * a_, start.y + first * b_}, {a_, b_}, last - first,
                 result + first);
    anywhere(last, count);
}

void SampleGrid::lineFarOut(int y, int x, int count, uint32_t* result) const {
    // Written so that a number that is no number counts as 0.
    auto place = [](double v, int length) {
        v = v > 0 ? std::min(v, double(length - 1)) : 0;
        return int64_t(v * (1 << kPlaceBits)) + kStepRounding;
    };
    for (int i = 0; i < count; ++i)
        result[i] = sampleAt(image_, place(t_.tx + (x + i) * t_.a + y * t_.c, image_.width()),
                             place(t_.ty + (x + i) * t_.b + y * t_.d, image_.height()));
}

} // namespace tallyforge

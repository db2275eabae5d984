#include "rastergraphics/Resample.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tallyforge {

namespace {

/// Weights are in units of 1/16384; between the two passes channels are kept in units of 1/128.
constexpr int kWeightBits = 14;
constexpr int kWeightOne = 1 << kWeightBits;
constexpr int kKeptBits = 7;
/// Cutting off after it is added rounds numbers that are not negative, without a call.
constexpr double kToNearest = 0.5;

/// For every result pixel along one side, which source pixels make it, and by how much each.
struct Filter {
    struct Run {
        int first;  ///< source pixel
        int count;  ///< of source pixels, even: pixels are summed in pairs, the last may be one too many
        int offset; ///< of its weights
    };
    std::vector<Run> runs;
    std::vector<int16_t> weights;
    bool pairsOnly = true; ///< every run is of two
};

/// Rounds the shares so that they add up to the rounded total: then an even colour stays what it is.
void appendRounded(std::vector<int16_t>& weights, const std::vector<double>& shares) {
    double exact = 0;
    int given = 0;
    for (double share : shares) {
        exact += share * kWeightOne;
        int upTo = int(exact + kToNearest);
        weights.push_back(int16_t(upTo - given));
        given = upTo;
    }
}

/// Result pixels from `begin` to `end`; the source of `length` pixels lies over `low` to `high`.
Filter makeFilter(int length, double low, double high, int begin, int end) {
    Filter filter;
    std::vector<double> shares;
    double perPixel = length / (high - low); // source pixels that a result pixel spans
    for (int i = begin; i < end; ++i) {
        double from = std::max(double(i), low);
        double to = std::min(double(i + 1), high);
        double covered = std::max(0.0, to - from);
        int first = 0;
        shares.clear();
        if (perPixel > 1) {
            double s0 = std::clamp((from - low) * perPixel, 0.0, double(length));
            double s1 = std::clamp((to - low) * perPixel, 0.0, double(length));
            first = std::min(int(s0), length - 1);
            int last = std::clamp(int(std::ceil(s1)) - 1, first, length - 1);
            for (int s = first; s <= last; ++s) {
                double overlap = std::min(double(s + 1), s1) - std::max(double(s), s0);
                shares.push_back(std::max(0.0, overlap) / perPixel);
            }
        } else {
            double position = std::clamp((i + 0.5 - low) * perPixel - 0.5, 0.0, double(length - 1));
            first = std::min(int(position), std::max(0, length - 2));
            double second = position - first;
            shares.push_back(covered * (1 - second));
            if (length > 1) shares.push_back(covered * second);
        }
        // Shares too small to count need not be summed.
        constexpr double kNothing = 0.25 / kWeightOne;
        while (shares.size() > 1 && shares.back() < kNothing)
            shares.pop_back();
        size_t skipped = 0;
        while (skipped + 1 < shares.size() && shares[skipped] < kNothing)
            ++skipped;
        shares.erase(shares.begin(), shares.begin() + long(skipped));
        int offset = int(filter.weights.size());
        appendRounded(filter.weights, shares);
        if (shares.size() % 2 != 0) filter.weights.push_back(0);
        filter.runs.push_back({first + int(skipped), int(filter.weights.size()) - offset, offset});
        filter.pairsOnly = filter.pairsOnly && filter.runs.back().count == 2;
    }
    return filter;
}

constexpr int kRowShift = kWeightBits - kKeptBits;
constexpr int kColumnShift = kWeightBits + kKeptBits;

#if defined(__x86_64__)
bool wideRegisters() {
    static const bool known = __builtin_cpu_supports("avx2");
    return known;
}

/// The beginning of sumRows' work, as far as whole registers go. Returns how many channels are done.
__attribute__((target("avx2"))) int sumRowsWide(int16_t* kept, const uint8_t* const* rows,
                                                const int16_t* weights, int count, int channels) {
    const __m256i half = _mm256_set1_epi32(1 << (kRowShift - 1));
    int i = 0;
    for (; i + 16 <= channels; i += 16) {
        __m256i low = half;
        __m256i high = half;
        for (int row = 0; row < count; row += 2) {
            int32_t pair;
            std::memcpy(&pair, weights + row, sizeof pair);
            __m256i weight = _mm256_set1_epi32(pair);
            __m128i upper = _mm_loadu_si128(reinterpret_cast<const __m128i*>(rows[row] + i));
            __m128i lower = _mm_loadu_si128(reinterpret_cast<const __m128i*>(rows[row + 1] + i));
            __m256i first = _mm256_cvtepu8_epi16(_mm_unpacklo_epi8(upper, lower));
            __m256i second = _mm256_cvtepu8_epi16(_mm_unpackhi_epi8(upper, lower));
            low = _mm256_add_epi32(low, _mm256_madd_epi16(first, weight));
            high = _mm256_add_epi32(high, _mm256_madd_epi16(second, weight));
        }
        __m256i packed =
            _mm256_packs_epi32(_mm256_srai_epi32(low, kRowShift), _mm256_srai_epi32(high, kRowShift));
        packed = _mm256_permute4x64_epi64(packed, 0b11011000);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(kept + i), packed);
    }
    return i;
}

/// The beginning of sumColumns' work when every pixel is made of two. Returns how many pixels are done.
__attribute__((target("avx2"))) int sumPairsWide(uint32_t* result, const int16_t* kept, int keptFirst,
                                                 const Filter& filter) {
    const __m256i half = _mm256_set1_epi32(1 << (kColumnShift - 1));
    // Of two neighbouring pixels, the same channels side by side.
    const __m256i interleave = _mm256_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15, 0, 1, 8,
                                                9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
    const __m256i spread01 = _mm256_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1);
    const __m256i spread23 = _mm256_setr_epi32(2, 2, 2, 2, 3, 3, 3, 3);
    const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 0, 4, 1, 5);
    const int16_t* base = kept - ptrdiff_t(keptFirst) * 4;
    auto runs = int(filter.runs.size());
    int i = 0;
    for (; i + 4 <= runs; i += 4) {
        const Filter::Run* run = filter.runs.data() + i;
        const __m128i* pixels[4];
        for (int k = 0; k < 4; ++k)
            pixels[k] = reinterpret_cast<const __m128i*>(base + ptrdiff_t(run[k].first) * 4);
        __m256i two01 = _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(pixels[0])),
                                                _mm_loadu_si128(pixels[1]), 1);
        __m256i two23 = _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(pixels[2])),
                                                _mm_loadu_si128(pixels[3]), 1);
        __m256i weights = _mm256_castsi128_si256(
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(filter.weights.data() + run[0].offset)));
        __m256i sum01 = _mm256_madd_epi16(_mm256_shuffle_epi8(two01, interleave),
                                          _mm256_permutevar8x32_epi32(weights, spread01));
        __m256i sum23 = _mm256_madd_epi16(_mm256_shuffle_epi8(two23, interleave),
                                          _mm256_permutevar8x32_epi32(weights, spread23));
        sum01 = _mm256_srai_epi32(_mm256_add_epi32(sum01, half), kColumnShift);
        sum23 = _mm256_srai_epi32(_mm256_add_epi32(sum23, half), kColumnShift);
        __m256i words = _mm256_packs_epi32(sum01, sum23); // pixels 0 and 2, then 1 and 3
        __m256i bytes = _mm256_packus_epi16(words, words);
        bytes = _mm256_permutevar8x32_epi32(bytes, order);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(result + i), _mm256_castsi256_si128(bytes));
    }
    return i;
}
#endif

/// Sums up every channel of the rows by their weights; `count` of both is even.
void sumRows(int16_t* kept, const uint8_t* const* rows, const int16_t* weights, int count, int channels) {
    int i = 0;
#if defined(__x86_64__)
    if (wideRegisters()) i = sumRowsWide(kept, rows, weights, count, channels);
    const __m128i zero = _mm_setzero_si128();
    const __m128i half = _mm_set1_epi32(1 << (kRowShift - 1));
    for (; i + 8 <= channels; i += 8) {
        __m128i low = half;
        __m128i high = half;
        for (int row = 0; row < count; row += 2) {
            int32_t pair;
            std::memcpy(&pair, weights + row, sizeof pair);
            __m128i weight = _mm_set1_epi32(pair);
            __m128i upper = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(rows[row] + i));
            __m128i lower = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(rows[row + 1] + i));
            __m128i both = _mm_unpacklo_epi8(upper, lower);
            low = _mm_add_epi32(low, _mm_madd_epi16(_mm_unpacklo_epi8(both, zero), weight));
            high = _mm_add_epi32(high, _mm_madd_epi16(_mm_unpackhi_epi8(both, zero), weight));
        }
        __m128i packed = _mm_packs_epi32(_mm_srai_epi32(low, kRowShift), _mm_srai_epi32(high, kRowShift));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(kept + i), packed);
    }
#endif
    for (; i < channels; ++i) {
        int32_t sum = 1 << (kRowShift - 1);
        for (int row = 0; row < count; ++row)
            sum += weights[row] * rows[row][i];
        kept[i] = int16_t(sum >> kRowShift);
    }
}

/// Sums up the pixels of a kept row; one pixel more than the filter reaches may be read.
void sumColumns(uint32_t* result, const int16_t* kept, int keptFirst, const Filter& filter) {
    size_t done = 0;
#if defined(__x86_64__)
    if (filter.pairsOnly && wideRegisters()) done = size_t(sumPairsWide(result, kept, keptFirst, filter));
#endif
    result += done;
    for (size_t i = done; i < filter.runs.size(); ++i) {
        const Filter::Run& run = filter.runs[i];
        const int16_t* pixel = kept + ptrdiff_t(run.first - keptFirst) * 4;
        const int16_t* weight = filter.weights.data() + run.offset;
#if defined(__x86_64__)
        __m128i sum = _mm_set1_epi32(1 << (kColumnShift - 1));
        for (int s = 0; s < run.count; s += 2, pixel += 8) {
            int32_t pair;
            std::memcpy(&pair, weight + s, sizeof pair);
            __m128i two = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixel));
            __m128i interleaved = _mm_unpacklo_epi16(two, _mm_srli_si128(two, 8));
            sum = _mm_add_epi32(sum, _mm_madd_epi16(interleaved, _mm_set1_epi32(pair)));
        }
        __m128i words = _mm_packs_epi32(_mm_srai_epi32(sum, kColumnShift), sum);
        *result++ = uint32_t(_mm_cvtsi128_si32(_mm_packus_epi16(words, words)));
#else
        int32_t sums[4] = {};
        for (int s = 0; s < run.count; ++s, pixel += 4) {
            for (int channel = 0; channel < 4; ++channel)
                sums[channel] += weight[s] * pixel[channel];
        }
        uint32_t value = 0;
        for (int channel = 0; channel < 4; ++channel)
            value |= uint32_t((sums[channel] + (1 << (kColumnShift - 1))) >> kColumnShift) << (8 * channel);
        *result++ = value;
#endif
    }
}

} // namespace

void Stretch(const CGImage& image, const StretchTarget& target, const PixelRect& area,
             std::vector<uint32_t>& result) {
    result.resize(size_t(area.width()) * size_t(area.height()));
    if (result.empty()) return;
    Filter columns = makeFilter(image.width(), target.left, target.right, area.left, area.right);
    Filter rows = makeFilter(image.height(), target.top, target.bottom, area.top, area.bottom);

    int firstColumn = columns.runs.front().first;
    int lastColumn = std::min(columns.runs.back().first + columns.runs.back().count, image.width());
    int channels = (lastColumn - firstColumn) * 4;
    std::vector<int16_t> kept(size_t(channels) + 4, 0);
    std::vector<const uint8_t*> sources;
    uint32_t* out = result.data();
    for (const Filter::Run& run : rows.runs) {
        sources.clear();
        for (int s = 0; s < run.count; ++s) {
            const uint32_t* row = image.row(std::min(run.first + s, image.height() - 1)) + firstColumn;
            sources.push_back(reinterpret_cast<const uint8_t*>(row));
        }
        sumRows(kept.data(), sources.data(), rows.weights.data() + run.offset, run.count, channels);
        sumColumns(out, kept.data(), firstColumn, columns);
        out += area.width();
    }
}

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

/// The part of a line whose places all have four neighbours.
void sampleInside(const CGImage& image, ExactPlace at, ExactPlace step, int count, uint32_t* result) {
    const uint32_t* pixels = image.row(0);
    const ptrdiff_t width = image.width();
    for (int i = 0; i < count; ++i, at.x += step.x, at.y += step.y) {
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

/// Narrows begin..end to where start + i step lies between 0 and limit.
void narrow(double start, double step, double limit, double& begin, double& end) {
    if (limit <= 0 || step == 0) {
        if (limit <= 0 || !(start >= 0 && start <= limit)) end = begin;
        return;
    }
    double atLow = -start / step;
    double atHigh = (limit - start) / step;
    begin = std::max(begin, std::ceil(std::min(atLow, atHigh)));
    end = std::min(end, std::floor(std::max(atLow, atHigh)) + 1);
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
}

void SampleGrid::line(int y, int x, int count, uint32_t* result) const {
    if (!exact_) return lineFarOut(y, x, count, result);
    ExactPlace start{tx_ + x * a_ + y * c_, ty_ + x * b_ + y * d_};
    // Where nothing can reach over the border it goes without looking; a little less, for the rounding.
    constexpr double kMargin = 0.05;
    double begin = 0;
    double end = count;
    narrow(double(start.x) / kExactOne - kMargin, t_.a, image_.width() - 1 - 2 * kMargin, begin, end);
    narrow(double(start.y) / kExactOne - kMargin, t_.b, image_.height() - 1 - 2 * kMargin, begin, end);
    int first = end > begin ? int(begin) : count;
    int last = end > begin ? int(end) : count;
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

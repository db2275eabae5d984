#include "rastergraphics/Resample.h"

#include "rastergraphics/WideLoops.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

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
    bool copies = true;    ///< every result pixel is the next source pixel
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
    filter.runs.reserve(size_t(end - begin));
    filter.weights.reserve(size_t(end - begin) * 2);
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
        const Filter::Run& run = filter.runs.back();
        filter.pairsOnly = filter.pairsOnly && run.count == 2;
        filter.copies = filter.copies && filter.weights[size_t(run.offset)] == kWeightOne &&
                        run.first - filter.runs.front().first == i - begin;
    }
    return filter;
}

/// The filters made lately: what moves up and down has the same columns again.
std::shared_ptr<const Filter> filterFor(int length, double low, double high, int begin, int end) {
    struct Kept {
        int length = 0;
        double low = 0, high = 0;
        int begin = 0, end = 0;
        std::shared_ptr<const Filter> filter;
    };
    static thread_local std::array<Kept, 8> kept;
    static thread_local size_t next = 0;
    for (const Kept& k : kept) {
        if (k.length == length && k.low == low && k.high == high && k.begin == begin && k.end == end)
            return k.filter;
    }
    Kept& place = kept[next++ % kept.size()];
    auto filter = std::make_shared<const Filter>(makeFilter(length, low, high, begin, end));
    place = {length, low, high, begin, end, std::move(filter)};
    return place.filter;
}

constexpr int kRowShift = kWeightBits - kKeptBits;
constexpr int kColumnShift = kWeightBits + kKeptBits;

#if defined(__x86_64__)
/// The beginning of sumRows' work, as far as whole registers go. Returns how many channels are done.
WIDE int sumRowsWide(int16_t* kept, const uint8_t* const* rows, const int16_t* weights, int count,
                     int channels) {
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
WIDE int sumPairsWide(uint32_t* result, const int16_t* kept, int keptFirst, const Filter& filter) {
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
    if (WideRegisters()) i = sumRowsWide(kept, rows, weights, count, channels);
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

/// What sumColumns comes to when every pixel is the next one.
WIDE_TOO void packColumns(uint32_t* result, const int16_t* kept, int pixels) {
    auto* bytes = reinterpret_cast<uint8_t*>(result);
    for (int i = 0; i < pixels * 4; ++i)
        bytes[i] = uint8_t((kept[i] + (1 << (kKeptBits - 1))) >> kKeptBits);
}

/// Sums up the pixels of a kept row; one pixel more than the filter reaches may be read.
void sumColumns(uint32_t* result, const int16_t* kept, int keptFirst, const Filter& filter) {
    size_t done = 0;
#if defined(__x86_64__)
    if (filter.pairsOnly && WideRegisters()) done = size_t(sumPairsWide(result, kept, keptFirst, filter));
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
    const auto columnFilter = filterFor(image.width(), target.left, target.right, area.left, area.right);
    const Filter& columns = *columnFilter;
    const Filter rows = makeFilter(image.height(), target.top, target.bottom, area.top, area.bottom);

    int firstColumn = columns.runs.front().first;
    int lastColumn = std::min(columns.runs.back().first + columns.runs.back().count, image.width());
    int channels = (lastColumn - firstColumn) * 4;
    static thread_local std::vector<int16_t> kept; // one pixel more, which counts for nothing
    if (kept.size() < size_t(channels) + 4) kept.resize(size_t(channels) + 4);
    std::vector<const uint8_t*> sources;
    uint32_t* out = result.data();
    for (const Filter::Run& run : rows.runs) {
        sources.clear();
        for (int s = 0; s < run.count; ++s) {
            const uint32_t* row = image.row(std::min(run.first + s, image.height() - 1)) + firstColumn;
            sources.push_back(reinterpret_cast<const uint8_t*>(row));
        }
        sumRows(kept.data(), sources.data(), rows.weights.data() + run.offset, run.count, channels);
        if (columns.copies)
            packColumns(out, kept.data(), area.width());
        else
            sumColumns(out, kept.data(), firstColumn, columns);
        out += area.width();
    }
}

} // namespace tallyforge

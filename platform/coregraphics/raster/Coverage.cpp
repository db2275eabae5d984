#include "rastergraphics/Coverage.h"

#include <bit>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace tallyforge {

namespace {

/// Beyond this many pixels from the origin points are pulled in: no bitmap reaches there, and products of
/// coordinates stay far from overflow.
constexpr double kFarthest = 1e7;
/// How far a curve's chords may stand off the curve, in pixels, and as a part of how far it bends: small
/// curves are to keep their shape too.
constexpr double kFlatness = 0.015;
constexpr double kFinestFlatness = 0.003;
constexpr int kMostChords = 400;
/// Cells that are summed up at a time; small enough to stay in the cache.
constexpr int kBandCells = 1 << 15;
/// Areas are counted in these parts of a pixel.
constexpr int kUnitBits = 18;
constexpr int kOne = 1 << kUnitBits;
/// Cutting off after it is added rounds numbers that are not negative, without a call.
constexpr double kToNearest = 0.5;

/// As the library's, without a call; the numbers are far from the limits.
int floored(double v) {
    int cut = int(v);
    return cut - (v < cut);
}
int ceiled(double v) {
    int cut = int(v);
    return cut + (v > cut);
}

struct Edge {
    double x0, y0, x1, y1;
};

CGPoint held(const CGPoint& p) {
    return {std::clamp(p.x, -kFarthest, kFarthest), std::clamp(p.y, -kFarthest, kFarthest)};
}

/// The path as straight edges, every subpath closed.
class Flattener {
  public:
    Flattener(std::vector<Edge>& edges, const PixelRect& clip) : edges_(edges), clip_(clip) {}

    bool flatten(const CGPath& path, const CGAffineTransform& t) {
        for (const CGPath::Element& element : path.elements()) {
            CGPoint p[3];
            int count = element.verb == CGPath::Verb::close ? 0 : element.verb == CGPath::Verb::cubic ? 3 : 1;
            for (int i = 0; i < count; ++i) {
                p[i] = CGPointApplyAffineTransform(element.points[i], t);
                if (!std::isfinite(p[i].x) || !std::isfinite(p[i].y)) return false;
                p[i] = held(p[i]);
            }
            switch (element.verb) {
            case CGPath::Verb::move:
                line(start_);
                start_ = current_ = p[0];
                break;
            case CGPath::Verb::line:
                line(p[0]);
                break;
            case CGPath::Verb::cubic:
                cubic(p[0], p[1], p[2]);
                break;
            case CGPath::Verb::close:
                line(start_);
                break;
            }
        }
        line(start_);
        return true;
    }

  private:
    void line(const CGPoint& end) {
        if (current_.y != end.y) edges_.push_back({current_.x, current_.y, end.x, end.y});
        current_ = end;
    }

    void cubic(const CGPoint& c1, const CGPoint& c2, const CGPoint& end) {
        CGPoint from = current_;
        // A curve that lies wholly above, below or right of the clip adds nothing or only its height.
        bool above = std::max({from.y, c1.y, c2.y, end.y}) <= clip_.top;
        bool below = std::min({from.y, c1.y, c2.y, end.y}) >= clip_.bottom;
        if (above || below) {
            line(end);
            return;
        }
        // The second differences bound how far a chord over 1/n of the curve is off: 6 d / (8 n n).
        auto square = [](double x, double y) { return x * x + y * y; };
        double d = std::sqrt(std::max(square(from.x - 2 * c1.x + c2.x, from.y - 2 * c1.y + c2.y),
                                      square(c1.x - 2 * c2.x + end.x, c1.y - 2 * c2.y + end.y)));
        double flatness = std::clamp(kFlatness * d, kFinestFlatness, kFlatness);
        int chords = int(std::clamp(std::ceil(std::sqrt(0.75 * d / flatness)), 1.0, double(kMostChords)));
        for (int i = 1; i < chords; ++i) {
            double t = double(i) / chords;
            double u = 1 - t;
            double b0 = u * u * u;
            double b1 = 3 * u * u * t;
            double b2 = 3 * u * t * t;
            double b3 = t * t * t;
            line({b0 * from.x + b1 * c1.x + b2 * c2.x + b3 * end.x,
                  b0 * from.y + b1 * c1.y + b2 * c2.y + b3 * end.y});
        }
        line(end);
    }

    std::vector<Edge>& edges_;
    const PixelRect& clip_;
    CGPoint start_;
    CGPoint current_;
};

/// Sums up signed areas of the edges in a band of rows. A cell holds by how much coverage changes from the
/// pixel left of it; which cells were touched is noted, so that long runs between them cost nothing.
///
/// Areas are whole numbers, so that their sum does not depend on the order and on where the clip cuts: a
/// pixel's coverage is the same whatever part of the path is painted.
class Band {
  public:
    /// Rows from `top`, columns from `left`.
    void reset(int left, int width, int top, int rows) {
        left_ = left;
        width_ = width;
        top_ = top;
        rows_ = rows;
        words_ = (width + 2 + 63) / 64;
        stride_ = words_ * 64;
        if (cells_.size() < size_t(stride_) * size_t(rows)) cells_.resize(size_t(stride_) * size_t(rows));
        if (touched_.size() < size_t(words_) * size_t(rows)) touched_.resize(size_t(words_) * size_t(rows));
        coverage_.resize(size_t(width));
    }

    /// What of the edge lies in the band.
    void add(const Edge& e) {
        if (e.y0 < e.y1)
            addDownwards(e.x0, e.y0, e.x1, e.y1, 1);
        else
            addDownwards(e.x1, e.y1, e.x0, e.y0, -1);
    }

    /// Hands on a row and leaves it all zero for the next use.
    void emit(int row, CoverageSink& sink);

  private:
    // What is left of the band counts as at its left side, what is right of it does not count.
    void addDownwards(double x0, double y0, double x1, double y1, int direction) {
        double low = std::min(x0, x1);
        double high = std::max(x0, x1);
        if (low >= left_ + width_) return;
        int first = std::max(floored(y0), top_);
        int end = std::min(ceiled(y1), top_ + rows_);
        if (end <= first) return;
        if (ceiled(y1) == floored(y0) + 1 && high > left_) { // most edges of curves stay in a row
            deposit(first, low, high, (units(y1 - first) - units(y0 - first)) * direction);
            return;
        }
        double slant = (x1 - x0) / (y1 - y0);
        // The same place for the same row, whatever rows are asked for.
        auto at = [&](double y) {
            return y <= y0 ? x0 : y >= y1 ? x1 : std::clamp(x0 + (y - y0) * slant, low, high);
        };
        bool leftOfAll = high <= left_;
        double x = leftOfAll ? 0 : at(first);
        int above = units(std::max(double(first), y0) - first);
        for (int row = first; row < end; ++row) {
            int below = y1 < row + 1 ? units(y1 - row) : kOne;
            int height = (below - above) * direction;
            above = 0;
            if (leftOfAll) {
                change(row, 0, height);
                touch(row, 0, 0);
                continue;
            }
            double next = at(row + 1);
            deposit(row, std::min(x, next), std::max(x, next), height);
            x = next;
        }
    }

    static int units(double share) { return int(share * kOne + kToNearest); }
    static int nearest(double value) { return int(value + (value < 0 ? -kToNearest : kToNearest)); }

    void change(int row, int column, int by) {
        cells_[size_t(row - top_) * size_t(stride_) + size_t(column)] += unsigned(by);
    }

    /// The edge crosses the row from x0 to x1 and is `height` high there (negative upwards).
    void deposit(int row, double x0, double x1, int height) {
        int first = floored(x0);
        int end = ceiled(x1);
        int last = std::min(end, left_ + width_) - left_; // the last cell that is changed
        if (first >= left_ + width_) return;
        if (end <= left_) {
            change(row, 0, height);
            touch(row, 0, 0);
            return;
        }
        if (end <= first + 1) {
            int right = nearest(height * (0.5 * (x0 + x1) - first));
            change(row, first - left_, height - right);
            change(row, first + 1 - left_, right);
            touch(row, first - left_, first + 1 - left_);
            return;
        }
        // The area right of the edge in each crossed pixel, as differences from one pixel to the next.
        double perPixel = height / (x1 - x0);
        double inFirst = first + 1 - x0;
        double inLast = x1 - (end - 1);
        auto areaIn = [&](int column) {
            if (column == first) return nearest(0.5 * perPixel * inFirst * inFirst);
            if (column == end - 1) return nearest(height - 0.5 * perPixel * inLast * inLast);
            return nearest(perPixel * (inFirst + (column - first - 1) + 0.5));
        };
        int from = std::max(first, left_);
        int previous = 0;
        for (int column = from; column < std::min(end, left_ + width_); ++column) {
            int area = areaIn(column);
            change(row, column - left_, area - previous);
            previous = area;
        }
        // Beyond the last pixel everything is covered for the edge's full height.
        if (last == end - left_) change(row, last, height - previous);
        touch(row, from - left_, last);
    }

    void touch(int row, int first, int last) {
        uint64_t* words = touched_.data() + size_t(row - top_) * size_t(words_);
        for (int i = first >> 6; i <= last >> 6; ++i) {
            uint64_t bits = ~uint64_t(0);
            if (i == first >> 6) bits &= ~uint64_t(0) << (first & 63);
            if (i == last >> 6) bits &= ~uint64_t(0) >> (63 - (last & 63));
            words[i] |= bits;
        }
    }

    int left_ = 0;
    int width_ = 0;
    int top_ = 0;
    int rows_ = 0;
    int words_ = 0;
    int stride_ = 0;
    std::vector<uint32_t> cells_; // two's complement; all zero between uses
    std::vector<uint64_t> touched_;
    std::vector<uint8_t> coverage_;
};

uint8_t coverageFromSum(uint32_t sum) {
    uint32_t size = sum >> 31 ? 0 - sum : sum;
    return uint8_t((std::min(size, uint32_t(kOne)) * 255 + kOne / 2) >> kUnitBits);
}

void Band::emit(int row, CoverageSink& sink) {
    constexpr int kWorthSplitting = 8;
    const int worthSplitting = sink.wantsThemTogether() ? width_ + 1 : kWorthSplitting;
    uint32_t* cells = cells_.data() + size_t(row - top_) * size_t(stride_);
    uint64_t* words = touched_.data() + size_t(row - top_) * size_t(words_);
    uint32_t sum = 0;
    int position = 0; // pixels before it are dealt with
    int pending = -1; // first pixel of the run in coverage_ that is not handed on yet
    auto flush = [&](int end) {
        if (pending >= 0 && end > pending)
            sink.span(row, left_ + pending, end - pending, coverage_.data() + pending);
        pending = -1;
    };
    auto constant = [&](int end) { // from position to end the coverage stays as it is
        if (end <= position) return;
        uint8_t value = coverageFromSum(sum);
        if (value == 0) {
            flush(position);
        } else if (value == 255 && end - position >= worthSplitting) {
            flush(position);
            sink.span(row, left_ + position, end - position, nullptr);
        } else {
            if (pending < 0) pending = position;
            std::fill(coverage_.begin() + position, coverage_.begin() + end, value);
        }
        position = end;
    };
    for (int w = 0; w < words_; ++w) {
        uint64_t bits = words[w];
        words[w] = 0;
        for (; bits; bits &= bits - 1) {
            int cell = w * 64 + std::countr_zero(bits);
            constant(std::min(cell, width_));
            sum += cells[cell];
            cells[cell] = 0;
        }
    }
    constant(width_);
    flush(width_);
}

} // namespace

void ScanConvert(const CGPath& path, const CGAffineTransform& toPixels, const PixelRect& clip,
                 CoverageSink& sink) {
    static thread_local std::vector<Edge> edges;
    static thread_local Band band;
    edges.clear();
    if (clip.empty() || path.empty() || !Flattener(edges, clip).flatten(path, toPixels) || edges.empty())
        return;

    double lowY = kFarthest;
    double highY = -kFarthest;
    double lowX = kFarthest;
    double highX = -kFarthest;
    for (const Edge& e : edges) {
        lowY = std::min({lowY, e.y0, e.y1});
        highY = std::max({highY, e.y0, e.y1});
        lowX = std::min({lowX, e.x0, e.x1});
        highX = std::max({highX, e.x0, e.x1});
    }
    PixelRect bounds{floored(lowX), floored(lowY), ceiled(highX), ceiled(highY)};
    PixelRect area = bounds.intersected(clip);
    if (area.empty()) return;

    int bandRows = std::clamp(kBandCells / (area.width() + 2), 1, area.height());
    for (int top = area.top; top < area.bottom; top += bandRows) {
        int rows = std::min(bandRows, area.bottom - top);
        band.reset(area.left, area.width(), top, rows);
        for (const Edge& e : edges) {
            if (std::max(e.y0, e.y1) > top && std::min(e.y0, e.y1) < top + rows) band.add(e);
        }
        for (int row = top; row < top + rows; ++row)
            band.emit(row, sink);
    }
}

PixelRect TouchedPixels(const CGRect& rect, const CGAffineTransform& toPixels, const PixelRect& clip) {
    CGRect r = CGRectApplyAffineTransform(rect, toPixels);
    double right = r.origin.x + r.size.width;
    double bottom = r.origin.y + r.size.height;
    if (!std::isfinite(r.origin.x) || !std::isfinite(r.origin.y) || !std::isfinite(right) ||
        !std::isfinite(bottom))
        return {};
    auto whole = [](double v) { return int(std::clamp(v, -kFarthest, kFarthest)); };
    // A hair's breadth of rounding error is no reason to touch another row of pixels.
    constexpr double kHair = 1e-6;
    PixelRect touched{whole(std::floor(r.origin.x + kHair)), whole(std::floor(r.origin.y + kHair)),
                      whole(std::ceil(right - kHair)), whole(std::ceil(bottom - kHair))};
    return touched.intersected(clip);
}

} // namespace tallyforge

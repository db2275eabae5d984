#include "rastergraphics/TextEngine.h"

#include "rastergraphics/TextShaping.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>

namespace tallyforge {

namespace {

constexpr size_t kKeptLines = 512;
/// Lines longer than this are shaped anew every time.
constexpr size_t kLongestKept = 512;
constexpr size_t kKeptPaintedBytes = size_t(4) << 20;
constexpr size_t kLargestPainted = size_t(256) << 10;
constexpr double kPartsOfPixel = 1024;
constexpr double kFarthest = 1 << 20; // pixels

class KeepSink final : public CoverageSink {
  public:
    KeepSink(std::vector<uint8_t>& coverage, const PixelRect& area) : coverage_(coverage), area_(area) {}
    void span(int y, int x, int n, const uint8_t* coverage) override {
        uint8_t* row = coverage_.data() + size_t(y - area_.top) * size_t(area_.width()) + (x - area_.left);
        coverage ? std::copy_n(coverage, n, row) : std::fill_n(row, n, uint8_t(255));
    }

  private:
    std::vector<uint8_t>& coverage_;
    const PixelRect& area_;
};

/// Hands on at another place.
class MovedSink final : public CoverageSink {
  public:
    MovedSink(CoverageSink& sink, int x, int y) : sink_(sink), x_(x), y_(y) {}
    void span(int y, int x, int n, const uint8_t* coverage) override {
        sink_.span(y + y_, x + x_, n, coverage);
    }

  private:
    CoverageSink& sink_;
    int x_, y_;
};

} // namespace

std::shared_ptr<const TextLine> TextEngine::line(std::string_view utf8, int weight) {
    std::lock_guard lock(mutex_);
    if (utf8.size() > kLongestKept) return ShapeText(utf8, weight);
    LineKey key{weight, std::string(utf8)};
    if (auto known = lineByKey_.find(key); known != lineByKey_.end()) {
        lines_.splice(lines_.begin(), lines_, known->second);
        return known->second->line;
    }
    std::shared_ptr<const TextLine> shaped = ShapeText(utf8, weight);
    if (!shaped) return nullptr;
    lines_.push_front({key, shaped});
    lineByKey_[std::move(key)] = lines_.begin();
    if (lines_.size() > kKeptLines) {
        lineByKey_.erase(lines_.back().key);
        lines_.pop_back();
    }
    return shaped;
}

size_t TextEngine::PaintedHash::operator()(const PaintedKey& key) const {
    size_t hash = std::hash<const TextLine*>()(key.line.get());
    for (double part : {key.place.a, key.place.b, key.place.c, key.place.d, key.place.tx, key.place.ty})
        hash = hash * 31 + std::hash<double>()(part);
    return hash;
}

bool TextEngine::drawCached(const std::shared_ptr<const TextLine>& line,
                            const CGAffineTransform& lineToPixels, const PixelRect& clip,
                            CoverageSink& sink) {
    // Scrolled text comes again at another place: what is kept stands at the same part of a pixel, told to a
    // thousandth, and is moved by whole pixels.
    const double left = std::floor(lineToPixels.tx);
    const double top = std::floor(lineToPixels.ty);
    if (!(std::fabs(left) < kFarthest && std::fabs(top) < kFarthest)) return false;
    auto within = [](double part) { return std::round(part * kPartsOfPixel) / kPartsOfPixel; };
    CGAffineTransform place = lineToPixels;
    place.tx = within(lineToPixels.tx - left);
    place.ty = within(lineToPixels.ty - top);

    std::lock_guard lock(mutex_);
    const PaintedKey key{line, place};
    if (auto known = paintedByKey_.find(key); known != paintedByKey_.end()) {
        painted_.splice(painted_.begin(), painted_, known->second);
    } else {
        constexpr PixelRect kAnywhere{-(1 << 20), -(1 << 20), 1 << 20, 1 << 20};
        PixelRect area = TouchedPixels(line->reach, place, kAnywhere);
        size_t bytes = size_t(area.width()) * size_t(area.height());
        if (bytes == 0) return true;
        if (bytes > kLargestPainted) return false;
        const bool upright = place.b == 0 && place.c == 0;
        if (!upright && std::ranges::find(turnedOnce_, key) == turnedOnce_.end()) {
            turnedOnce_[nextTurned_++ % turnedOnce_.size()] = key;
            const int x = int(left), y = int(top);
            MovedSink moved(sink, x, y);
            ScanConvert(line->outline, place, {clip.left - x, clip.top - y, clip.right - x, clip.bottom - y},
                        moved);
            return true;
        }
        Painted painted{key, area, std::vector<uint8_t>(bytes)};
        KeepSink keep(painted.coverage, area);
        ScanConvert(line->outline, place, area, keep);
        painted_.push_front(std::move(painted));
        paintedByKey_[key] = painted_.begin();
        paintedBytes_ += bytes;
        while (paintedBytes_ > kKeptPaintedBytes) {
            paintedBytes_ -= painted_.back().coverage.size();
            paintedByKey_.erase(painted_.back().key);
            painted_.pop_back();
        }
    }
    const Painted& painted = painted_.front();
    const PixelRect area{painted.area.left + int(left), painted.area.top + int(top),
                         painted.area.right + int(left), painted.area.bottom + int(top)};
    PixelRect seen = area.intersected(clip);
    for (int y = seen.top; y < seen.bottom; ++y) {
        const uint8_t* row = painted.coverage.data() + size_t(y - area.top) * size_t(area.width());
        sink.span(y, seen.left, seen.width(), row + (seen.left - area.left));
    }
    return true;
}

} // namespace tallyforge

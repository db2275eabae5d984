#include "rastergraphics/RasterCanvas.h"

#include "rastergraphics/Coverage.h"
#include "rastergraphics/PictureCache.h"
#include "rastergraphics/Resample.h"
#include "rastergraphics/SampleGrid.h"
#include "rastergraphics/Stroke.h"
#include "rastergraphics/TextEngine.h"

#include <cmath>
#include <optional>
#include <utility>

namespace tallyforge {

/// A path clip in force: how much of each pixel it lets through, and the pixels as they were when it was set.
struct RasterCanvas::ClipMask {
    PixelRect area;
    std::vector<uint8_t> coverage;
    std::unique_ptr<uint32_t[]> before; ///< only the pixels outside of the rows' solid parts
    struct Row {
        int solidBegin = 0; ///< from here to solidEnd (counted from area.left) everything is let through
        int solidEnd = 0;
    };
    std::vector<Row> rows;

    void remember(const Surface& surface);
    void apply(const Surface& surface) const;
};

namespace {

/// By so little of a pixel things may be off their place.
constexpr double kInvisible = 1.0 / 1024;

using Surface = RasterCanvas::Surface;

bool invertible(const CGAffineTransform& t) {
    double determinant = t.a * t.d - t.b * t.c;
    return CGAffineTransformIsFinite(t) && std::isfinite(determinant) && determinant != 0;
}

bool finite(const CGRect& r) {
    return std::isfinite(r.origin.x) && std::isfinite(r.origin.y) && std::isfinite(r.size.width) &&
           std::isfinite(r.size.height);
}

/// The pixels that the rectangle fills, when it fills all that it touches.
std::optional<PixelRect> wholePixels(const CGRect& rect, const CGAffineTransform& t, const PixelRect& clip) {
    bool upright = (t.b == 0 && t.c == 0) || (t.a == 0 && t.d == 0);
    if (!upright) return std::nullopt;
    CGRect r = CGRectApplyAffineTransform(rect, t);
    // Pull in what lies far outside before rounding; the clip is what counts there.
    auto edge = [](double v, int low, int high) { return std::clamp(v, double(low) - 1, double(high) + 1); };
    double edges[4] = {edge(r.origin.x, clip.left, clip.right), edge(r.origin.y, clip.top, clip.bottom),
                       edge(r.origin.x + r.size.width, clip.left, clip.right),
                       edge(r.origin.y + r.size.height, clip.top, clip.bottom)};
    int whole[4];
    for (int i = 0; i < 4; ++i) {
        if (!std::isfinite(edges[i]) || std::fabs(edges[i] - std::round(edges[i])) > kInvisible)
            return std::nullopt;
        whole[i] = int(std::round(edges[i]));
    }
    return PixelRect{whole[0], whole[1], whole[2], whole[3]}.intersected(clip);
}

class InkSink final : public CoverageSink {
  public:
    InkSink(const Surface& surface, const Ink& ink, CGBlendMode mode)
        : surface_(surface), ink_(ink), mode_(mode) {}
    void span(int y, int x, int n, const uint8_t* coverage) override {
        uint32_t* pixels = surface_.at(x, y);
        if (mode_ == kCGBlendModeSourceAtop)
            coverage ? InkAtop(pixels, n, ink_, coverage) : InkAtop(pixels, n, ink_);
        else
            coverage ? InkOver(pixels, n, ink_, coverage) : InkOver(pixels, n, ink_);
    }

  private:
    const Surface& surface_;
    const Ink& ink_;
    CGBlendMode mode_;
};

class MaskSink final : public CoverageSink {
  public:
    MaskSink(std::vector<uint8_t>& mask, const PixelRect& area) : mask_(mask), area_(area) {}
    void span(int y, int x, int n, const uint8_t* coverage) override {
        uint8_t* row = mask_.data() + size_t(y - area_.top) * size_t(area_.width()) + (x - area_.left);
        coverage ? std::copy_n(coverage, n, row) : std::fill_n(row, n, uint8_t(255));
    }

  private:
    std::vector<uint8_t>& mask_;
    const PixelRect& area_;
};

/// Paints an image through the inverse of the transform that places it.
class SampleSink final : public CoverageSink {
  public:
    SampleSink(const Surface& surface, const SampleGrid& grid, int alpha, CGBlendMode mode)
        : surface_(surface), grid_(grid), alpha_(alpha), mode_(mode) {}
    void span(int y, int x, int n, const uint8_t* coverage) override {
        if (samples_.size() < size_t(n)) samples_.resize(size_t(n));
        grid_.line(y, x, n, samples_.data());
        auto* paint = mode_ == kCGBlendModeSourceAtop ? PixelsAtop : PixelsOver;
        paint(surface_.at(x, y), samples_.data(), n, alpha_, coverage);
    }
    bool wantsThemTogether() const override { return true; } // finding where a line begins costs as much

  private:
    const Surface& surface_;
    const SampleGrid& grid_;
    int alpha_;
    CGBlendMode mode_;
    std::vector<uint32_t> samples_;
};

CGPath rectPath(const CGRect& rect) {
    CGPath path;
    path.addRect(rect);
    return path;
}

/// What is left of the image without the rows and columns at its sides that are all clear.
PixelRect visiblePart(const CGImage& image) {
    PixelRect part{0, 0, image.width(), image.height()};
    const auto clear = [](uint32_t pixel) { return pixel == 0; };
    const auto clearRow = [&](int y) {
        return std::all_of(image.row(y), image.row(y) + image.width(), clear);
    };
    while (part.top < part.bottom && clearRow(part.top))
        ++part.top;
    while (part.top < part.bottom && clearRow(part.bottom - 1))
        --part.bottom;
    const auto clearColumn = [&](int x) {
        for (int y = part.top; y < part.bottom; ++y) {
            if (!clear(image.pixel(x, y))) return false;
        }
        return true;
    };
    while (!part.empty() && clearColumn(part.left))
        ++part.left;
    while (!part.empty() && clearColumn(part.right - 1))
        --part.right;
    return part;
}

int alphaByte(CGFloat alpha) {
    return alpha > 0 ? int(std::lround(std::min(alpha, 1.0) * 255)) : 0;
}

} // namespace

void RasterCanvas::ClipMask::remember(const Surface& surface) {
    size_t width = size_t(area.width());
    if (!before) before = std::make_unique_for_overwrite<uint32_t[]>(width * size_t(area.height()));
    for (int y = area.top; y < area.bottom; ++y) {
        const Row& row = rows[size_t(y - area.top)];
        uint32_t* kept = before.get() + size_t(y - area.top) * width;
        const uint32_t* pixels = surface.at(area.left, y);
        std::copy(pixels, pixels + row.solidBegin, kept);
        std::copy(pixels + row.solidEnd, pixels + width, kept + row.solidEnd);
    }
}

void RasterCanvas::ClipMask::apply(const Surface& surface) const {
    size_t width = size_t(area.width());
    for (int y = area.top; y < area.bottom; ++y) {
        const Row& row = rows[size_t(y - area.top)];
        const uint32_t* kept = before.get() + size_t(y - area.top) * width;
        const uint8_t* mask = coverage.data() + size_t(y - area.top) * width;
        uint32_t* pixels = surface.at(area.left, y);
        Mix(pixels, kept, mask, row.solidBegin);
        Mix(pixels + row.solidEnd, kept + row.solidEnd, mask + row.solidEnd, int(width) - row.solidEnd);
    }
}

RasterCanvas::RasterCanvas(CGImage& bitmap, TextEngine& text, PictureCache& pictures)
    : base_{{0, 0, bitmap.width(), bitmap.height()},
            bitmap.width() > 0 && bitmap.height() > 0 ? bitmap.row(0) : nullptr},
      pending_({base_.pixels, bitmap.width()}), text_(text), pictures_(pictures) {
    states_.push_back({CGAffineTransformIdentity, base_.area, {}});
}

RasterCanvas::~RasterCanvas() {
    while (!groups_.empty())
        endGroup();
    while (states_.size() > 1)
        popState();
    pending_.settleAll();
    for (size_t i = state().masks.size(); i-- > 0;)
        state().masks[i].apply(base_);
}

void RasterCanvas::save() {
    states_.push_back({state().transform, state().clip, {}});
}

void RasterCanvas::restore() {
    // A group ends only by endGroup; the state it began with is its own.
    size_t floor = groups_.empty() ? 1 : groups_.back().outerStates + 1;
    if (states_.size() > floor) popState();
}

void RasterCanvas::popState() {
    for (size_t i = state().masks.size(); i-- > 0;) {
        settle(state().masks[i].area);
        state().masks[i].apply(surface());
    }
    states_.pop_back();
}

void RasterCanvas::flush() {
    pending_.settleAll();
    size_t outer = groups_.empty() ? states_.size() : groups_.front().outerStates;
    for (size_t s = outer; s-- > 0;) {
        for (size_t i = states_[s].masks.size(); i-- > 0;)
            states_[s].masks[i].apply(base_);
    }
    for (size_t s = 0; s < outer; ++s) {
        for (ClipMask& mask : states_[s].masks)
            mask.remember(base_);
    }
}

void RasterCanvas::setTransform(const CGAffineTransform& userToPixels) {
    state().transform = userToPixels;
}

CGAffineTransform RasterCanvas::transform() const {
    return state().transform;
}

bool RasterCanvas::paintable() const {
    return !state().clip.empty() && invertible(state().transform);
}

void RasterCanvas::settle(const CGPath& path, const CGAffineTransform& toPixels) {
    settle(TouchedPixels(path.boundingBox(), toPixels, state().clip));
}

CGRect RasterCanvas::clipBounds() const {
    const PixelRect& clip = state().clip;
    if (clip.empty()) return {};
    return {{double(clip.left), double(clip.top)}, {double(clip.width()), double(clip.height())}};
}

void RasterCanvas::clipToRect(const CGRect& rect) {
    if (state().clip.empty()) return;
    if (!finite(rect) || !invertible(state().transform)) {
        state().clip = {};
        return;
    }
    if (auto whole = wholePixels(rect, state().transform, state().clip))
        state().clip = *whole;
    else
        clipToPath(rectPath(rect));
}

void RasterCanvas::clipToPath(const CGPath& path) {
    PixelRect area = invertible(state().transform)
                         ? TouchedPixels(path.boundingBox(), state().transform, state().clip)
                         : PixelRect{};
    state().clip = area;
    if (area.empty()) return;
    ClipMask mask;
    mask.area = area;
    mask.coverage.resize(size_t(area.width()) * size_t(area.height()));
    MaskSink sink(mask.coverage, area);
    ScanConvert(path, state().transform, area, sink);

    bool everything = true;
    mask.rows.resize(size_t(area.height()));
    for (size_t y = 0; y < mask.rows.size(); ++y) {
        auto begin = mask.coverage.begin() + ptrdiff_t(y) * area.width();
        auto end = begin + area.width();
        auto solid = std::find(begin, end, uint8_t(255));
        auto solidEnd = std::find_if(solid, end, [](uint8_t c) { return c != 255; });
        mask.rows[y] = {int(solid - begin), int(solidEnd - begin)};
        everything = everything && solid == begin && solidEnd == end;
    }
    if (everything) return;
    settle(area);
    mask.remember(surface());
    state().masks.push_back(std::move(mask));
}

void RasterCanvas::fillDeviceRect(const PixelRect& rect, const Ink& ink, CGBlendMode mode) {
    if (rect.empty()) return;
    if (mode == kCGBlendModeNormal && ink.opaque() && groups_.empty() && PendingFills::large(rect))
        return pending_.add(rect, ink.pixel);
    settle(rect);
    InkSink sink(surface(), ink, mode);
    if (rect.width() == surface().area.width()) // rows follow each other without a gap
        return sink.span(rect.top, rect.left, rect.width() * rect.height(), nullptr);
    for (int y = rect.top; y < rect.bottom; ++y)
        sink.span(y, rect.left, rect.width(), nullptr);
}

void RasterCanvas::fillRect(const CGRect& rect, const CGColor& color, CGFloat alpha, CGBlendMode mode) {
    Ink ink = MakeInk(color, alpha);
    if (ink.nothing() || !paintable() || !finite(rect)) return;
    if (auto whole = wholePixels(rect, state().transform, state().clip))
        fillDeviceRect(*whole, ink, mode);
    else
        fillPath(rectPath(rect), color, alpha, mode);
}

void RasterCanvas::fillPath(const CGPath& path, const CGColor& color, CGFloat alpha, CGBlendMode mode) {
    Ink ink = MakeInk(color, alpha);
    if (ink.nothing() || !paintable()) return;
    settle(path, state().transform);
    InkSink sink(surface(), ink, mode);
    ScanConvert(path, state().transform, state().clip, sink);
}

void RasterCanvas::strokePath(const CGPath& path, const CGColor& color, CGFloat width, bool round) {
    Ink ink = MakeInk(color, 1);
    if (ink.nothing() || !paintable()) return;
    const CGPath outline = StrokeOutline(path, state().transform, width, round);
    settle(outline, CGAffineTransformIdentity);
    InkSink sink(surface(), ink, kCGBlendModeNormal);
    ScanConvert(outline, CGAffineTransformIdentity, state().clip, sink);
}

void RasterCanvas::drawImage(const CGImageRef& image, const CGRect& rect, CGFloat alpha, CGBlendMode mode) {
    if (!image || image->width() <= 0 || image->height() <= 0 || !paintable() || !finite(rect)) return;
    int fade = alphaByte(alpha);
    CGRect place = CGRectStandardize(rect);
    CGAffineTransform unitToPixels = CGAffineTransformConcat(
        {place.size.width, 0, 0, place.size.height, place.origin.x, place.origin.y}, state().transform);
    if (fade == 0 || !invertible(unitToPixels)) return;
    bool upright = std::fabs(unitToPixels.b) < kInvisible && std::fabs(unitToPixels.c) < kInvisible;
    if (upright)
        drawUpright(image, unitToPixels, fade, mode);
    else
        drawTurned(*image, unitToPixels, fade, mode);
}

void RasterCanvas::drawUpright(const CGImageRef& drawn, const CGAffineTransform& unitToPixels, int alpha,
                               CGBlendMode mode) {
    const CGImage& image = *drawn;
    const Mirroring mirrored{unitToPixels.a < 0, unitToPixels.d < 0};
    StretchTarget target{std::min(unitToPixels.tx, unitToPixels.tx + unitToPixels.a),
                         std::min(unitToPixels.ty, unitToPixels.ty + unitToPixels.d),
                         std::max(unitToPixels.tx, unitToPixels.tx + unitToPixels.a),
                         std::max(unitToPixels.ty, unitToPixels.ty + unitToPixels.d)};
    PixelRect area = TouchedPixels({{0, 0}, {1, 1}}, unitToPixels, state().clip);
    if (area.empty()) return;
    // Not the clear sides of the image, but where pixels are mixed with their neighbours a little further.
    const PixelRect shown = visiblePart(image);
    area = TouchedPixels({{(shown.left - 1.0) / image.width(), (shown.top - 1.0) / image.height()},
                          {(shown.width() + 2.0) / image.width(), (shown.height() + 2.0) / image.height()}},
                         unitToPixels, area);
    if (shown.empty() || area.empty()) return;
    settle(area);
    auto same = [](double a, double b) { return std::fabs(a - b) < kInvisible; };
    if (same(target.right - target.left, image.width()) && same(target.bottom - target.top, image.height()) &&
        same(target.left, std::round(target.left)) && same(target.top, std::round(target.top))) {
        const double left = std::round(target.left), top = std::round(target.top);
        if (mirrored == Mirroring{}) return copyUpright(image, {int(left), int(top)}, area, alpha, mode);
        target = {left, top, left + image.width(), top + image.height()};
    }
    // A place that is all but on whole pixels touches one more than it has any share in.
    const auto pixel = [](double edge) { return int(std::clamp(edge, -1e9, 1e9)); };
    area = area.intersected({pixel(std::floor(target.left)), pixel(std::floor(target.top)),
                             pixel(std::ceil(target.right)), pixel(std::ceil(target.bottom))});
    if (area.empty()) return;
    auto* paint = mode == kCGBlendModeSourceAtop ? PixelsAtop : PixelsOver;
    // Counted from the pixel that it begins in, so that it comes out the same wherever it is.
    constexpr double kFarthest = 1 << 20;
    const bool near = target.left > -kFarthest && target.top > -kFarthest;
    const int left = near ? int(std::floor(target.left)) : 0;
    const int top = near ? int(std::floor(target.top)) : 0;
    const StretchTarget within{target.left - left, target.top - top, target.right - left,
                               target.bottom - top};
    if (const auto kept = near ? pictures_.find(drawn, within, mirrored) : nullptr) {
        for (int row = area.top; row < area.bottom; ++row) {
            const uint32_t* from = kept->pixels.data() + ptrdiff_t(row - top) * kept->area.width();
            paint(surface().at(area.left, row), from + (area.left - left), area.width(), alpha, nullptr);
        }
        return;
    }
    // By bands, so that what is scaled is still near when it is painted.
    constexpr int kBandPixels = 1 << 15;
    const Mirrored source(image, mirrored);
    const int height = std::max(1, kBandPixels / area.width());
    std::vector<uint32_t> pixels;
    for (int row = area.top; row < area.bottom;) {
        const int end = std::min(row + height, area.bottom);
        Stretch(source.image(), within, {area.left - left, row - top, area.right - left, end - top}, pixels);
        for (const uint32_t* from = pixels.data(); row < end; ++row, from += area.width())
            paint(surface().at(area.left, row), from, area.width(), alpha, nullptr);
    }
}

void RasterCanvas::copyUpright(const CGImage& image, const PixelPlace& at, PixelRect area, int alpha,
                               CGBlendMode mode) {
    area = area.intersected({at.x, at.y, at.x + image.width(), at.y + image.height()});
    auto* paint = mode == kCGBlendModeSourceAtop ? PixelsAtop : PixelsOver;
    for (int row = area.top; row < area.bottom; ++row)
        paint(surface().at(area.left, row), image.row(row - at.y) + (area.left - at.x), area.width(), alpha,
              nullptr);
}

void RasterCanvas::drawTurned(const CGImage& image, const CGAffineTransform& unitToPixels, int alpha,
                              CGBlendMode mode) {
    // What shrinks is averaged down first, to about as many pixels as will be seen, then sampled.
    const CGImage* source = &image;
    std::optional<CGImage> shrunk;
    auto seen = [](int length, double pixels) {
        return int(std::clamp(std::ceil(pixels - 1e-6), 1.0, double(length)));
    };
    int width = seen(image.width(), std::hypot(unitToPixels.a, unitToPixels.b));
    int height = seen(image.height(), std::hypot(unitToPixels.c, unitToPixels.d));
    if (width < image.width() || height < image.height()) {
        shrunk.emplace(width, height);
        std::vector<uint32_t> pixels;
        Stretch(image, {0, 0, double(width), double(height)}, {0, 0, width, height}, pixels);
        std::copy(pixels.begin(), pixels.end(), shrunk->row(0));
        source = &*shrunk;
    }
    const PixelRect shown = visiblePart(*source);
    if (shown.empty()) return;
    CGAffineTransform imageToPixels = CGAffineTransformScale(unitToPixels, 1.0 / width, 1.0 / height);
    if (!invertible(imageToPixels)) return;
    // A clear pixel more at each side, as what lies between two pixels shows something of both.
    const PixelRect part =
        PixelRect{shown.left - 1, shown.top - 1, shown.right + 1, shown.bottom + 1}.intersected(
            {0, 0, width, height});
    const PixelRect area =
        TouchedPixels({{double(part.left), double(part.top)}, {double(part.width()), double(part.height())}},
                      imageToPixels, state().clip);
    if (area.empty()) return;
    settle(area);
    // A picture that is clear all around needs no edges: they show nothing.
    const SampleGrid grid(*source, CGAffineTransformInvert(imageToPixels));
    if (grid.exact() && shown.left > 0 && shown.top > 0 && shown.right < width && shown.bottom < height)
        return drawInside(grid, part, area, alpha, mode);
    SampleSink sink(surface(), grid, alpha, mode);
    ScanConvert(rectPath({{0, 0}, {1, 1}}), unitToPixels, state().clip, sink);
}

void RasterCanvas::drawInside(const SampleGrid& grid, const PixelRect& part, const PixelRect& area, int alpha,
                              CGBlendMode mode) {
    auto* paint = mode == kCGBlendModeSourceAtop ? PixelsAtop : PixelsOver;
    std::vector<uint32_t> samples;
    SampleGrid::Steps steps{};
    for (int y = area.top; y < area.bottom; ++y) {
        if (grid.lineInside(y, area.left, area.width(), part, steps, samples))
            paint(surface().at(area.left + steps.begin, y), samples.data(), steps.end - steps.begin, alpha,
                  nullptr);
    }
}

void RasterCanvas::drawText(std::string_view utf8, const FontFace& font, const CGPoint& baseline,
                            const CGColor& color, CGFloat alpha) {
    Ink ink = MakeInk(color, alpha);
    if (ink.nothing() || !paintable() || utf8.empty()) return;
    if (!std::isfinite(font.size) || font.size <= 0 || !std::isfinite(baseline.x) ||
        !std::isfinite(baseline.y))
        return;
    std::shared_ptr<const TextLine> line = text_.line(utf8, font.weight);
    CGAffineTransform lineToPixels =
        CGAffineTransformConcat({font.size, 0, 0, font.size, baseline.x, baseline.y}, state().transform);
    if (!line || !invertible(lineToPixels)) return;
    settle(TouchedPixels(line->reach, lineToPixels, state().clip));
    InkSink sink(surface(), ink, kCGBlendModeNormal);
    if (!text_.drawCached(line, lineToPixels, state().clip, sink))
        ScanConvert(line->outline, lineToPixels, state().clip, sink);
    for (const TextLine::Picture& picture : line->pictures) {
        CGAffineTransform place =
            CGAffineTransformConcat({picture.frame.size.width, 0, 0, picture.frame.size.height,
                                     picture.frame.origin.x, picture.frame.origin.y},
                                    lineToPixels);
        save();
        setTransform(place);
        drawImage(picture.image, {{0, 0}, {1, 1}}, color.alpha * alpha, kCGBlendModeNormal);
        restore();
    }
}

void RasterCanvas::beginGroup(const CGRect& bounds, CGFloat alpha) {
    Group group;
    group.alpha = alphaByte(alpha);
    group.outerStates = states_.size();
    if (group.alpha > 0 && paintable() && finite(bounds))
        group.surface.area = TouchedPixels(bounds, state().transform, state().clip);
    if (!group.surface.area.empty()) {
        group.storage = std::make_unique<uint32_t[]>(size_t(group.surface.area.width()) *
                                                     size_t(group.surface.area.height()));
        group.surface.pixels = group.storage.get();
    }
    states_.push_back({state().transform, group.surface.area, {}});
    groups_.push_back(std::move(group));
}

void RasterCanvas::endGroup() {
    if (groups_.empty()) return;
    while (states_.size() > groups_.back().outerStates)
        popState();
    Group group = std::move(groups_.back());
    groups_.pop_back();
    const PixelRect& area = group.surface.area;
    settle(area);
    for (int y = area.top; y < area.bottom; ++y)
        PixelsOver(surface().at(area.left, y), group.surface.at(area.left, y), area.width(), group.alpha,
                   nullptr);
}

} // namespace tallyforge

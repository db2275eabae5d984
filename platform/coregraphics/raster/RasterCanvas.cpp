#include "rastergraphics/RasterCanvas.h"

#include "rastergraphics/Coverage.h"
#include "rastergraphics/Resample.h"
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
        constexpr double kInvisible = 1.0 / 1024;
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
    SampleSink(const Surface& surface, const CGImage& image, const CGAffineTransform& pixelsToImage,
               int alpha, CGBlendMode mode)
        : surface_(surface), grid_(image, pixelsToImage), alpha_(alpha), mode_(mode) {}
    void span(int y, int x, int n, const uint8_t* coverage) override {
        samples_.resize(size_t(n));
        grid_.line(y, x, n, samples_.data());
        auto* paint = mode_ == kCGBlendModeSourceAtop ? PixelsAtop : PixelsOver;
        paint(surface_.at(x, y), samples_.data(), n, alpha_, coverage);
    }

  private:
    const Surface& surface_;
    SampleGrid grid_;
    int alpha_;
    CGBlendMode mode_;
    std::vector<uint32_t> samples_;
};

CGPath rectPath(const CGRect& rect) {
    CGPath path;
    path.addRect(rect);
    return path;
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

RasterCanvas::RasterCanvas(CGImage& bitmap, TextEngine& text) : text_(text) {
    base_.area = {0, 0, bitmap.width(), bitmap.height()};
    base_.pixels = base_.area.empty() ? nullptr : bitmap.row(0);
    states_.push_back({CGAffineTransformIdentity, base_.area, {}});
}

RasterCanvas::~RasterCanvas() {
    while (!groups_.empty())
        endGroup();
    while (states_.size() > 1)
        popState();
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
    for (size_t i = state().masks.size(); i-- > 0;)
        state().masks[i].apply(surface());
    states_.pop_back();
}

void RasterCanvas::flush() {
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
    mask.remember(surface());
    state().masks.push_back(std::move(mask));
}

void RasterCanvas::fillDeviceRect(const PixelRect& rect, const Ink& ink, CGBlendMode mode) {
    InkSink sink(surface(), ink, mode);
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
    InkSink sink(surface(), ink, mode);
    ScanConvert(path, state().transform, state().clip, sink);
}

void RasterCanvas::strokePath(const CGPath& path, const CGColor& color, CGFloat width, bool round) {
    Ink ink = MakeInk(color, 1);
    if (ink.nothing() || !paintable()) return;
    InkSink sink(surface(), ink, kCGBlendModeNormal);
    ScanConvert(StrokeOutline(path, state().transform, width, round), CGAffineTransformIdentity, state().clip,
                sink);
}

void RasterCanvas::drawImage(const CGImageRef& image, const CGRect& rect, CGFloat alpha, CGBlendMode mode) {
    if (!image || image->width() <= 0 || image->height() <= 0 || !paintable() || !finite(rect)) return;
    int fade = alphaByte(alpha);
    CGRect place = CGRectStandardize(rect);
    CGAffineTransform unitToPixels = CGAffineTransformConcat(
        {place.size.width, 0, 0, place.size.height, place.origin.x, place.origin.y}, state().transform);
    if (fade == 0 || !invertible(unitToPixels)) return;
    bool upright = unitToPixels.b == 0 && unitToPixels.c == 0 && unitToPixels.a > 0 && unitToPixels.d > 0;
    if (upright)
        drawUpright(*image, unitToPixels, fade, mode);
    else
        drawTurned(*image, unitToPixels, fade, mode);
}

void RasterCanvas::drawUpright(const CGImage& image, const CGAffineTransform& unitToPixels, int alpha,
                               CGBlendMode mode) {
    PixelRect area = TouchedPixels({{0, 0}, {1, 1}}, unitToPixels, state().clip);
    if (area.empty()) return;
    auto* paint = mode == kCGBlendModeSourceAtop ? PixelsAtop : PixelsOver;
    double left = unitToPixels.tx;
    double top = unitToPixels.ty;
    constexpr double kInvisible = 1.0 / 1024;
    auto same = [](double a, double b) { return std::fabs(a - b) < kInvisible; };
    if (same(unitToPixels.a, image.width()) && same(unitToPixels.d, image.height()) &&
        same(left, std::round(left)) && same(top, std::round(top))) {
        int x = int(std::round(left));
        int y = int(std::round(top));
        area = area.intersected({x, y, x + image.width(), y + image.height()});
        for (int row = area.top; row < area.bottom; ++row)
            paint(surface().at(area.left, row), image.row(row - y) + (area.left - x), area.width(), alpha,
                  nullptr);
        return;
    }
    std::vector<uint32_t> pixels;
    Stretch(image, {left, top, left + unitToPixels.a, top + unitToPixels.d}, area, pixels);
    const uint32_t* from = pixels.data();
    for (int row = area.top; row < area.bottom; ++row, from += area.width())
        paint(surface().at(area.left, row), from, area.width(), alpha, nullptr);
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
    CGAffineTransform imageToPixels = CGAffineTransformScale(unitToPixels, 1.0 / width, 1.0 / height);
    if (!invertible(imageToPixels)) return;
    SampleSink sink(surface(), *source, CGAffineTransformInvert(imageToPixels), alpha, mode);
    ScanConvert(rectPath({{0, 0}, {1, 1}}), unitToPixels, state().clip, sink);
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
    for (int y = area.top; y < area.bottom; ++y)
        PixelsOver(surface().at(area.left, y), group.surface.at(area.left, y), area.width(), group.alpha,
                   nullptr);
}

} // namespace tallyforge

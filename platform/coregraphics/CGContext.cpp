#include "coregraphics/CGContext.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tallyforge {

namespace {

constexpr int kLargestSide = 4096;

} // namespace

CGContext::CGContext(int pixelWidth, int pixelHeight, CGFloat scale)
    : bitmap_(std::make_shared<CGImage>(pixelWidth, pixelHeight)), scale_(scale) {}

std::shared_ptr<CGContext> CGContext::create(int pixelWidth, int pixelHeight, CGFloat scale, bool opaque) {
    Graphics* graphics = Graphics::current();
    if (!graphics || pixelWidth <= 0 || pixelHeight <= 0 || pixelWidth > kLargestSide ||
        pixelHeight > kLargestSide || !(scale > 0) || !std::isfinite(scale))
        return nullptr;
    std::shared_ptr<CGContext> context(new CGContext(pixelWidth, pixelHeight, scale));
    if (opaque) {
        for (int y = 0; y < pixelHeight; ++y)
            std::fill_n(context->bitmap_->row(y), pixelWidth, PixelFromColor({0, 0, 0, 1}));
    }
    context->canvas_ = graphics->makeCanvas(*context->bitmap_);
    if (!context->canvas_) return nullptr;
    context->canvas_->setTransform(CGAffineTransformMakeScale(scale, scale));
    return context;
}

Canvas& CGContext::canvas() {
    if (lent_) {
        // The canvas keeps the pixels it paints in; the image keeps its place in memory and gets a copy.
        auto own = std::make_shared<CGImage>(0, 0);
        if (bitmap_.use_count() > 1) *own = *bitmap_;
        std::swap(*own, *bitmap_);
        bitmap_ = std::move(own);
        lent_ = false;
    }
    return *canvas_;
}

CGImageRef CGContext::makeImage() {
    canvas_->flush();
    lent_ = true;
    return bitmap_;
}

const CGImage& CGContext::bitmap() {
    canvas_->flush();
    return *bitmap_;
}

void CGContext::saveState() {
    canvas_->save();
    saved_.push_back({fillColor, alpha, blendMode});
}

void CGContext::restoreState() {
    if (saved_.empty()) return;
    canvas().restore(); // which paints, where a path was the clip
    fillColor = saved_.back().fillColor;
    alpha = saved_.back().alpha;
    blendMode = saved_.back().blendMode;
    saved_.pop_back();
}

CGContextRef CGBitmapContextCreate(size_t width, size_t height) {
    if (width > size_t(kLargestSide) || height > size_t(kLargestSide)) return nullptr;
    return CGContext::create(int(width), int(height), 1, false);
}

CGImageRef CGBitmapContextCreateImage(const CGContextRef& context) {
    return context ? context->makeImage() : nullptr;
}

void CGContextSetFillColor(const CGContextRef& context, const CGColor& color) {
    if (context) context->fillColor = color;
}

void CGContextSetAlpha(const CGContextRef& context, CGFloat alpha) {
    if (context) context->alpha = alpha > 0 ? std::min(alpha, 1.0) : 0;
}

void CGContextSetBlendMode(const CGContextRef& context, CGBlendMode mode) {
    if (context) context->blendMode = mode;
}

void CGContextFillRect(const CGContextRef& context, const CGRect& rect) {
    if (context) context->canvas().fillRect(rect, context->fillColor, context->alpha, context->blendMode);
}

void CGContextMoveToPoint(const CGContextRef& context, CGFloat x, CGFloat y) {
    if (context) context->path.moveToPoint(x, y);
}

void CGContextAddLineToPoint(const CGContextRef& context, CGFloat x, CGFloat y) {
    if (context) context->path.addLineToPoint(x, y);
}

void CGContextClosePath(const CGContextRef& context) {
    if (context) context->path.closeSubpath();
}

void CGContextAddPath(const CGContextRef& context, const CGPath& path) {
    if (!context) return;
    for (const CGPath::Element& element : path.elements()) {
        const CGPoint& first = element.points[0];
        switch (element.verb) {
        case CGPath::Verb::move:
            context->path.moveToPoint(first.x, first.y);
            break;
        case CGPath::Verb::line:
            context->path.addLineToPoint(first.x, first.y);
            break;
        case CGPath::Verb::cubic:
            context->path.addCurveToPoint(first, element.points[1], element.points[2]);
            break;
        case CGPath::Verb::close:
            context->path.closeSubpath();
            break;
        }
    }
}

void CGContextFillPath(const CGContextRef& context) {
    if (!context) return;
    context->canvas().fillPath(context->path, context->fillColor, context->alpha, context->blendMode);
    context->path = {};
}

void CGContextClip(const CGContextRef& context) {
    if (!context || context->path.empty()) return;
    context->canvas().clipToPath(context->path);
    context->path = {};
}

void CGContextSaveGState(const CGContextRef& context) {
    if (context) context->saveState();
}

void CGContextRestoreGState(const CGContextRef& context) {
    if (context) context->restoreState();
}

void CGContextDrawImage(const CGContextRef& context, const CGRect& rect, const CGImageRef& image) {
    if (context) context->canvas().drawImage(image, rect, context->alpha, context->blendMode);
}

} // namespace tallyforge

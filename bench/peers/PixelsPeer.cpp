// Tinting an image and shrinking an icon, beside Cairo.

#include "CairoScene.h"
#include "PairedRuns.h"
#include "PictureDifference.h"
#include "Scenes.h"

#include "coregraphics/Canvas.h"
#include "uikit/UIImage.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace tallyforge {

namespace {

constexpr CGColor kTint{0.9, 0.3, 0.1, 1};
constexpr CGFloat kTintAlpha = 0.65;
constexpr int kIcon = 180;
constexpr int kShrunk = 120;
constexpr double kGoodEnough = 50; // dB

/// A real icon of 180 x 180 pixels.
CGImageRef icon() {
    auto image = UIImage::imageWithContentsOfFile("/Applications/AppStore.app/AppIcon60x60@3x.png");
    if (!image || image.bitmap()->width() != kIcon || image.bitmap()->height() != kIcon) std::abort();
    return image.bitmap();
}

CGImageRef resized(const CGImageRef& image, int side) {
    auto result = std::make_shared<CGImage>(side, side);
    Graphics::current()->makeCanvas(*result)->drawImage(image, {{0, 0}, {CGFloat(side), CGFloat(side)}});
    return result;
}

// A tint as marks get it: the colour atop what the image holds, in place. Both go on with what they have
// done, so neither copies.
void tint(const PairedRuns& runs, const char* item, int side) {
    CGImage ours = *resized(icon(), side);
    auto theirs = CairoSurfaceFromImage(ours);
    auto canvas = Graphics::current()->makeCanvas(ours);
    CairoOwned<cairo_t> context(cairo_create(theirs.get()));
    cairo_set_operator(context.get(), CAIRO_OPERATOR_ATOP);
    cairo_set_source_rgb(context.get(), kTint.red, kTint.green, kTint.blue);

    const CGRect all{{0, 0}, {CGFloat(side), CGFloat(side)}};
    const auto our = [&] { canvas->fillRect(all, kTint, kTintAlpha, kCGBlendModeSourceAtop); };
    const auto peer = [&] { cairo_paint_with_alpha(context.get(), kTintAlpha); };
    our();
    peer();
    canvas->flush();
    PairedRuns::remark(item, "one fill of the colour atop the image, in place on both sides; " +
                                 Describe(DifferenceOf(ours, ImageFromCairoSurface(theirs.get()))));
    runs.measure(item, our, peer);
}

/// Every pixel the average of the area that it covers.
CGImage areaAverage(const CGImage& image, int side) {
    CGImage result(side, side);
    const double step = double(image.width()) / side;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            double sums[4] = {};
            for (int v = int(y * step); v < (y + 1) * step; ++v) {
                for (int u = int(x * step); u < (x + 1) * step; ++u) {
                    const double share = (std::min((x + 1) * step, u + 1.0) - std::max(x * step, double(u))) *
                                         (std::min((y + 1) * step, v + 1.0) - std::max(y * step, double(v)));
                    for (int i = 0; i < 4; ++i)
                        sums[i] += share * double(image.pixel(u, v) >> (8 * i) & 255);
                }
            }
            uint32_t pixel = 0;
            for (int i = 0; i < 4; ++i)
                pixel |= uint32_t(std::lround(sums[i] / (step * step))) << (8 * i);
            result.row(y)[x] = pixel;
        }
    }
    return result;
}

/// An icon shrunk by Cairo into a surface of its own.
class CairoShrink {
  public:
    CairoShrink(const CGImage& image, cairo_filter_t filter)
        : target_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, kShrunk, kShrunk)),
          context_(cairo_create(target_.get())) {
        auto surface = CairoSurfaceFromImage(image);
        CairoOwned<cairo_pattern_t> pattern(cairo_pattern_create_for_surface(surface.get()));
        cairo_matrix_t toImage;
        cairo_matrix_init_scale(&toImage, double(kIcon) / kShrunk, double(kIcon) / kShrunk);
        cairo_pattern_set_matrix(pattern.get(), &toImage);
        cairo_pattern_set_filter(pattern.get(), filter);
        cairo_pattern_set_extend(pattern.get(), CAIRO_EXTEND_PAD); // or its border would be see-through
        cairo_set_source(context_.get(), pattern.get());
    }
    void draw() const { cairo_paint(context_.get()); }
    CGImage picture() const { return ImageFromCairoSurface(target_.get()); }

  private:
    CairoOwned<cairo_surface_t> target_;
    CairoOwned<cairo_t> context_;
};

void shrink(const PairedRuns& runs) {
    constexpr const char* item = "icon-180-120";
    const CGImageRef image = icon();
    CGImage target(kShrunk, kShrunk);
    auto canvas = Graphics::current()->makeCanvas(target);
    const CairoShrink good(*image, CAIRO_FILTER_GOOD), best(*image, CAIRO_FILTER_BEST);
    // Another image each time, as far as anybody can tell: nothing is kept from one to the next.
    const auto our = [&] {
        canvas->drawImage(CGImageRef(image.get(), [](const CGImage*) {}), {{0, 0}, {kShrunk, kShrunk}});
    };
    our();
    good.draw();
    best.draw();

    const CGImage exact = areaAverage(*image, kShrunk);
    const double ourDecibels = PeakSignalToNoise(target, exact);
    const double goodDecibels = PeakSignalToNoise(good.picture(), exact);
    const double bestDecibels = PeakSignalToNoise(best.picture(), exact);
    const std::string ourQuality =
        std::isinf(ourDecibels) ? "the very same pixels" : PairedRuns::figure(ourDecibels, 1) + " dB";
    PairedRuns::remark(item, "against an area average: ours " + ourQuality + ", Cairo's good filter " +
                                 PairedRuns::figure(goodDecibels, 1) + " dB, its best " +
                                 PairedRuns::figure(bestDecibels, 1) + " dB");
    if (!(ourDecibels >= kGoodEnough)) {
        std::fprintf(stderr, "tallyforge: icon: ours is under %g dB\n", kGoodEnough);
        std::exit(1);
    }
    const double goodSeconds = PairedRuns::secondsOf([&] { good.draw(); });
    const double bestSeconds = PairedRuns::secondsOf([&] { best.draw(); });
    PairedRuns::remark(item, "Cairo's good filter takes " + PairedRuns::figure(goodSeconds * 1e6, 1) +
                                 " us, its best " + PairedRuns::figure(bestSeconds * 1e6, 1) +
                                 " us; the pairs are with the good one");
    KeepPicture(target, "icon-ours");
    KeepPicture(good.picture(), "icon-cairo");
    runs.measure(item, our, [&] { good.draw(); });
}

void run(const PairedRuns& runs) {
    const FurnishedDevice device;
    tint(runs, "tint-48", 48);
    tint(runs, "tint-180", kIcon);
    shrink(runs);
}

} // namespace

} // namespace tallyforge

int main(int argc, char** argv) {
    tallyforge::run({argc, argv, "Tints images and shrinks an icon, ours and on Cairo in turn."});
    return 0;
}

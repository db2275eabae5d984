// Whatever is changed in whatever order: the bitmap that is only repaired must equal one that is painted
// anew.

#include "RandomTree.h"
#include "quartzcore/FrameUpdate.h"
#include "quartzcore/RenderServer.h"
#include "rastergraphics/RasterGraphics.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tallyforge {
namespace {

class RepairedFrames : public testing::TestWithParam<double> {
  protected:
    void SetUp() override { Graphics::install(MakeRasterGraphics()); }
    void TearDown() override { Graphics::install(nullptr); }
};

CGImage paintedAnew(const CALayer& root, double seconds, const CGAffineTransform& toPixels, int width,
                    int height) {
    CGImage picture(width, height);
    std::fill_n(picture.row(0), picture.pixels().size(), 0xFFFFFFFFU);
    RenderServer::paint(root, seconds, *Graphics::current()->makeCanvas(picture), toPixels);
    return picture;
}

bool liesIn(const std::vector<CGRect>& rects, int x, int y) {
    return std::any_of(rects.begin(), rects.end(), [x, y](const CGRect& rect) {
        return CGRectContainsPoint(rect, {CGFloat(x), CGFloat(y)});
    });
}

TEST_P(RepairedFrames, EqualThoseThatArePaintedAnew) {
    const double scale = GetParam();
    const int width = int(test::RandomTree::kWidth * scale), height = int(test::RandomTree::kHeight * scale);
    const CGAffineTransform toPixels{scale, 0, 0, scale, 0, 0};
    int partlyPainted = 0, frames = 0;
    for (unsigned seed = 1; seed <= 40; ++seed) {
        test::RandomTree tree(seed * 7 + unsigned(scale * 1000));
        CAFrameUpdater updater;
        CGImage bitmap(width, height), before(width, height);
        double seconds = 100;
        for (int frame = 0; frame < 60; ++frame, seconds += 0.03) {
            for (int edits = frame % 3; edits > 0; --edits)
                tree.change(seconds);
            before = bitmap;
            const auto painted = updater.update(*tree.root(), seconds, toPixels, bitmap);
            const CGImage wanted = paintedAnew(*tree.root(), seconds, toPixels, width, height);
            CGFloat area = 0;
            for (const CGRect& rect : painted)
                area += rect.size.width * rect.size.height;
            ++frames;
            partlyPainted += area < 0.5 * width * height;
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x) {
                    ASSERT_EQ(bitmap.pixel(x, y), wanted.pixel(x, y))
                        << "seed " << seed << ", frame " << frame << ", pixel " << x << ", " << y
                        << (liesIn(painted, x, y) ? ", painted again" : ", left alone");
                    if (bitmap.pixel(x, y) != before.pixel(x, y)) {
                        ASSERT_TRUE(liesIn(painted, x, y)) << "changed but not told of";
                    }
                }
            }
        }
    }
    EXPECT_GT(partlyPainted, frames / 4); // or nothing has been proved
}

INSTANTIATE_TEST_SUITE_P(Scales, RepairedFrames, testing::Values(1, 1.5, 2, 3));

} // namespace
} // namespace tallyforge

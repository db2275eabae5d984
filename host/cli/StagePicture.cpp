#include "cli/StagePicture.h"

#include "quartzcore/RenderServer.h"

namespace tallyforge {

namespace {

constexpr double kMostPixels = 4096;

} // namespace

Result<std::shared_ptr<CGImage>> StagePicture(const CALayer& layer, const CGSize& size, double time,
                                              double scale) {
    if (size.width * scale > kMostPixels || size.height * scale > kMostPixels)
        return Error{"the picture would be over 4096 pixels wide or high"};
    auto picture = RenderServer::render(layer, time, scale);
    if (!picture) return Error{"the picture would be under one pixel wide or high"};
    return picture;
}

} // namespace tallyforge

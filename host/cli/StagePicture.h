#pragma once

#include "coregraphics/CGGeometry.h"
#include "coregraphics/CGImage.h"
#include "foundation/Result.h"

#include <memory>

namespace tallyforge {

class CALayer;

/// The layer as it is on screen at that moment (seconds), so many pixels a point; an error when it is under
/// one pixel or over 4096 in a direction.
Result<std::shared_ptr<CGImage>> StagePicture(const CALayer& layer, const CGSize& size, double time,
                                              double scale);

} // namespace tallyforge

#pragma once

#include "coregraphics/Canvas.h"

#include <memory>

namespace tallyforge {

/// The drawing of this machine, ready to be installed. The first text drawn or measured costs the loading of
/// fonts.
std::unique_ptr<Graphics> MakeRasterGraphics();

} // namespace tallyforge

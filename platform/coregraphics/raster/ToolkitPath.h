#pragma once

#include "coregraphics/CGPath.h"

class QPainterPath;

namespace tallyforge {

/// The same lines and curves, every subpath closed.
CGPath PathFromToolkit(const QPainterPath& path);

} // namespace tallyforge

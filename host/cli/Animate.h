#pragma once

#include "cli/PreviewStage.h"
#include "foundation/Result.h"

#include <cstdint>
#include <vector>

namespace tallyforge {

/// The stage's next seconds as an animated WebP that loops forever. Shows its progress on a terminal.
Result<std::vector<uint8_t>> AnimatePreview(PreviewStage& stage, double seconds, double framesPerSecond);

} // namespace tallyforge

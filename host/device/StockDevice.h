#pragma once

#include "foundation/Result.h"

#include <filesystem>

namespace tallyforge {

/// Puts the files of the stock device into the folder, once: a stamp there says that it has been done with
/// these very files, and then nothing is touched. Until the stamp is written every file that is missing, or
/// of which only a part is there, is written whole, so that a furnishing that was cut short is finished by
/// the next one; a file that was changed since stays. A stamp of other files adds only what is missing.
/// Several programs may do this at the same time.
Status FurnishStockDevice(const std::filesystem::path& device, const std::filesystem::path& stock);

} // namespace tallyforge

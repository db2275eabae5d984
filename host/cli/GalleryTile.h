#pragma once

#include "coregraphics/CGGeometry.h"
#include "coregraphics/CGImage.h"

#include <memory>
#include <string>

namespace tallyforge {

/// What is behind the tiles, and around them.
inline constexpr uint32_t kGalleryPaper = 0xFFF5F5F8; // 0xAARRGGBB

/// How large one tile is in points: a phone's or a tablet's screen, and the name below it.
CGSize GalleryTileSize();

/// One tile: the present settings in a preview, as an icon on the home screen, over the name. The picture is
/// of that many pixels a point; nullptr where nothing draws.
std::shared_ptr<CGImage> DrawGalleryTile(const std::string& name, double scale);

} // namespace tallyforge

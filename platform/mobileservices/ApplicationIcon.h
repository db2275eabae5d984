#pragma once

#include "uikit/UIImage.h"

#include <string_view>

namespace tallyforge {

/// `UIImage`'s `_applicationIconImageForBundleIdentifier:format:scale:`: the application's icon as the system
/// shows it, with round corners. Format 0 is the size for rows of a list, 29 points; 1 is 40 points; 2 the
/// home screen's own, 60 points or on a tablet 76. No image for an application that is not installed, has no
/// icon that can be read, or an icon over 1024 pixels wide or high; nor for another format.
UIImage UIImageApplicationIconForBundleIdentifier(std::string_view identifier, int format, CGFloat scale);

} // namespace tallyforge

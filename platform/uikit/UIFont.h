#pragma once

#include "coregraphics/Canvas.h"

#include <string_view>

namespace tallyforge {

/// A font of the system's family at a size in points.
class UIFont {
  public:
    static UIFont systemFontOfSize(CGFloat size) { return UIFont({size, 400}); }
    static UIFont semiboldSystemFontOfSize(CGFloat size) { return UIFont({size, 600}); }

    CGFloat pointSize() const { return face_.size; }
    const FontFace& face() const { return face_; }
    bool operator==(const UIFont&) const = default;

  private:
    explicit UIFont(const FontFace& face) : face_(face) {}
    FontFace face_;
};

/// How much of the box a text takes, in points: its own width, but never more than the box has, and the
/// height of a line. Zero where nothing draws on this machine.
CGSize NSStringBoundingSize(std::string_view text, const CGSize& box, const UIFont& font);

} // namespace tallyforge

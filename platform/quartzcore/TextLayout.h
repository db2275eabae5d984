#pragma once

#include "coregraphics/Canvas.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// Text broken into the lines that are drawn.
struct CATextLines {
    struct Line {
        std::string text;
        CGFloat width = 0;
    };
    std::vector<Line> lines;
    CGFloat ascent = 0;
    CGFloat lineHeight = 0;
    /// Whether text had to be left out.
    bool truncated = false;
};

/// Lays text out in a room of this size. One line, or with `wrapped` as many as fit the height (always at
/// least one), broken at spaces and line feeds, and within a word only where the word alone is too wide. What
/// does not fit is cut at the end and an ellipsis takes its place. No lines where there is no text, no width
/// or no height, nothing measures text on this machine, or not even the ellipsis fits.
/// The latest results are kept for the calling thread.
std::shared_ptr<const CATextLines> CALayOutText(std::string_view utf8, const FontFace& font,
                                                const CGSize& room, bool wrapped);

} // namespace tallyforge

#pragma once

#include "coregraphics/Canvas.h"

#include <string>
#include <variant>
#include <vector>

namespace tallyforge {

class CALayer;

/// What a layer tree draws at one moment, as the calls that it makes on its canvas: the same picture can then
/// be drawn by another library, which need not know layers.
struct DisplayList {
    struct Save {};
    struct Restore {};
    struct ClipRect {
        CGRect rect;
    };
    struct ClipPath {
        CGPath path;
    };
    struct FillRect {
        CGRect rect;
        CGColor color; ///< alpha included
    };
    struct FillPath {
        CGPath path;
        CGColor color;
    };
    struct StrokePath {
        CGPath path;
        CGColor color;
        CGFloat width;
        bool round;
    };
    struct Image {
        CGImageRef image;
        CGRect rect;
        CGFloat alpha;
    };
    struct Text {
        std::string utf8;
        FontFace font;
        CGPoint baseline;
        CGColor color;
    };
    struct BeginGroup {
        CGRect bounds;
        CGFloat alpha;
    };
    struct EndGroup {};

    struct Command {
        CGAffineTransform toPixels;
        std::variant<Save, Restore, ClipRect, ClipPath, FillRect, FillPath, StrokePath, Image, Text,
                     BeginGroup, EndGroup>
            what;
    };

    int width = 0;  ///< pixels
    int height = 0; ///< pixels
    std::vector<Command> commands;
};

/// What the render server paints of the tree into a bitmap of that size. Only the normal blend mode occurs.
DisplayList RecordDisplayList(const CALayer& root, CGFloat seconds, const CGAffineTransform& toPixels,
                              int width, int height);

} // namespace tallyforge

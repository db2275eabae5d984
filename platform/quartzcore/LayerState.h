#pragma once

#include "quartzcore/CALayer.h"
#include "quartzcore/Presentation.h"

namespace tallyforge {

/// What a layer comes to at one moment under those it lies in: all that decides how its parts are drawn.
struct CALayerState {
    CAPresentation values;
    CGRect bounds;              ///< with a positive size
    CGAffineTransform toPixels; ///< from its own coordinates
    CGFloat alpha = 0;          ///< its own and what superlayers that are not flattened hand down
    bool shown = false;         ///< whether anything of it or in it may be drawn
    bool flattened = false;     ///< drawn as a group, which is then faded

    /// What parts and sublayers are drawn with.
    CGFloat alphaOfParts() const { return flattened ? 1 : alpha; }
    /// Of the corners as they are drawn.
    CGFloat radius() const;
};

/// `superToPixels` is from the superlayer's coordinates, `handedDown` the superlayer's alphaOfParts().
CALayerState CAStateOf(const CALayer& layer, CGFloat seconds, const CGAffineTransform& superToPixels,
                       CGFloat handedDown);
/// The same from values known already and the transform of the layer's own coordinates.
CALayerState CAStateOf(const CALayer& layer, const CAPresentation& values, const CGAffineTransform& toPixels,
                       CGFloat handedDown);

/// Where contents of their size lie in the bounds. The layer has contents.
CGRect CAContentsRect(const CALayer& layer, const CGRect& bounds);

/// How far what the layer itself shows may reach, in its own coordinates.
CGRect CAOwnReach(const CALayer& layer, const CGRect& bounds);
/// How far the layer and everything in it may reach, in its own coordinates.
CGRect CAReach(const CALayer& layer, const CAPresentation& values, CGFloat seconds);

/// Whether drawing in this colour leaves anything.
inline bool CAShows(const std::optional<CGColor>& color) {
    return color && color->alpha > 0;
}

} // namespace tallyforge

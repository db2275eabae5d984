#pragma once

#include "quartzcore/CALayer.h"

#include <optional>

namespace tallyforge {

/// The animatable values of a layer as they are on screen at a time.
struct CAPresentation {
    CGRect bounds;
    CGPoint position;
    CGPoint anchorPoint;
    CATransform3D transform;
    CGFloat opacity = 1;
    CGFloat cornerRadius = 0;
    CGFloat borderWidth = 0;
};

/// The model values with the layer's animations applied in the order in which they were added. Times are
/// seconds of the main queue's clock. An animation that has not begun or has ended counts only as its fill
/// mode says.
CAPresentation CAPresentationAt(const CALayer& layer, CGFloat seconds);

/// The present time of the main queue's clock, in seconds.
CGFloat CACurrentMediaTime();

/// Whether anything that can be seen in the tree still changes after this time without being touched.
/// Hidden layers, and animations of key paths that no layer has, do not count.
bool CAIsAnimating(const CALayer& root, CGFloat seconds);

/// Whether an animation of this very layer has not ended at this time.
bool CAHasUnfinishedAnimation(const CALayer& layer, CGFloat seconds);

/// Takes away animations that have ended and are removed on completion, in the whole tree.
void CARemoveFinishedAnimations(CALayer& root, CGFloat seconds);

} // namespace tallyforge

#pragma once

#include "coregraphics/CGImage.h"
#include "coregraphics/Canvas.h"
#include "quartzcore/CAAnimation.h"
#include "quartzcore/CATransform3D.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// How contents fill the bounds.
enum class CAGravity {
    resize,
    resizeAspect,
    resizeAspectFill,
    center,
    top,
    bottom,
    left,
    right,
    topLeft,
    topRight,
    bottomLeft,
    bottomRight
};

/// A rectangle of the screen: where it is, what it shows, and what is on top of it. These are the model
/// values; what is on screen at a time (see Presentation.h) also depends on the animations.
///
/// The frame is never stored: it follows from bounds, position, anchor point and transform.
class CALayer : public std::enable_shared_from_this<CALayer> {
  public:
    CALayer() = default;
    CALayer(const CALayer&) = delete;
    CALayer& operator=(const CALayer&) = delete;
    virtual ~CALayer();

    CGRect bounds() const { return bounds_; }
    void setBounds(const CGRect& bounds) { place(bounds_, bounds); }
    CGPoint position() const { return position_; }
    void setPosition(const CGPoint& position) { place(position_, position); }
    /// In shares of the bounds; changing it keeps the position, so the layer moves on screen.
    CGPoint anchorPoint() const { return anchorPoint_; }
    void setAnchorPoint(const CGPoint& anchorPoint) { place(anchorPoint_, anchorPoint); }
    const CATransform3D& transform() const { return transform_; }
    void setTransform(const CATransform3D& transform) { place(transform_, transform); }
    CGAffineTransform affineTransform() const { return CATransform3DGetAffineTransform(transform_); }
    void setAffineTransform(const CGAffineTransform& t) { setTransform(CATransform3DMakeAffineTransform(t)); }
    /// The bounding box of the transformed bounds in the superlayer.
    CGRect frame() const;
    /// Sets bounds size and position so that the frame becomes this one (with the transform undone where it
    /// has an inverse).
    void setFrame(const CGRect& frame);

    float opacity() const { return opacity_; }
    void setOpacity(float opacity) { place(opacity_, opacity); }
    bool hidden() const { return hidden_; }
    void setHidden(bool hidden) { place(hidden_, hidden); }
    const std::optional<CGColor>& backgroundColor() const { return backgroundColor_; }
    void setBackgroundColor(std::optional<CGColor> color) { look(backgroundColor_, color); }
    const CGImageRef& contents() const { return contents_; }
    void setContents(CGImageRef image) { look(contents_, std::move(image)); }
    /// Pixels of the contents per point; matters for gravities that do not scale.
    CGFloat contentsScale() const { return contentsScale_; }
    void setContentsScale(CGFloat scale) { look(contentsScale_, scale); }
    CAGravity contentsGravity() const { return contentsGravity_; }
    void setContentsGravity(CAGravity gravity) { look(contentsGravity_, gravity); }
    /// Inside the bounds, above contents and sublayers.
    CGFloat borderWidth() const { return borderWidth_; }
    void setBorderWidth(CGFloat width) { look(borderWidth_, width); }
    const std::optional<CGColor>& borderColor() const { return borderColor_; }
    void setBorderColor(std::optional<CGColor> color) { look(borderColor_, color); }
    /// Rounds background and border; clips contents and sublayers only with masksToBounds.
    CGFloat cornerRadius() const { return cornerRadius_; }
    void setCornerRadius(CGFloat radius) { look(cornerRadius_, radius); }
    bool masksToBounds() const { return masksToBounds_; }
    void setMasksToBounds(bool on) { look(masksToBounds_, on); }

    CALayer* superlayer() const { return superlayer_; }
    const std::vector<std::shared_ptr<CALayer>>& sublayers() const { return sublayers_; }
    void addSublayer(std::shared_ptr<CALayer> layer);
    void insertSublayer(std::shared_ptr<CALayer> layer, size_t index);
    void removeFromSuperlayer();

    /// Takes a copy. Under a key that is in use it replaces that animation. Without a begin time it begins at
    /// the main queue's present time.
    void addAnimation(const CAAnimation& animation, std::string_view key);
    void removeAnimationForKey(std::string_view key);
    void removeAllAnimations();
    const CAAnimation* animationForKey(std::string_view key) const;

    struct KeyedAnimation {
        std::string key;
        std::shared_ptr<const CAAnimation> animation;
    };
    /// In the order in which they were added.
    const std::vector<KeyedAnimation>& animations() const { return animations_; }

    /// Goes up with every change of this layer or of anything below it; setting a value that is there already
    /// is no change.
    uint64_t revision() const { return revision_; }
    /// Goes up with every change of what the layer itself shows; not with its place, size, opacity and
    /// animations.
    uint64_t ownRevision() const { return ownRevision_; }
    /// No other layer has or ever had the same.
    uint64_t serial() const { return serial_; }

    /// How far the layer and everything in it reach, kept by whoever works it out for as long as the revision
    /// stays the same.
    struct KeptReach {
        uint64_t revision = UINT64_MAX;
        CGRect reach;
    };
    KeptReach& keptReach() const { return keptReach_; }

  protected:
    void changed();
    template <typename Value>
    void place(Value& member, Value value) {
        if (member == value) return;
        member = std::move(value);
        changed();
    }
    template <typename Value>
    void look(Value& member, Value value) {
        if (member == value) return;
        member = std::move(value);
        ++ownRevision_;
        changed();
    }

  private:
    static uint64_t nextSerial();

    CGRect bounds_;
    CGPoint position_;
    CGPoint anchorPoint_{0.5, 0.5};
    CATransform3D transform_;
    float opacity_ = 1;
    bool hidden_ = false;
    std::optional<CGColor> backgroundColor_;
    CGImageRef contents_;
    CGFloat contentsScale_ = 1;
    CAGravity contentsGravity_ = CAGravity::resize;
    CGFloat borderWidth_ = 0;
    std::optional<CGColor> borderColor_ = CGColor{0, 0, 0, 1};
    CGFloat cornerRadius_ = 0;
    bool masksToBounds_ = false;
    CALayer* superlayer_ = nullptr;
    std::vector<std::shared_ptr<CALayer>> sublayers_;
    std::vector<KeyedAnimation> animations_;
    uint64_t revision_ = 0;
    uint64_t ownRevision_ = 0;
    uint64_t serial_ = nextSerial();
    mutable KeptReach keptReach_;
};

enum class CATextAlignment { left, center, right };

/// Shows text, sharp at any scale: one line, vertically centred, shortened with an ellipsis at the end where
/// it does not fit; or with `wrapped`, as many lines as there is room for, broken at spaces.
class CATextLayer final : public CALayer {
  public:
    const std::string& string() const { return string_; }
    void setString(std::string text) { look(string_, std::move(text)); }
    const FontFace& font() const { return font_; }
    void setFont(const FontFace& font) { look(font_, font); }
    const CGColor& foregroundColor() const { return foregroundColor_; }
    void setForegroundColor(const CGColor& color) { look(foregroundColor_, color); }
    CATextAlignment alignmentMode() const { return alignment_; }
    void setAlignmentMode(CATextAlignment alignment) { look(alignment_, alignment); }
    bool wrapped() const { return wrapped_; }
    void setWrapped(bool on) { look(wrapped_, on); }

  private:
    std::string string_;
    FontFace font_{17, 400};
    CGColor foregroundColor_{0, 0, 0, 1};
    CATextAlignment alignment_ = CATextAlignment::left;
    bool wrapped_ = false;
};

/// Shows a path in its own coordinates, filled and stroked.
class CAShapeLayer final : public CALayer {
  public:
    const CGPathRef& path() const { return path_; }
    void setPath(CGPathRef path) { look(path_, std::move(path)); }
    const std::optional<CGColor>& fillColor() const { return fillColor_; }
    void setFillColor(std::optional<CGColor> color) { look(fillColor_, color); }
    const std::optional<CGColor>& strokeColor() const { return strokeColor_; }
    void setStrokeColor(std::optional<CGColor> color) { look(strokeColor_, color); }
    CGFloat lineWidth() const { return lineWidth_; }
    void setLineWidth(CGFloat width) { look(lineWidth_, width); }

  private:
    CGPathRef path_;
    std::optional<CGColor> fillColor_ = CGColor{0, 0, 0, 1};
    std::optional<CGColor> strokeColor_;
    CGFloat lineWidth_ = 1;
};

} // namespace tallyforge

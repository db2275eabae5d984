#pragma once

#include "quartzcore/CALayer.h"
#include "runtime/ClassRegistry.h"
#include "uikit/UIColor.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tallyforge {

class UIGestureRecognizer;

/// The platform's numbers of the content modes that occur.
enum class UIViewContentMode { scaleToFill = 0, scaleAspectFit = 1, scaleAspectFill = 2, center = 4 };
inline constexpr auto UIViewContentModeScaleToFill = UIViewContentMode::scaleToFill;
inline constexpr auto UIViewContentModeScaleAspectFit = UIViewContentMode::scaleAspectFit;

/// A rectangle that shows something and takes touches; it stands for its layer, which holds all geometry.
/// A view owns its subviews; a view knows its superview only as long as that one holds it.
class UIView : public NSObject {
  public:
    UIView() : UIView(CGRectZero) {}
    explicit UIView(const CGRect& frame);
    ~UIView() override;
    UIView(const UIView&) = delete;
    UIView& operator=(const UIView&) = delete;

    /// The class's name on the platform.
    virtual const char* className() const { return "UIView"; }

    const std::shared_ptr<CALayer>& layer() const { return layer_; }
    CGRect frame() const { return layer_->frame(); }
    virtual void setFrame(const CGRect& frame) { layer_->setFrame(frame); }
    CGRect bounds() const { return layer_->bounds(); }
    void setBounds(const CGRect& bounds) { layer_->setBounds(bounds); }
    CGPoint center() const { return layer_->position(); }
    void setCenter(const CGPoint& center) { layer_->setPosition(center); }
    CGAffineTransform transform() const { return layer_->affineTransform(); }
    void setTransform(const CGAffineTransform& t) { layer_->setAffineTransform(t); }
    CGFloat alpha() const { return layer_->opacity(); }
    void setAlpha(CGFloat alpha) { layer_->setOpacity(static_cast<float>(alpha)); }
    bool hidden() const { return layer_->hidden(); }
    void setHidden(bool hidden) { layer_->setHidden(hidden); }
    std::optional<UIColor> backgroundColor() const;
    void setBackgroundColor(const std::optional<UIColor>& color);
    UIViewContentMode contentMode() const { return contentMode_; }
    virtual void setContentMode(UIViewContentMode mode) { contentMode_ = mode; }
    int tag() const { return tag_; }
    void setTag(int tag) { tag_ = tag; }

    UIView* superview() const { return superview_; }
    const std::vector<std::shared_ptr<UIView>>& subviews() const { return subviews_; }
    /// To the front of the others; a view that has another superview leaves it first.
    /// A view that would then be within itself, and no view, are left alone.
    void addSubview(std::shared_ptr<UIView> view);
    void insertSubviewAtIndex(std::shared_ptr<UIView> view, size_t index);
    void removeFromSuperview();

    virtual void layoutSubviews() {}

    void addGestureRecognizer(std::shared_ptr<UIGestureRecognizer> recognizer);
    const std::vector<std::shared_ptr<UIGestureRecognizer>>& gestureRecognizers() const {
        return recognizers_;
    }

  protected:
    UIView(const CGRect& frame, std::shared_ptr<CALayer> layer);

  private:
    std::shared_ptr<CALayer> layer_;
    UIView* superview_ = nullptr;
    std::vector<std::shared_ptr<UIView>> subviews_;
    std::vector<std::shared_ptr<UIGestureRecognizer>> recognizers_;
    UIViewContentMode contentMode_ = UIViewContentModeScaleToFill;
    int tag_ = 0;
};

} // namespace tallyforge

#pragma once

#include "quartzcore/CALayer.h"
#include "runtime/ClassRegistry.h"
#include "uikit/UIColor.h"
#include "uikit/UITouch.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tallyforge {

class UIGestureRecognizer;
class UIWindow;

/// The platform's numbers of the content modes that occur.
enum class UIViewContentMode { scaleToFill = 0, scaleAspectFit = 1, scaleAspectFill = 2, center = 4 };
inline constexpr auto UIViewContentModeScaleToFill = UIViewContentMode::scaleToFill;
inline constexpr auto UIViewContentModeScaleAspectFit = UIViewContentMode::scaleAspectFit;

/// A rectangle that shows something and takes touches; it stands for its layer, which holds all geometry.
/// A view owns its subviews; a view knows its superview only as long as that one holds it.
class UIView : public NSObject, public std::enable_shared_from_this<UIView> {
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
    virtual void setFrame(const CGRect& frame);
    CGRect bounds() const { return layer_->bounds(); }
    void setBounds(const CGRect& bounds);
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
    bool clipsToBounds() const { return layer_->masksToBounds(); }
    void setClipsToBounds(bool on) { layer_->setMasksToBounds(on); }
    int tag() const { return tag_; }
    void setTag(int tag) { tag_ = tag; }
    /// This view or the first one below it, depth first, with the tag; nullptr without one.
    UIView* viewWithTag(int tag);

    UIView* superview() const { return superview_; }
    const std::vector<std::shared_ptr<UIView>>& subviews() const { return subviews_; }
    /// To the front of the others; a view that has another superview leaves it first.
    /// A view that would then be within itself, and no view, are left alone.
    void addSubview(std::shared_ptr<UIView> view);
    void insertSubviewAtIndex(std::shared_ptr<UIView> view, size_t index);
    void removeFromSuperview();

    void removeAllSubviews();
    bool isDescendantOf(const UIView& view) const;
    /// The window that the view is in, or nullptr.
    UIWindow* window() const;
    CGPoint convertPointToView(const CGPoint& point, const UIView* view) const; ///< nullptr: the window
    CGPoint convertPointFromView(const CGPoint& point, const UIView* view) const;
    CGRect convertRectToView(const CGRect& rect, const UIView* view) const;

    /// Places the subviews. Called before the next frame after the size or the subviews have changed.
    virtual void layoutSubviews() {}
    void setNeedsLayout();
    /// Lays out this view and all below it, as far as they need it.
    void layoutIfNeeded();

    bool userInteractionEnabled() const { return userInteractionEnabled_; }
    void setUserInteractionEnabled(bool enabled) { userInteractionEnabled_ = enabled; }
    /// The deepest view under the point (in this view's coordinates) that takes touches; nullptr without one.
    /// Hidden and nearly transparent views take none.
    virtual UIView* hitTest(const CGPoint& point);
    virtual bool pointInside(const CGPoint& point) const;
    /// The window calls these on the view that was touched first; the default hands them to the superview.
    virtual void touchesBegan(const UITouch& touch);
    virtual void touchesMoved(const UITouch& touch);
    virtual void touchesEnded(const UITouch& touch);
    virtual void touchesCancelled(const UITouch& touch);
    /// A finger has come down on this view or on one below it, whoever gets the touch.
    virtual void fingerCameDown() {}
    /// Asked of the touched view and those above it before a recogniser of a view above begins.
    virtual bool gestureRecognizerShouldBegin(const UIGestureRecognizer&) { return true; }

    /// Whether the keyboard can reach this view.
    virtual bool canBecomeFocused() const { return false; }
    bool focused() const { return focused_; }
    /// Called by the window; a view that has a look of its own for it overrides this.
    virtual void setFocused(bool focused) { focused_ = focused; }
    /// What the focused view does with a key; false leaves it to the views above and then to the window.
    virtual bool pressKey(UIKey) { return false; }

    /// What this view shows as text to people and tests, or is called where it shows none.
    virtual std::string accessibilityLabel() const { return accessibilityLabel_; }
    void setAccessibilityLabel(std::string label) { accessibilityLabel_ = std::move(label); }

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
    std::string accessibilityLabel_;
    bool userInteractionEnabled_ = true;
    bool focused_ = false;
    bool needsLayout_ = true;
    bool layingOut_ = false;
    bool subtreeNeedsLayout_ = true;
};

/// The view itself or the nearest one above it of that class; nullptr without one.
template <class View>
View* enclosing(UIView* view) {
    for (; view; view = view->superview()) {
        if (auto* found = dynamic_cast<View*>(view)) return found;
    }
    return nullptr;
}

} // namespace tallyforge

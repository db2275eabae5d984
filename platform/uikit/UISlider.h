#pragma once

#include "uikit/UIControl.h"

namespace tallyforge {

class UIImageView;

/// A thumb on a track, for a value between two bounds. Only the thumb can be grabbed; elsewhere the slider
/// leaves the finger to what scrolls below it.
class UISlider final : public UIControl {
  public:
    UISlider() : UISlider(CGRectMake(0, 0, 118, 31)) {}
    explicit UISlider(const CGRect& frame);

    const char* className() const override { return "UISlider"; }
    float value() const { return value_; }
    /// Held to the bounds; what is no number becomes the minimum. Tells nobody.
    void setValue(float value);
    float minimumValue() const { return minimum_; }
    float maximumValue() const { return maximum_; }
    /// A bound that passes the other one takes it along; infinite ones are left out.
    void setMinimumValue(float minimum);
    void setMaximumValue(float maximum);
    /// Whether it tells of every movement or only when the thumb is let go; continuous unless told otherwise.
    bool continuous() const { return continuous_; }
    void setContinuous(bool continuous) { continuous_ = continuous; }
    void setMinimumTrackTintColor(const UIColor& color);
    void setThumbTintColor(const UIColor& color);
    /// How far an arrow key moves the thumb; a hundredth of the range unless told otherwise.
    void setKeyStep(float step) { keyStep_ = step; }

    /// The thumb's centre in the slider's own coordinates, for a value.
    CGPoint thumbCentreForValue(float value) const;

    void setEnabled(bool enabled) override;
    void layoutSubviews() override;
    bool pointInside(const CGPoint& point) const override; ///< at least 44 points high
    /// None, while the thumb is held.
    bool gestureRecognizerShouldBegin(const UIGestureRecognizer& recognizer) override;
    /// Left: smaller; right: larger; home, end: the bounds. Tells like a drag that ends.
    bool pressKey(UIKey key) override;

  protected:
    bool beginTracking(const UITouch& touch) override;
    void continueTracking(const UITouch& touch) override;
    void endTracking(const UITouch& touch) override;
    void cancelTracking() override;

  private:
    float valueForThumbCentre(CGFloat x) const;
    float value_ = 0;
    float minimum_ = 0;
    float maximum_ = 1;
    float keyStep_ = 0;
    bool continuous_ = true;
    float valueWhenGrabbed_ = 0;
    CGFloat grip_ = 0; // from the finger to the thumb's centre
    std::shared_ptr<UIView> minimumTrack_;
    std::shared_ptr<UIView> maximumTrack_;
    std::shared_ptr<UIImageView> thumb_;
};

} // namespace tallyforge

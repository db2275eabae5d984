#pragma once

#include "uikit/UIImage.h"
#include "uikit/UIView.h"

namespace tallyforge {

/// Shows an image.
class UIImageView final : public UIView {
  public:
    /// Takes the image's size in points, at the origin; no image has none.
    explicit UIImageView(const UIImage& image);

    const char* className() const override { return "UIImageView"; }
    const UIImage& image() const { return image_; }
    /// Does not change the frame.
    void setImage(const UIImage& image);
    void setContentMode(UIViewContentMode mode) override;

  private:
    UIImage image_;
};

} // namespace tallyforge

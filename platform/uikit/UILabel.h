#pragma once

#include "uikit/UIFont.h"
#include "uikit/UIView.h"

#include <string>

namespace tallyforge {

/// The platform's numbers.
enum class NSTextAlignment { left = 0, center = 1, right = 2 };
inline constexpr auto NSTextAlignmentCenter = NSTextAlignment::center;
inline constexpr auto NSTextAlignmentRight = NSTextAlignment::right;

/// Shows text: black, 17 points, one line, from the left, until told otherwise.
class UILabel final : public UIView {
  public:
    explicit UILabel(const CGRect& frame);

    const char* className() const override { return "UILabel"; }
    const std::string& text() const { return textLayer().string(); }
    void setText(std::string text) { textLayer().setString(std::move(text)); }
    const UIFont& font() const { return font_; }
    void setFont(const UIFont& font);
    const UIColor& textColor() const { return textColor_; }
    void setTextColor(const UIColor& color);
    /// A label that is not enabled is grey, whatever its colour.
    bool enabled() const { return enabled_; }
    void setEnabled(bool enabled);
    /// 1: one line; 0: as many as there is room for.
    int numberOfLines() const { return textLayer().wrapped() ? 0 : 1; }
    void setNumberOfLines(int lines) { textLayer().setWrapped(lines != 1); }
    std::string accessibilityLabel() const override { return text(); }
    NSTextAlignment textAlignment() const { return alignment_; }
    void setTextAlignment(NSTextAlignment alignment);

  private:
    CATextLayer& textLayer() const { return static_cast<CATextLayer&>(*layer()); }
    UIColor textColor_ = UIColor::blackColor();
    bool enabled_ = true;
    UIFont font_ = UIFont::systemFontOfSize(17);
    NSTextAlignment alignment_ = NSTextAlignment::left;
};

} // namespace tallyforge

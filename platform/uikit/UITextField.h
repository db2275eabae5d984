#pragma once

#include "uikit/UIControl.h"
#include "uikit/UIFont.h"

#include <string>
#include <string_view>

namespace tallyforge {

class UILabel;

/// One line of text that a person edits, with a caret that blinks while it is edited. Positions are byte
/// offsets at character boundaries as people see them.
class UITextField final : public UIControl {
  public:
    explicit UITextField(const CGRect& frame);
    ~UITextField() override;

    const char* className() const override { return "UITextField"; }
    const std::string& text() const { return text_; }
    /// Puts the caret at the end.
    void setText(std::string text);
    void setPlaceholder(std::string text);
    void setFont(const UIFont& font);
    size_t caret() const { return caret_; }

    bool editing() const { return editing_; }
    void beginEditing();
    void endEditing();

    /// At the caret; control characters are left out.
    void insertText(std::string_view utf8);
    /// What an input method has not yet decided on, shown underlined at the caret; it is no part of `text`.
    void setMarkedText(std::string_view utf8);
    const std::string& markedText() const { return marked_; }
    /// The caret in the window, where an input method puts its list.
    CGRect caretRectInWindow() const;

    void layoutSubviews() override;
    void touchesEnded(const UITouch& touch) override;
    void setFocused(bool focused) override;
    bool pressKey(UIKey key) override;

  private:
    void changed();
    void blink();
    size_t boundaryBefore(size_t offset) const;
    size_t boundaryAfter(size_t offset) const;
    CGFloat widthUpTo(size_t offset) const;

    std::string text_, marked_, placeholder_;
    UIFont font_ = UIFont::systemFontOfSize(14);
    size_t caret_ = 0;
    CGFloat scroll_ = 0; // points that the text is moved to the left
    bool editing_ = false;
    uint64_t blinks_ = 0; // which series of blinks counts
    std::shared_ptr<UIView> clip_;
    std::shared_ptr<UILabel> label_;
    std::shared_ptr<UIView> underline_;
    std::shared_ptr<UIView> caretView_;
};

} // namespace tallyforge

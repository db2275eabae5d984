#pragma once

#include "uikit/UIControl.h"
#include "uikit/UIFont.h"

#include <string>
#include <string_view>

namespace tallyforge {

class UILabel;

/// One line of text that a person edits, up to 2,000 bytes, with a caret that blinks while it is edited.
/// Positions are byte offsets at character boundaries as people see them.
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

    /// At the caret; control characters, line ends and bytes that are no UTF-8 are left out, here as
    /// everywhere.
    void insertText(std::string_view utf8);
    /// What an input method has not yet decided on, shown underlined at the caret; it is no part of `text`.
    void setMarkedText(std::string_view utf8);
    const std::string& markedText() const { return marked_; }
    /// The caret in the window, where an input method puts its list.
    CGRect caretRectInWindow() const;

    /// The text, or the placeholder where there is none.
    std::string accessibilityLabel() const override;
    void setEnabled(bool enabled) override;
    void layoutSubviews() override;
    void touchesEnded(const UITouch& touch) override;
    void setFocused(bool focused) override;
    bool pressKey(UIKey key) override;

  private:
    void changed();
    void erase(size_t from, size_t to);
    void placeCaretAt(CGFloat x);
    void showCaret();
    void blinkAt(int64_t nanoseconds);
    void blink();
    size_t boundaryBefore(size_t offset) const;
    size_t boundaryAfter(size_t offset) const;
    size_t boundaryAtOrAfter(size_t offset) const;
    CGFloat widthUpTo(size_t offset) const;

    std::string text_, marked_, placeholder_;
    UIFont font_ = UIFont::systemFontOfSize(14);
    size_t caret_ = 0;
    CGFloat scroll_ = 0; // points that the text is moved to the left
    bool editing_ = false;
    int64_t solidUntil_ = 0; // nanoseconds
    bool blinkWaits_ = false;
    std::shared_ptr<UIView> clip_;
    std::shared_ptr<UILabel> label_;
    std::shared_ptr<UIView> underline_;
    std::shared_ptr<UIView> caretView_;
};

} // namespace tallyforge

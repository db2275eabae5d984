#pragma once

#include "uikit/UIView.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tallyforge {

class UIControl;
class UILabel;
class UIScrollView;
class UITextField;

/// What stands in an alert's panel and behaves the same for both kinds: title, message, a field, a view of
/// the caller's, buttons. It dims the screen below and takes all touches and keys until a button is pressed.
class AlertPanel final : public UIView {
  public:
    struct Button {
        std::string title;
        bool bold = false;
        bool destructive = false;
        bool cancels = false; ///< the one that Escape presses
    };
    struct Contents {
        std::string title, message;
        std::vector<Button> buttons;
        bool textField = false;
        std::shared_ptr<UIView> accessory; ///< keeps its own size; centred below the message
    };
    /// The caller is told -1 where there are no buttons and a key ended it.
    AlertPanel(Contents contents, std::function<void(int)> pressed);

    const char* className() const override { return "AlertPanel"; }
    const Contents& contents() const { return contents_; }
    const std::shared_ptr<UITextField>& textField() const { return textField_; }
    UIControl* button(size_t index) const;
    /// Shows it over the key window; false when there is none.
    bool present();
    /// As a tap on the button does it: the panel goes, then the caller is told. Only the first press counts;
    /// an index that there is not does nothing.
    void press(int index);
    /// The panel itself, within the dimmed screen.
    const std::shared_ptr<UIView>& panel() const { return panel_; }
    /// Return presses the bold (else last) button, escape the cancelling (or only) one. Keys that turn a
    /// wheel go to the accessory; page up and down move a text that is too long for the panel.
    bool pressKey(UIKey key) override;
    std::string accessibilityLabel() const override { return contents_.title; }
    void layoutSubviews() override;

  private:
    void finish(int index);
    int defaultButton() const;
    int cancelButton() const;
    bool buttonsFitSideBySide() const;
    CGFloat placeTexts();
    void placeButtons(CGFloat top, CGFloat height);
    CGFloat buttonsHeight() const;
    void appear();

    Contents contents_;
    std::function<void(int)> pressed_;
    bool done_ = false;
    std::shared_ptr<UIView> panel_;
    std::shared_ptr<UIScrollView> texts_; // so that even the longest can be read
    std::shared_ptr<UILabel> title_, message_;
    std::shared_ptr<UITextField> textField_;
    std::shared_ptr<UIScrollView> buttonArea_;
    std::vector<std::shared_ptr<UIControl>> buttons_;
    std::vector<std::shared_ptr<UIView>> lines_; // above each button or between two
};

/// The alert in front, of either kind, or nullptr.
std::shared_ptr<AlertPanel> FrontAlertPanel();

} // namespace tallyforge

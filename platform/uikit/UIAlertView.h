#pragma once

#include "uikit/UIView.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tallyforge {

class UIAlertView;
class UIControl;
class UITextField;

class UIAlertViewDelegate {
  public:
    virtual ~UIAlertViewDelegate() = default;
    virtual void alertViewClickedButtonAtIndex(UIAlertView& alert, int index) = 0;
};

enum class UIAlertViewStyle { plain = 0, plainTextInput = 2 };

/// What stands in an alert's panel and behaves the same for both kinds: title, message, a field, a view of the
/// caller's, buttons. It dims the screen below and takes all touches and keys until a button is pressed.
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
    AlertPanel(Contents contents, std::function<void(int)> pressed);

    const char* className() const override { return "AlertPanel"; }
    const Contents& contents() const { return contents_; }
    const std::shared_ptr<UITextField>& textField() const { return textField_; }
    UIControl* button(size_t index) const;
    /// Shows it over the key window; false when there is none.
    bool present();
    /// As a tap on the button does it: the panel goes, then the caller is told.
    void press(int index);
    bool pressKey(UIKey key) override; ///< return presses the bold (else last) button, escape the cancelling one
    void layoutSubviews() override;

  private:
    Contents contents_;
    std::function<void(int)> pressed_;
    std::shared_ptr<UIView> panel_;
    std::shared_ptr<UITextField> textField_;
    std::vector<std::shared_ptr<UIControl>> buttons_;
};

/// A modal question in fixed words. Button 0 is the cancel button.
class UIAlertView final : public NSObject, public std::enable_shared_from_this<UIAlertView> {
  public:
    UIAlertView(std::string title, std::string message, UIAlertViewDelegate* delegate,
                std::string cancelButtonTitle, std::vector<std::string> otherButtonTitles = {});

    const std::string& title() const { return title_; }
    const std::string& message() const { return message_; }
    const std::vector<std::string>& buttonTitles() const { return buttonTitles_; }
    int tag() const { return tag_; }
    void setTag(int tag) { tag_ = tag; }
    UIAlertViewStyle alertViewStyle() const { return style_; }
    void setAlertViewStyle(UIAlertViewStyle style) { style_ = style; }
    /// Shown below the message; the key is "accessoryView".
    void setValueForKey(std::shared_ptr<UIView> view, std::string_view key);
    const std::shared_ptr<UIView>& accessoryView() const { return accessory_; }
    /// The text field of an alert with text input; nullptr otherwise or before it is shown.
    std::shared_ptr<UITextField> textFieldAtIndex(int index) const;

    /// Stays alive while it is shown.
    void show();
    /// The alerts on screen, the last one in front.
    static const std::vector<std::shared_ptr<UIAlertView>>& visibleAlerts();
    /// Hears of every alert of both kinds when it is shown; for traces. Empty removes it.
    static void setTrace(
        std::function<void(int tag, const std::string& title, const std::string& message)> trace);

  private:
    friend class UIAlertController;
    std::string title_, message_;
    UIAlertViewDelegate* delegate_;
    std::vector<std::string> buttonTitles_;
    int tag_ = 0;
    UIAlertViewStyle style_ = UIAlertViewStyle::plain;
    std::shared_ptr<UIView> accessory_;
    std::shared_ptr<AlertPanel> panel_;
};

enum class UIAlertActionStyle { normal = 0, cancel = 1, destructive = 2 };

struct UIAlertAction {
    std::string title;
    UIAlertActionStyle style = UIAlertActionStyle::normal;
    std::function<void()> handler;
};

/// The later kind of alert: each button brings its own action along. Alert style only.
class UIAlertController final : public NSObject {
  public:
    UIAlertController(std::string title, std::string message)
        : title_(std::move(title)), message_(std::move(message)) {}
    void addAction(UIAlertAction action) { actions_.push_back(std::move(action)); }
    const std::vector<UIAlertAction>& actions() const { return actions_; }
    const std::string& title() const { return title_; }
    const std::string& message() const { return message_; }
    /// Shows it over the key window. Its tag in traces is 0.
    void present();

  private:
    std::string title_, message_;
    std::vector<UIAlertAction> actions_;
};

/// The alert in front, of either kind, or nullptr.
std::shared_ptr<AlertPanel> FrontAlertPanel();

} // namespace tallyforge

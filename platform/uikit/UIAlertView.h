#pragma once

#include "uikit/AlertPanel.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tallyforge {

class UIAlertView;
class UITextField;

class UIAlertViewDelegate {
  public:
    virtual ~UIAlertViewDelegate() = default;
    virtual void alertViewClickedButtonAtIndex(UIAlertView& alert, int index) = 0;
};

enum class UIAlertViewStyle { plain = 0, plainTextInput = 2 };

/// A modal question in fixed words. Button 0 is the cancel button, if there is one; of several buttons the
/// last is the one that return presses. Made with std::make_shared.
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

    /// Stays alive while it is shown. Without a key window it counts as shown all the same, so that a program
    /// without a screen can answer it. Does nothing while it is shown.
    void show();
    /// As a tap on that button of the alert does it; nothing when it is not shown or has no such button.
    void clickButton(int index);
    /// An owner that goes away calls this: its alerts stay on screen and tell nobody.
    static void forgetDelegate(const UIAlertViewDelegate& delegate);
    /// The alerts on screen, the last one in front.
    static const std::vector<std::shared_ptr<UIAlertView>>& visibleAlerts();
    /// Hears of every alert of both kinds when it is shown; for traces. Empty removes it.
    static void
    setTrace(std::function<void(int tag, const std::string& title, const std::string& message)> trace);

  private:
    friend class UIAlertController;
    static void trace(int tag, const std::string& title, const std::string& message);
    void clicked(int index);
    std::string title_, message_;
    UIAlertViewDelegate* delegate_;
    std::vector<std::string> buttonTitles_;
    bool hasCancelButton_;
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

} // namespace tallyforge

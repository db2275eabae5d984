#pragma once

#include "uikit/UIView.h"

#include <memory>
#include <string_view>
#include <vector>

namespace tallyforge {

class UITextField;
class UIViewController;

/// The root of the view tree: hands touches and keys to the views. One touch at a time; further fingers are
/// ignored until it is over. A view that goes from the screen while it is touched, or that something comes
/// above, sees its touch cancelled; the rest of the touch is nobody's.
class UIWindow final : public UIView {
  public:
    explicit UIWindow(const CGRect& frame);
    ~UIWindow() override;

    const char* className() const override { return "UIWindow"; }
    UIViewController* rootViewController() const { return root_.get(); }
    void setRootViewController(std::shared_ptr<UIViewController> controller);

    void sendTouch(const UITouch& touch);
    /// False when nobody had a use for the key.
    bool sendKey(UIKey key);
    /// Text typed by the keyboard or an input method, for the field that is being edited.
    bool insertText(std::string_view utf8);
    /// What is turned: a touch pad, which is followed exactly, or the notches of a wheel, which are jumps.
    enum class Turn { exact, notch };
    /// In points; positive moves the content up.
    void scrollBy(const CGPoint& location, CGFloat points, Turn turn = Turn::exact);

    /// A view above everything else, such as an alert. While there is one, touches and keys reach only the
    /// last.
    void presentOverlay(std::shared_ptr<UIView> overlay);
    void dismissOverlay(UIView& overlay);
    std::shared_ptr<UIView> frontOverlay() const;

    /// The view that keys go to; nullptr until the keyboard is used.
    UIView* focusedView() const { return focused_.lock().get(); }
    void focusView(UIView* view);
    UITextField* editedField() const;
    void setEditedField(const std::shared_ptr<UIView>& field) { edited_ = field; }

    /// Whether a finger is on the screen.
    bool touching() const { return touching_; }

    /// The window that is shown, or nullptr.
    static UIWindow* keyWindow();
    void makeKeyWindow();

  private:
    UIView& front();
    void beginTouch(const UITouch& touch);
    void endTouch();
    void deliverToRecognizers(const UITouch& touch);
    void deliverToView(const UITouch& touch);
    bool offerKey(UIKey key);
    bool scrollByKey(UIKey key);
    bool moveFocus(int step);
    void showRing(UIView& view);

    std::shared_ptr<UIViewController> root_;
    std::vector<std::shared_ptr<UIView>> overlays_;
    std::weak_ptr<UIView> touched_;
    std::vector<std::weak_ptr<UIGestureRecognizer>> recognizers_;
    std::weak_ptr<UIView> focused_;
    std::shared_ptr<UIView> ring_;
    std::weak_ptr<UIView> edited_;
    bool touching_ = false;
    bool touchTaken_ = false; // by a recogniser
};

} // namespace tallyforge

#include "uikit/UIAlertView.h"

#include <algorithm>

namespace tallyforge {

namespace {

using Trace = std::function<void(int tag, const std::string& title, const std::string& message)>;

// Never destroyed: alerts that are shown when the program ends need not be taken apart in order.
struct Shown {
    std::vector<std::shared_ptr<UIAlertView>> alerts;
    Trace trace;
};
Shown& shown() {
    static auto* const all = new Shown;
    return *all;
}

} // namespace

UIAlertView::UIAlertView(std::string title, std::string message, UIAlertViewDelegate* delegate,
                         std::string cancelButtonTitle, std::vector<std::string> otherButtonTitles)
    : title_(std::move(title)), message_(std::move(message)), delegate_(delegate),
      buttonTitles_(std::move(otherButtonTitles)), hasCancelButton_(!cancelButtonTitle.empty()) {
    if (hasCancelButton_) buttonTitles_.insert(buttonTitles_.begin(), std::move(cancelButtonTitle));
}

void UIAlertView::setValueForKey(std::shared_ptr<UIView> view, std::string_view key) {
    if (key == "accessoryView") accessory_ = std::move(view);
}

std::shared_ptr<UITextField> UIAlertView::textFieldAtIndex(int index) const {
    return panel_ && index == 0 ? panel_->textField() : nullptr;
}

const std::vector<std::shared_ptr<UIAlertView>>& UIAlertView::visibleAlerts() {
    return shown().alerts;
}

void UIAlertView::setTrace(Trace trace) {
    shown().trace = std::move(trace);
}

void UIAlertView::trace(int tag, const std::string& title, const std::string& message) {
    if (const Trace hook = shown().trace) hook(tag, title, message);
}

void UIAlertView::show() {
    const auto self = shared_from_this();
    auto& alerts = shown().alerts;
    if (std::find(alerts.begin(), alerts.end(), self) != alerts.end()) return;
    alerts.push_back(self);
    trace(tag_, title_, message_);

    AlertPanel::Contents contents{.title = title_,
                                  .message = message_,
                                  .buttons = {},
                                  .textField = style_ == UIAlertViewStyle::plainTextInput,
                                  .accessory = accessory_};
    for (size_t i = 0; i < buttonTitles_.size(); ++i) {
        const bool isDefault = buttonTitles_.size() > 1 && i + 1 == buttonTitles_.size();
        contents.buttons.push_back({buttonTitles_[i], isDefault, false, hasCancelButton_ && i == 0});
    }
    panel_ = std::make_shared<AlertPanel>(std::move(contents), [alert = weak_from_this()](int index) {
        if (const auto pressed = alert.lock()) pressed->clicked(index);
    });
    panel_->present();
}

void UIAlertView::clickButton(int index) {
    if (panel_) panel_->press(index);
}

void UIAlertView::clicked(int index) {
    const auto self = shared_from_this(); // the list may be the last to hold it
    std::erase(shown().alerts, self);
    if (delegate_ && index >= 0) delegate_->alertViewClickedButtonAtIndex(*this, index);
}

void UIAlertView::forgetDelegate(const UIAlertViewDelegate& delegate) {
    for (const auto& alert : shown().alerts) {
        if (alert->delegate_ == &delegate) alert->delegate_ = nullptr;
    }
}

void UIAlertController::present() {
    UIAlertView::trace(0, title_, message_);
    AlertPanel::Contents contents{
        .title = title_, .message = message_, .buttons = {}, .textField = false, .accessory = nullptr};
    for (const UIAlertAction& action : actions_) {
        const bool cancels = action.style == UIAlertActionStyle::cancel;
        contents.buttons.push_back({action.title, cancels && actions_.size() > 1,
                                    action.style == UIAlertActionStyle::destructive, cancels});
    }
    const auto panel = std::make_shared<AlertPanel>(std::move(contents), [actions = actions_](int index) {
        if (index < 0) return;
        const UIAlertAction& action = actions[static_cast<size_t>(index)];
        if (action.handler) action.handler();
    });
    panel->present();
}

} // namespace tallyforge

#include "uikit/UIViewController.h"

#include "uikit/UIDevice.h"
#include "uikit/UINavigationController.h"

namespace tallyforge {

UIViewController::~UIViewController() = default;

void UIViewController::setTitle(std::string title) {
    title_ = std::move(title);
    if (navigation_) navigation_->updateBar();
}

const std::shared_ptr<UIView>& UIViewController::view() {
    if (!view_) {
        loadView();
        if (!view_) UIViewController::loadView();
        viewDidLoad();
    }
    return view_;
}

void UIViewController::loadView() {
    setView(std::make_shared<UIView>(CGRect{{0, 0}, UIScreen::mainScreen().size()}));
}

} // namespace tallyforge

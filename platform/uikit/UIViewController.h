#pragma once

#include "runtime/ClassRegistry.h"
#include "uikit/UIView.h"

#include <memory>
#include <string>

namespace tallyforge {

class UINavigationController;

/// One screen: makes its view when that is first asked for, and hears when it comes and goes.
class UIViewController : public NSObject, public std::enable_shared_from_this<UIViewController> {
  public:
    UIViewController() = default;
    ~UIViewController() override;
    UIViewController(const UIViewController&) = delete;
    UIViewController& operator=(const UIViewController&) = delete;

    /// The class's name on the platform.
    virtual const char* className() const { return "UIViewController"; }
    const std::string& title() const { return title_; }
    void setTitle(std::string title);

    /// Loads it if need be.
    const std::shared_ptr<UIView>& view();
    bool isViewLoaded() const { return view_ != nullptr; }

    virtual void loadView();
    virtual void viewDidLoad() {}
    virtual void viewWillAppear(bool /*animated*/) {}
    virtual void viewDidAppear(bool /*animated*/) {}
    virtual void viewWillDisappear(bool /*animated*/) {}
    virtual void viewDidDisappear(bool /*animated*/) {}

    /// Where it stands in a navigation controller, or nullptr.
    UINavigationController* navigationController() const { return navigation_; }

  protected:
    void setView(std::shared_ptr<UIView> view) { view_ = std::move(view); }

  private:
    friend class UINavigationController;
    std::string title_;
    std::shared_ptr<UIView> view_;
    UINavigationController* navigation_ = nullptr;
};

} // namespace tallyforge

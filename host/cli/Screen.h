#pragma once

#include "foundation/Result.h"
#include "settings_app/SettingsApp.h"
#include "uikit/UITableView.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace tallyforge {

class UISlider;

/// What is on the screen in front, as a person sees it: its texts, its rows, its controls.
class Screen {
  public:
    explicit Screen(SettingsApp& app) : app_(app) {}

    UIViewController& controller() const { return *app_.navigation().topViewController(); }
    /// The table of the screen in front, or nullptr.
    UITableView* table() const;

    /// Why the screen is empty, when the device has no readable list of its rows; empty when it has rows.
    std::string whyEmpty() const;

    /// Where to touch the row or control that shows the text, in the window; the alert in front counts alone.
    /// Scrolls to it where need be. An error when the text is nowhere, or only on what nobody touches.
    Result<CGPoint> pointShowing(const std::string& text);
    /// Brings the text on screen; an error when it is nowhere.
    Status scrollTo(const std::string& text);
    /// The slider of the row that shows the text, or the one that is called so; nullptr without one.
    UISlider* sliderOf(const std::string& row);

    /// Everything that `inspect` prints of a screen.
    nlohmann::ordered_json inspect(bool pad, double time);

  private:
    enum class Wanted { anything, touchable };
    UIView* viewShowing(const std::string& text, Wanted wanted);
    UIView* findScrolling(const std::string& text, Wanted wanted);
    UIView* bringOnScreen(const std::string& text, Wanted wanted);
    nlohmann::ordered_json rows();
    nlohmann::ordered_json rowJson(UITableView& shown, NSIndexPath path);

    SettingsApp& app_;
};

} // namespace tallyforge

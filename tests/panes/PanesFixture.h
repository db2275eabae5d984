#pragma once

#include "appselect/RegisterAppSelect.h"
#include "colorpicker/RegisterColorPicker.h"
#include "corefoundation/CFPreferences.h"
#include "foundation/Random.h"
#include "panes/RegisterPanes.h"
#include "preferences/PSListController.h"
#include "support/DeviceFixture.h"
#include "support/EffectLog.h"
#include "themes/RegisterThemes.h"
#include "uikit/UIApplication.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tallyforge::test {

inline const std::string kBundle = "/Library/PreferenceBundles/tallyforgeprefs.bundle/";
inline const std::string kDomain = "com.quillon.tallyforge";

/// The end of every change: what it posts, in order.
inline const std::vector<std::string> kAnnounced{"post reloadTallyforgePreviewNotify",
                                                 "darwin com.quillon.tallyforge.prefs"};

/// The names of all screens of the bundle.
inline const std::vector<std::string> kMarkPanes{
    "badgeListController",          "badgecolorListController",    "badgelabelListController",
    "badgeborderListController",    "badgeanimListController",     "badgeglowListController",
    "closeboxListController",       "closeboxcolorListController", "closeboxlabelListController",
    "closeboxborderListController", "closeboxanimListController",  "closeboxglowListController",
    "newdotListController",         "newdotcolorListController",   "newdotanimListController"};
inline const std::vector<std::string> kOtherPanes{"tallyforgeprefsListController", "themesListController",
                                                  "conditionalthemesListController"};

/// A device with the bundle's lists and an empty domain; every effect is written down as a line.
class PanesTest : public testing::Test {
  protected:
    PanesTest() {
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        setenv("XDG_RUNTIME_DIR", device_.root().c_str(), 1);
        std::filesystem::create_directories(device_.file(kBundle));
        for (const auto& entry :
             std::filesystem::directory_iterator(TALLYFORGE_RESOURCES "/stock" + kBundle)) {
            if (entry.path().extension() == ".plist")
                std::filesystem::copy_file(entry.path(), device_.file(kBundle) / entry.path().filename());
        }
        RegisterPanes();
        RegisterColorPicker();
        RegisterAppSelect();
        RegisterThemes();
        listen();
    }
    ~PanesTest() override {
        PSListController::setReloadTrace({});
        UIApplication::sharedApplication().setTrace({});
        UIApplication::sharedApplication().setOpener({});
        UnseedRandomSource();
    }

    static std::shared_ptr<PSListController> pane(const std::string& name) {
        const ObjCClass* cls = NSClassFromString(name);
        return cls ? std::dynamic_pointer_cast<PSListController>(cls->alloc()) : nullptr;
    }
    static std::optional<PropertyList> stored(std::string_view key) {
        return CFPreferencesCopyAppValue(key, kDomain);
    }
    /// Hands the value to the row as its control would.
    static void choose(PSListController& pane, std::string_view identifier, const PropertyList& value) {
        auto row = pane.specifierForID(identifier);
        ASSERT_NE(row, nullptr) << identifier;
        row->performSetter(value);
    }

    TestDevice device_;

  private:
    void listen() {
        PSListController::setReloadTrace(
            [this](const std::string& id) { log_.tell("reload-specifier", id); });
        UIApplication::sharedApplication().setTrace(
            [this](const std::string& url) { log_.tell("open-url", url); });
    }
    EffectLog log_;

  protected:
    std::vector<std::string>& told = log_.lines;
};

} // namespace tallyforge::test

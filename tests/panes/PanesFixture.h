#pragma once

#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"
#include "corefoundation/NSUserDefaults.h"
#include "foundation/NSNotificationCenter.h"
#include "foundation/Random.h"
#include "panes/RegisterPanes.h"
#include "preferences/PSListController.h"
#include "support/DeviceFixture.h"
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
        RegisterThemes();
        listen();
    }
    ~PanesTest() override {
        CFPreferencesSetTrace({});
        NSUserDefaults::standardUserDefaults().setTrace({});
        NSNotificationCenter::defaultCenter().setTrace({});
        CFNotificationCenterGetDarwinNotifyCenter().setTrace({});
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

    std::vector<std::string> told;
    TestDevice device_;

  private:
    void listen() {
        auto tell = [this](std::string verb, std::string_view what) {
            told.push_back(std::move(verb) + " " + std::string(what));
        };
        CFPreferencesSetTrace(
            {.set =
                 [this](std::string_view domain, std::string_view key, const PropertyList* value) {
                     told.push_back("set " + std::string(domain) + " " + std::string(key) + " " +
                                    (value ? value->description() : "nothing"));
                 },
             .synchronize = [tell](std::string_view domain) { tell("synchronize", domain); }});
        NSUserDefaults::standardUserDefaults().setTrace([this] { told.push_back("synchronize-defaults"); });
        NSNotificationCenter::defaultCenter().setTrace([tell](std::string_view name) { tell("post", name); });
        CFNotificationCenterGetDarwinNotifyCenter().setTrace(
            [tell](std::string_view name) { tell("darwin", name); });
        PSListController::setReloadTrace([tell](const std::string& id) { tell("reload-specifier", id); });
        UIApplication::sharedApplication().setTrace(
            [tell](const std::string& url) { tell("open-url", url); });
    }
};

} // namespace tallyforge::test

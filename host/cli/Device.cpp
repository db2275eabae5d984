#include "cli/Device.h"

#include "cli/Report.h"
#include "corefoundation/CFPreferences.h"
#include "device/DeviceLocation.h"
#include "settings/SettingsKeys.h"
#include "uikit/UIDevice.h"

namespace tallyforge {

std::optional<int> OpenDeviceFor(const Command& command) {
    UIDevice::currentDevice().setUserInterfaceIdiom(command.pad ? UIUserInterfaceIdiomPad
                                                                : UIUserInterfaceIdiomPhone);
    auto location = LocateDevice(command.root);
    if (!location) return CouldNot("device root", location.reason());
    auto opened = OpenDevice(*location, [](const std::string& line) { Complain("device root", line); });
    if (!opened) return CouldNot("device root", opened.reason());
    return std::nullopt;
}

int SettingsOutcome(const Command& command, const std::string& unreadable) {
    const std::string path = CFPreferencesPath(kSettingsDomain);
    // A row's failed write is made good by a later one; what counts is what the file holds in the end.
    if (std::string failure = CFPreferencesSynchronizeFailure(kSettingsDomain); !failure.empty())
        return CouldNot(command.name, path + ": " + failure);
    if (!unreadable.empty())
        Complain(command.name, path + ": " + unreadable + "; the old file was kept beside the new one");
    return kDone;
}

void WarnOfUnreadableSettings(const Command& command) {
    std::string why = CFPreferencesReadFailure(kSettingsDomain);
    if (!why.empty())
        Complain(command.name, CFPreferencesPath(kSettingsDomain) + ": " + why + "; it counts as empty");
}

} // namespace tallyforge

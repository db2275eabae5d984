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

int SettingsOutcome(const Command& command) {
    const std::string path = CFPreferencesPath(kSettingsDomain);
    // A row's failed write is made good by a later one; what counts is what the file holds in the end.
    if (std::string failure = CFPreferencesSynchronizeFailure(kSettingsDomain); !failure.empty())
        return CouldNot(command.name, path + ": " + failure);
    if (std::string damage = CFPreferencesTakeKeptAside(kSettingsDomain); !damage.empty())
        Complain(command.name, path + ": " + damage + "; the old file was kept beside the new one");
    return kDone;
}

void WarnOfUnreadableSettings(const Command& command) {
    const std::string missed = CFPreferencesTakeMissedReading(kSettingsDomain);
    const std::string why = CFPreferencesReadFailure(kSettingsDomain);
    const std::string path = CFPreferencesPath(kSettingsDomain);
    if (!why.empty())
        Complain(command.name, path + ": " + why + "; it counts as empty");
    else if (!missed.empty())
        Complain(command.name, path + ": " + missed + "; it counted as empty for a while");
}

} // namespace tallyforge

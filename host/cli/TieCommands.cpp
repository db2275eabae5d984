#include "cli/TieCommands.h"

#include "cli/Device.h"
#include "cli/Report.h"
#include "cli/ThemeChoice.h"
#include "cli/ValueJson.h"
#include "cli/ValueText.h"
#include "corefoundation/CFPreferences.h"
#include "corefoundation/NSUserDefaults.h"
#include "settings/Settings.h"
#include "themes/TieFiles.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>

namespace tallyforge {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kNone = "none";
constexpr const char* kMissing = "missing";

int List(const Command& command) {
    const auto ties = ListTies();
    if (!ties) return CouldNot(command.name, std::string(kTieFolder) + ": " + ties.reason());
    const auto listing = UsersThemes();
    if (!listing) return CouldNot(command.name, listing.reason());
    Json list = Json::array();
    for (const Tie& tie : ties->ties) {
        const auto theme = std::ranges::find(listing->themes, tie.theme, &Theme::path);
        const bool tied = tie.theme != kNoTheme;
        const bool there = tied && theme != listing->themes.end();
        if (command.json)
            list.push_back({{"app", tie.app},
                            {"theme", there ? Json(theme->name) : Json(nullptr)},
                            {"file", tied ? Json(tie.theme) : Json(nullptr)}});
        else
            Print(OneLineText(tie.app) + "\t" +
                  (there ? OneLineText(theme->name) : std::string(tied ? kMissing : kNone)) + "\t" +
                  OneLineText(tie.theme) + "\n");
    }
    if (command.json) PrintJson(list);
    return std::max({FinishOutput(command.name), ComplainOfUnread(command, ties->unread),
                     ComplainOfUnread(command, listing->unread)});
}

int SaveShownTheme(const Command& command, std::string_view theme) {
    CFPreferencesSetAppValue(kPerAppTheme, PropertyList::string(std::string(theme)), kSettingsDomain);
    NSUserDefaults::standardUserDefaults().synchronize();
    return SettingsOutcome(command);
}

// The screen shows the app that was chosen there last; its theme's row is to show the app's present tie.
int FollowOnScreen(const Command& command, std::string_view theme) {
    const auto shown = CFPreferencesCopyAppValue(kPerAppApp, kSettingsDomain);
    if (const std::string why = CFPreferencesTakeMissedReading(kSettingsDomain); !why.empty())
        return CouldNot(command.name, CFPreferencesPath(kSettingsDomain) + ": " + why);
    if (!shown || !shown->isString() || *shown->asString() != command.app) return kDone;
    return SaveShownTheme(command, theme);
}

int Set(const Command& command) {
    if (!IsUTF8(command.app)) return WrongWords(command.name, "the app's identifier is no UTF-8");
    if (const std::string why = WhyNoTieFile(command.app); !why.empty())
        return WrongWords(command.name, "'" + command.app + "': " + why);
    std::string theme(kNoTheme);
    if (command.theme != kNone || command.file) {
        const auto found = FindTheme(command);
        if (!found) return CouldNot(command.name, found.reason());
        theme = found->path;
    }
    if (const auto tied = SetTie(command.app, theme); !tied)
        return CouldNot(command.name, std::string(kTieFolder) + command.app + ": " + tied.reason());
    return FollowOnScreen(command, theme);
}

int ClearAll(const Command& command) {
    const std::vector<TieFailure> failures = ClearTies();
    for (const auto& [path, outcome] : failures)
        Complain(command.name, path + ": " + outcome.reason());
    const int saved = SaveShownTheme(command, kNoTheme);
    AnnounceSettingsChanged();
    return failures.empty() ? saved : int{kFailed};
}

int Clear(const Command& command) {
    if (command.all) return ClearAll(command);
    if (const std::string why = WhyNoTieFile(command.app); !why.empty())
        return WrongWords(command.name, "'" + command.app + "': " + why);
    const auto removed = RemoveTie(command.app);
    if (removed) return FollowOnScreen(command, kNoTheme);
    Complain(command.name, std::string(kTieFolder) + command.app + ": " + removed.reason());
    // A clearing that was cut short may have removed the file and not told the screen.
    if (removed.number() == ENOENT) FollowOnScreen(command, kNoTheme);
    return kFailed;
}

} // namespace

int RunTie(const Command& command) {
    if (command.name == "tie list") return List(command);
    return command.name == "tie set" ? Set(command) : Clear(command);
}

} // namespace tallyforge

#include "cli/ThemeChoice.h"

#include "cli/Report.h"
#include "cli/ValueText.h"
#include "themes/ThemeNames.h"

namespace tallyforge {

namespace {

Result<Theme> FindThemeFile(const std::string& file, const std::string& name) {
    auto listing = UsersThemes();
    if (!listing) return listing.error();
    for (const UnreadFile& unread : listing->unread) {
        if (unread.path == file || unread.path == std::string(kThemeFolder) + file)
            return Error{unread.path + ": " + unread.reason};
    }
    for (Theme& theme : listing->themes) {
        if (FileNameOf(theme) != file && theme.path != file) continue;
        if (name.empty() || theme.name == name || name == file) return std::move(theme);
        return Error{"'" + file + "' holds the theme '" + theme.name + "'"};
    }
    return Error{"there is no theme in the file '" + file + "'"};
}

} // namespace

Result<ThemeListing> UsersThemes() {
    ThemeListing listing = ListThemes();
    if (!listing.unreadable.empty()) return Error{std::string(kThemeFolder) + ": " + listing.unreadable};
    return listing;
}

int ComplainOfUnread(const Command& command, const std::vector<UnreadFile>& unread) {
    for (const UnreadFile& file : unread)
        Complain(command.name, file.path + ": " + file.reason);
    return unread.empty() ? kDone : kFailed;
}

std::string FileNameOf(const Theme& theme) {
    return theme.path.substr(kThemeFolder.size());
}

Result<Theme> FindTheme(const std::string& name, std::string_view advice) {
    const auto listing = UsersThemes();
    if (!listing) return listing.error();
    const Theme* found = nullptr;
    std::string files;
    for (const Theme& theme : listing->themes) {
        if (theme.name != name) continue;
        files += (found ? ", " : "") + FileNameOf(theme);
        found = found ? found : &theme;
    }
    if (!found) {
        for (const Theme& theme : listing->themes) {
            if (FileNameOf(theme) == name) return theme;
        }
        if (listing->unread.empty())
            return Error{"there is no theme '" + name + "'; 'tallyforge theme list' names them"};
        std::string reason = "there is no theme '" + name + "' among those that can be read";
        for (const UnreadFile& unread : listing->unread)
            reason += "; " + unread.path + ": " + unread.reason;
        return Error{std::move(reason)};
    }
    if (files != FileNameOf(*found))
        return Error{"several themes are called '" + name + "': " + files + std::string(advice)};
    return *found;
}

Result<Theme> FindTheme(const Command& command) {
    if (command.file) return FindThemeFile(*command.file, command.theme);
    return FindTheme(command.theme, "; --file says which");
}

} // namespace tallyforge

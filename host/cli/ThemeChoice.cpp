#include "cli/ThemeChoice.h"

#include "cli/ValueText.h"
#include "themes/ThemeNames.h"

namespace tallyforge {

namespace {

Result<Theme> FindThemeFile(const std::string& file, const std::string& name) {
    for (Theme& theme : ListThemes().themes) {
        if (FileNameOf(theme) != file && theme.path != file) continue;
        if (name.empty() || theme.name == name || name == file) return std::move(theme);
        return Error{"'" + file + "' holds the theme '" + theme.name + "'"};
    }
    return Error{"there is no theme in the file '" + file + "'"};
}

} // namespace

std::string FileNameOf(const Theme& theme) {
    return theme.path.substr(kThemeFolder.size());
}

Result<Theme> FindTheme(const std::string& name) {
    std::vector<Theme> themes = ListThemes().themes;
    const Theme* found = nullptr;
    std::string files;
    for (const Theme& theme : themes) {
        if (theme.name != name) continue;
        files += (found ? ", " : "") + FileNameOf(theme);
        found = found ? found : &theme;
    }
    if (!found) {
        for (const Theme& theme : themes) {
            if (FileNameOf(theme) == name) return theme;
        }
        return Error{"there is no theme '" + name + "'; 'tallyforge theme list' names them"};
    }
    if (files != FileNameOf(*found)) return Error{"several themes are called '" + name + "': " + files};
    return *found;
}

Result<Theme> FindTheme(const Command& command) {
    if (command.file) return FindThemeFile(*command.file, command.theme);
    auto found = FindTheme(command.theme);
    if (!found && found.reason().starts_with("several")) return Error{found.reason() + "; --file says which"};
    return found;
}

} // namespace tallyforge

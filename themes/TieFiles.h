#pragma once

#include "foundation/Result.h"
#include "themes/UnreadFile.h"

#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// A tie is a file named by an app's bundle identifier; it holds the path of the app's theme.
inline constexpr std::string_view kTieFolder = "/var/mobile/Documents/Tallyforge/PerAppThemes/";
/// Stands in an app's place for the home screen's folders.
inline constexpr std::string_view kFoldersIdentifier = "com.tallyforge.folders";
/// Stands in a path's place for no theme.
inline constexpr std::string_view kNoTheme = "0";

/// The screen's rows, and the settings that keep what they show: the app that was chosen, and its theme.
inline constexpr std::string_view kPerAppApp = "perappapp";
inline constexpr std::string_view kPerAppTheme = "perapptheme";

struct Tie {
    std::string app;   ///< a bundle identifier
    std::string theme; ///< the device path of a theme, whether or not it is still there, or "0"
};

/// Why there can be no tie file of that name; empty when there can. An identifier comes from an app's own
/// property list, so one that would lead out of the folder is refused.
std::string WhyNoTieFile(std::string_view app);

/// What is in the folder of ties.
struct TieListing {
    std::vector<Tie> ties; ///< in the order of the folder's listing
    std::vector<UnreadFile> unread;
};
/// Files that hold no archived string are passed over. A missing folder holds no ties; one that cannot be
/// listed is an error.
Result<TieListing> ListTies();
/// For a screen, what the app's tie file holds; "0" without a file, and when it cannot be read, which is told
/// as a silent failure, or holds no archived string.
std::string TieOf(std::string_view app);
/// Ties the theme to the app. With "0" the tie is undone by removing its file; yet where there is no file,
/// one that holds "0" is written, and readers take it as no tie.
Status SetTie(std::string_view app, std::string_view theme);
Status RemoveTie(std::string_view app);

/// What could not be removed when the folder was cleared.
struct TieFailure {
    std::string path;
    Status outcome;
};
/// Removes every entry of the folder.
std::vector<TieFailure> ClearTies();

} // namespace tallyforge

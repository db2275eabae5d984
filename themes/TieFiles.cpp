#include "themes/TieFiles.h"

#include "foundation/NSFileManager.h"
#include "foundation/NSKeyedArchiver.h"
#include "settings/SilentFailures.h"
#include "themes/ThemeNames.h"

#include <cerrno>
#include <optional>

namespace tallyforge {

namespace {

std::string PathOf(std::string_view app) {
    return std::string(kTieFolder).append(app);
}

// What the tie file holds; nothing when it is none, or was not read.
std::optional<std::string> ReadTie(std::string_view app, std::vector<UnreadFile>& unread) {
    if (!WhyNoTieFile(app).empty()) return std::nullopt;
    const NSFileManager& files = NSFileManager::defaultManager();
    const auto bytes = files.contentsAtPath(PathOf(app));
    if (!bytes) {
        if (files.isUnreadFileAtPath(PathOf(app), bytes.error()))
            unread.push_back({PathOf(app), bytes.reason()});
        return std::nullopt;
    }
    const auto root = NSKeyedUnarchiver::unarchiveObjectWithData(*bytes);
    const std::string* theme = root ? root->asString() : nullptr;
    return theme ? std::optional(*theme) : std::nullopt;
}

// None where there is no folder.
Result<std::vector<std::string>> TieFolderEntries() {
    auto entries = NSFileManager::defaultManager().contentsOfDirectoryAtPath(kTieFolder);
    if (!entries && entries.number() == ENOENT) return std::vector<std::string>();
    return entries;
}

} // namespace

std::string WhyNoTieFile(std::string_view app) {
    if (app.empty()) return "no app is named";
    const bool leadsOut = app == "." || app == ".." || app.find('/') != std::string_view::npos;
    if (leadsOut || app.find('\0') != std::string_view::npos || app.size() > kLongestFileName)
        return "this identifier can be no file's name";
    return {};
}

Result<TieListing> ListTies() {
    TieListing listing;
    const auto files = TieFolderEntries();
    if (!files) return files.error();
    for (const std::string& file : *files) {
        if (auto theme = ReadTie(file, listing.unread)) listing.ties.push_back({file, std::move(*theme)});
    }
    return listing;
}

std::string TieOf(std::string_view app) {
    std::vector<UnreadFile> unread;
    auto theme = ReadTie(app, unread);
    for (const UnreadFile& file : unread)
        TellSilentFailure(file.path, Error{file.reason});
    return theme.value_or(std::string(kNoTheme));
}

Status SetTie(std::string_view app, std::string_view theme) {
    if (std::string why = WhyNoTieFile(app); !why.empty()) return Error{std::move(why)};
    NSFileManager& files = NSFileManager::defaultManager();
    if (auto made = files.createDirectoryAtPath(kTieFolder); !made) return made;
    const std::string path = PathOf(app);
    if (theme == kNoTheme) {
        auto removed = files.removeItemAtPath(path);
        if (removed || removed.number() != ENOENT) return removed;
    }
    return files.removeItemAndWriteData(
        path, NSKeyedArchiver::archivedDataWithRootObject(PropertyList::string(std::string(theme))));
}

Status RemoveTie(std::string_view app) {
    if (std::string why = WhyNoTieFile(app); !why.empty()) return Error{std::move(why)};
    return NSFileManager::defaultManager().removeItemAtPath(PathOf(app));
}

std::vector<TieFailure> ClearTies() {
    std::vector<TieFailure> failures;
    NSFileManager& files = NSFileManager::defaultManager();
    const auto entries = TieFolderEntries();
    if (!entries) return {{std::string(kTieFolder), entries.error()}};
    if (entries->empty()) return failures;
    for (const std::string& entry : *entries) {
        auto removed = files.removeTreeAtPath(PathOf(entry));
        if (!removed) failures.push_back({PathOf(entry), std::move(removed)});
    }
    if (auto synced = files.syncDirectoryAtPath(kTieFolder); !synced)
        failures.push_back({std::string(kTieFolder), std::move(synced)});
    return failures;
}

} // namespace tallyforge

#include "themes/TieFiles.h"

#include "foundation/NSFileManager.h"
#include "foundation/NSKeyedArchiver.h"

#include <optional>

namespace tallyforge {

namespace {

constexpr size_t kLongestFileName = 255; // bytes

std::string PathOf(std::string_view app) {
    return std::string(kTieFolder).append(app);
}

std::optional<std::string> ReadTie(std::string_view app) {
    if (!WhyNoTieFile(app).empty()) return std::nullopt;
    const auto bytes = NSFileManager::defaultManager().contentsAtPath(PathOf(app));
    if (!bytes) return std::nullopt;
    const auto root = NSKeyedUnarchiver::unarchiveObjectWithData(*bytes);
    const std::string* theme = root ? root->asString() : nullptr;
    return theme ? std::optional(*theme) : std::nullopt;
}

} // namespace

std::string WhyNoTieFile(std::string_view app) {
    if (app.empty()) return "no app is named";
    const bool leadsOut = app == "." || app == ".." || app.find('/') != std::string_view::npos;
    if (leadsOut || app.find('\0') != std::string_view::npos || app.size() > kLongestFileName)
        return "this identifier can be no file's name";
    return {};
}

std::vector<Tie> ListTies() {
    std::vector<Tie> ties;
    const auto files = NSFileManager::defaultManager().contentsOfDirectoryAtPath(kTieFolder);
    if (!files) return ties;
    for (const std::string& file : *files) {
        if (auto theme = ReadTie(file)) ties.push_back({file, std::move(*theme)});
    }
    return ties;
}

std::string TieOf(std::string_view app) {
    return ReadTie(app).value_or(std::string(kNoTheme));
}

Status SetTie(std::string_view app, std::string_view theme) {
    if (std::string why = WhyNoTieFile(app); !why.empty()) return Error{std::move(why)};
    NSFileManager& files = NSFileManager::defaultManager();
    if (auto made = files.createDirectoryAtPath(kTieFolder); !made) return made;
    const std::string path = PathOf(app);
    if (files.fileExistsAtPath(path)) {
        auto removed = files.removeItemAtPath(path);
        if (!removed || theme == kNoTheme) return removed;
    }
    return files.writeDataToFile(
        path, NSKeyedArchiver::archivedDataWithRootObject(PropertyList::string(std::string(theme))));
}

Status RemoveTie(std::string_view app) {
    if (std::string why = WhyNoTieFile(app); !why.empty()) return Error{std::move(why)};
    return NSFileManager::defaultManager().removeItemAtPath(PathOf(app));
}

std::vector<TieFailure> ClearTies() {
    std::vector<TieFailure> failures;
    NSFileManager& files = NSFileManager::defaultManager();
    const auto entries = files.contentsOfDirectoryAtPath(kTieFolder);
    if (!entries) return failures;
    for (const std::string& entry : *entries) {
        auto removed = files.removeTreeAtPath(PathOf(entry));
        if (!removed) failures.push_back({PathOf(entry), std::move(removed)});
    }
    return failures;
}

} // namespace tallyforge

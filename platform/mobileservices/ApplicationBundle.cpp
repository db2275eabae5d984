#include "mobileservices/ApplicationBundle.h"

#include "foundation/FileDescriptor.h"
#include "foundation/NSFileManager.h"
#include "foundation/PropertyListFormat.h"

#include <fcntl.h>
#include <set>
#include <sys/stat.h>
#include <utility>

namespace tallyforge {

namespace {

constexpr std::string_view kSystemApplications = "/Applications/";
constexpr std::string_view kUserContainers[] = {"/var/containers/Bundle/Application/",
                                                "/var/mobile/Containers/Bundle/Application/"};

// The largest lists of real applications are a third of this. What it lets through is read in a few
// milliseconds.
constexpr PropertyListLimits kBundleListLimits{
    .bytes = 1u << 20, .objects = 16'384, .depth = 32, .nodes = 65'536, .text = 4u << 20};

struct stat StatusOf(std::string_view path) {
    struct stat status {};
    const FileDescriptor folder(DeviceRoot::open(path, O_PATH | O_DIRECTORY));
    if (!folder || fstat(folder.get(), &status) != 0) status = {};
    return status;
}

std::vector<std::string> NamesIn(const std::string& folder) {
    auto names = NSFileManager::defaultManager().contentsOfDirectoryAtPath(folder);
    return names ? std::move(*names) : std::vector<std::string>();
}

void AddApplicationsIn(const std::string& folder, bool ofTheSystem, std::vector<ApplicationFolder>& found) {
    for (const std::string& name : NamesIn(folder)) {
        if (name.size() > 4 && name.ends_with(".app"))
            found.push_back({folder + name + "/", ofTheSystem ? std::string() : folder});
    }
}

} // namespace

std::vector<ApplicationFolder> ListApplicationFolders() {
    std::vector<ApplicationFolder> found;
    AddApplicationsIn(std::string(kSystemApplications), true, found);
    std::set<std::pair<dev_t, ino_t>> seen;
    for (std::string_view containers : kUserContainers) {
        const auto status = StatusOf(containers);
        if (status.st_nlink == 0 || !seen.emplace(status.st_dev, status.st_ino).second) continue;
        for (const std::string& name : NamesIn(std::string(containers)))
            AddApplicationsIn(std::string(containers) + name + "/", false, found);
    }
    return found;
}

std::string StampOfApplicationFolders() {
    std::string stamp = DeviceRoot::hostFolder();
    for (std::string_view folder : {kSystemApplications, kUserContainers[0], kUserContainers[1]}) {
        const auto status = StatusOf(folder);
        for (auto number : {static_cast<int64_t>(status.st_ino), static_cast<int64_t>(status.st_ctim.tv_sec),
                            static_cast<int64_t>(status.st_ctim.tv_nsec)})
            stamp.append("|").append(std::to_string(number));
    }
    return stamp;
}

std::optional<Dictionary> ReadBundleList(const std::string& path) {
    auto bytes = NSFileManager::defaultManager().contentsAtPath(path, kBundleListLimits.bytes);
    if (!bytes) return std::nullopt;
    auto list = DeserializePropertyList(*bytes, kBundleListLimits);
    Dictionary* contents = list ? list->asDictionary() : nullptr;
    return contents ? std::optional(std::move(*contents)) : std::nullopt;
}

const std::string* TextOf(const Dictionary& list, std::string_view key) {
    const PropertyList* value = list.objectForKey(key);
    const std::string* text = value ? value->asString() : nullptr;
    return text && !text->empty() ? text : nullptr;
}

} // namespace tallyforge

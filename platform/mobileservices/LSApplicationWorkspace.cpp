#include "mobileservices/LSApplicationWorkspace.h"

#include "foundation/DispatchApply.h"
#include "foundation/NSFileManager.h"
#include "foundation/NSLocale.h"
#include "mobileservices/ApplicationBundle.h"

#include <algorithm>
#include <map>
#include <utility>

namespace tallyforge {

namespace {

constexpr std::string_view kDataContainers = "/var/mobile/Containers/Data/Application/";

MethodResult Text(std::string text) {
    return std::make_shared<const PropertyList>(PropertyList::string(std::move(text)));
}

MethodResult ValueOf(const Dictionary& list, std::string_view key) {
    const PropertyList* value = list.objectForKey(key);
    return value ? std::make_shared<const PropertyList>(*value) : nullptr;
}

// The folder as a URL; what a URL cannot hold is written as %XX.
std::string FileURL(std::string_view path) {
    constexpr std::string_view plain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.~!$&'()*+,;=:@/";
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string url = "file://";
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (plain.find(c) != std::string_view::npos)
            url += c;
        else
            url.append({'%', digits[byte >> 4], digits[byte & 15]});
    }
    return url;
}

/// What all the entries of one enumeration share.
struct Surroundings {
    std::vector<std::string> languages = NSLocalePreferredLanguages();
    std::map<std::string, std::string, std::less<>> dataContainers = findDataContainers();

    // Each data container says whose it is.
    static std::map<std::string, std::string, std::less<>> findDataContainers() {
        std::map<std::string, std::string, std::less<>> found;
        const std::string folder(kDataContainers);
        auto names = NSFileManager::defaultManager().contentsOfDirectoryAtPath(folder);
        if (!names) return found;
        for (const std::string& name : *names) {
            auto facts =
                ReadBundleList(folder + name + "/.com.apple.mobile_container_manager.metadata.plist");
            const std::string* owner = facts ? TextOf(*facts, "MCMMetadataIdentifier") : nullptr;
            if (owner) found.insert_or_assign(*owner, folder + name + "/");
        }
        return found;
    }
};

// In the first of the user's languages that the application speaks, else in its own.
Dictionary TranslationOf(const std::string& bundle, const Dictionary& info,
                         const std::vector<std::string>& languages) {
    const auto in = [&](const std::string& language) {
        return ReadBundleList(bundle + language + ".lproj/InfoPlist.strings");
    };
    for (const std::string& language : languages) {
        if (auto strings = in(language)) return std::move(*strings);
    }
    const std::string* own = TextOf(info, "CFBundleDevelopmentRegion");
    if (!own || own->find('/') != std::string::npos) return {};
    if (std::ranges::find(languages, *own) != languages.end()) return {};
    return in(*own).value_or(Dictionary());
}

// White space alone names nothing.
const std::string* NameIn(const Dictionary& list, std::string_view key) {
    const std::string* name = TextOf(list, key);
    return name && name->find_first_not_of(" \t\r\n") != std::string::npos ? name : nullptr;
}

std::string NameOf(const ApplicationFolder& folder, const Dictionary& info,
                   const std::vector<std::string>& languages) {
    const Dictionary translation = TranslationOf(folder.path, info, languages);
    for (const char* key : {"CFBundleDisplayName", "CFBundleName"}) {
        for (const Dictionary* list : {&translation, &info}) {
            if (const std::string* name = NameIn(*list, key)) return *name;
        }
    }
    if (const std::string* name = NameIn(info, "CFBundleExecutable")) return *name;
    const std::string_view path(folder.path.data(), folder.path.size() - std::string_view(".app/").size());
    return std::string(path.substr(path.rfind('/') + 1));
}

/// One installed application, as it was when the workspace was asked.
class LSApplicationProxy final : public NSObject {
  public:
    LSApplicationProxy(const ApplicationFolder& folder, const std::string& identifier, const Dictionary& info,
                       const Surroundings& around) {
        localizedName = Text(NameOf(folder, info, around.languages));
        shortVersionString = ValueOf(info, "CFBundleShortVersionString");
        applicationIdentifier = Text(identifier);
        bundleURL = Text(FileURL(folder.path));
        if (auto found = around.dataContainers.find(identifier); found != around.dataContainers.end())
            dataContainerURL = Text(FileURL(found->second));
        applicationType = Text(folder.ofTheSystem() ? "System" : "User");
        appTags = ValueOf(info, "SBAppTags");
        if (!folder.ofTheSystem()) readStoreFacts(folder.aside + "iTunesMetadata.plist");
    }

    const MethodTable& methods() const override;

    MethodResult localizedName, shortVersionString, vendorName, applicationIdentifier, itemID, itemName,
        teamID, bundleURL, dataContainerURL, applicationType, applicationVariant, appTags;

  private:
    void readStoreFacts(const std::string& path) {
        const auto facts = ReadBundleList(path);
        if (!facts) return;
        vendorName = ValueOf(*facts, "artistName");
        itemID = ValueOf(*facts, "itemId");
        itemName = ValueOf(*facts, "itemName");
        teamID = ValueOf(*facts, "teamID");
        applicationVariant = ValueOf(*facts, "variantID");
    }
};

template <MethodResult LSApplicationProxy::*attribute>
MethodResult Attribute(NSObject& self, const MethodArguments&) {
    return static_cast<LSApplicationProxy&>(self).*attribute;
}

const MethodTable& LSApplicationProxy::methods() const {
    static constexpr MethodEntry own[] = {
        {"localizedName", Attribute<&LSApplicationProxy::localizedName>},
        {"shortVersionString", Attribute<&LSApplicationProxy::shortVersionString>},
        {"vendorName", Attribute<&LSApplicationProxy::vendorName>},
        {"applicationIdentifier", Attribute<&LSApplicationProxy::applicationIdentifier>},
        {"itemID", Attribute<&LSApplicationProxy::itemID>},
        {"itemName", Attribute<&LSApplicationProxy::itemName>},
        {"teamID", Attribute<&LSApplicationProxy::teamID>},
        {"bundleURL", Attribute<&LSApplicationProxy::bundleURL>},
        {"dataContainerURL", Attribute<&LSApplicationProxy::dataContainerURL>},
        {"applicationType", Attribute<&LSApplicationProxy::applicationType>},
        {"applicationVariant", Attribute<&LSApplicationProxy::applicationVariant>},
        {"appTags", Attribute<&LSApplicationProxy::appTags>},
    };
    static constexpr MethodTable table{own};
    return table;
}

// Nothing where the folder holds no application.
std::shared_ptr<LSApplicationProxy> ReadApplication(const ApplicationFolder& folder,
                                                    const Surroundings& around) {
    const auto info = ReadBundleList(folder.path + "Info.plist");
    const std::string* identifier = info ? TextOf(*info, "CFBundleIdentifier") : nullptr;
    if (!identifier) return nullptr;
    return std::make_shared<LSApplicationProxy>(folder, *identifier, *info, around);
}

/// Where the applications lay when the workspace was last asked for all of them.
struct Places {
    std::string stamp;
    std::map<std::string, std::string, std::less<>> pathOf; // by identifier
};

Places& KnownPlaces() {
    static Places places;
    return places;
}

class Workspace final : public LSApplicationWorkspace {
  public:
    std::vector<std::shared_ptr<NSObject>> allInstalledApplications() const override {
        Places places{StampOfApplicationFolders(), {}};
        const Surroundings around;
        const std::vector<ApplicationFolder> folders = ListApplicationFolders();
        std::vector<std::shared_ptr<LSApplicationProxy>> found(folders.size());
        dispatch_apply(folders.size(),
                       [&](size_t place) { found[place] = ReadApplication(folders[place], around); });
        std::vector<std::shared_ptr<NSObject>> applications;
        for (size_t place = 0; place < folders.size(); ++place) {
            if (!found[place]) continue;
            places.pathOf.insert_or_assign(*found[place]->applicationIdentifier->asString(),
                                           folders[place].path);
            applications.push_back(std::move(found[place]));
        }
        KnownPlaces() = std::move(places);
        return applications;
    }
};

std::optional<LSBundle> BundleAtKnownPlace(std::string_view identifier) {
    const Places& places = KnownPlaces();
    const auto known = places.pathOf.find(identifier);
    if (known == places.pathOf.end()) return std::nullopt;
    auto info = ReadBundleList(known->second + "Info.plist");
    const std::string* own = info ? TextOf(*info, "CFBundleIdentifier") : nullptr;
    if (!own || *own != identifier) return std::nullopt;
    return LSBundle{known->second, std::move(*info)};
}

} // namespace

void RegisterApplicationWorkspace() {
    RegisterClass("LSApplicationWorkspace",
                  {[] { return std::make_shared<Workspace>(); }, {{"defaultWorkspace", [] {
                                                                       static const auto workspace =
                                                                           std::make_shared<Workspace>();
                                                                       return workspace;
                                                                   }}}});
}

std::optional<LSBundle> LSBundleForIdentifier(std::string_view identifier) {
    if (auto bundle = BundleAtKnownPlace(identifier)) return bundle;
    const Places& places = KnownPlaces();
    if (!places.pathOf.contains(identifier) && places.stamp == StampOfApplicationFolders())
        return std::nullopt;
    Workspace().allInstalledApplications();
    return BundleAtKnownPlace(identifier);
}

} // namespace tallyforge

#include "corefoundation/CFPreferences.h"

#include "corefoundation/PendingDomains.h"
#include "foundation/FileDescriptor.h"
#include "foundation/PropertyListFormat.h"
#include "foundation/RegularFile.h"

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <map>
#include <utility>

namespace tallyforge {

namespace {

constexpr std::string_view preferencesFolder = "/var/mobile/Library/Preferences/";
constexpr std::string_view fileEnding = ".plist";

using Value = std::optional<PropertyList>;

/// The dictionary in a domain's file.
Result<Dictionary> ParseDomain(std::span<const uint8_t> bytes) {
    auto parsed = DeserializePropertyList(bytes);
    if (!parsed) return parsed.error();
    auto* dictionary = parsed->asDictionary();
    if (!dictionary) return Error{"not a dictionary"};
    return std::move(*dictionary);
}

/// What this process knows of one domain: its file as last read, and over it the keys not yet synchronised.
class Domain {
  public:
    explicit Domain(std::string_view name);

    const std::string& path() const { return path_; }
    const std::string& synchronizeFailure() const { return synchronizeFailure_; }
    const std::string& readFailure();
    bool hasPending() const { return !pending_.empty(); }

    std::optional<std::vector<std::string>> keys();
    Value value(std::string_view key);
    /// All from one and the same version of the file.
    Dictionary values(const std::vector<std::string>& keys);
    void set(std::string_view key, Value value);
    bool synchronize();

  private:
    struct Change {
        std::string key;
        Value value;
    };
    void refresh();
    const Change* change(std::string_view key) const;
    const PropertyList* present(std::string_view key) const;
    Status save();
    Result<std::vector<uint8_t>> edit(const NSFileManager::Present& present, bool& keepAside) const;
    bool onlyRemovals() const;

    std::string path_; // empty when the name is refused
    // The open descriptor of the version that was read keeps its inode number from being given to a later
    // one, so that an identity is never met twice.
    FileDescriptor version_;
    FileIdentity identity_;
    bool fileExists_ = false;
    Dictionary values_;
    std::string readFailure_;
    std::vector<Change> pending_; // in the order in which the keys were first set
    std::string synchronizeFailure_;
};

Domain::Domain(std::string_view name) {
    const bool usable = !name.empty() && name.find('/') == std::string_view::npos &&
                        name.find('\0') == std::string_view::npos &&
                        name.size() + fileEnding.size() <= NAME_MAX;
    if (usable)
        path_ = std::string(preferencesFolder) + std::string(name) + std::string(fileEnding);
    else
        readFailure_ = "not a domain name";
}

const std::string& Domain::readFailure() {
    refresh();
    return readFailure_;
}

/// Reads the file again if it is another version than the one that was read last.
void Domain::refresh() {
    if (path_.empty()) return;
    FileDescriptor version(DeviceRoot::open(path_, O_PATH));
    const int openFailure = version ? 0 : errno;
    const FileIdentity identity = version ? IdentityOfDescriptor(version.get()) : FileIdentity{};
    if (version && version_ && identity.exists() && identity == identity_) return;
    version_ = std::move(version);
    identity_ = identity;
    values_ = {};
    readFailure_.clear();
    fileExists_ = openFailure != ENOENT && openFailure != ENOTDIR;
    if (!fileExists_) return;
    const auto bytes = NSFileManager::defaultManager().contentsAtPath(path_);
    if (!bytes) {
        readFailure_ = bytes.reason();
        version_.reset(); // whatever stands in the way may be gone at the next look
        return;
    }
    auto parsed = ParseDomain(*bytes);
    if (parsed)
        values_ = std::move(*parsed);
    else
        readFailure_ = parsed.reason();
}

const Domain::Change* Domain::change(std::string_view key) const {
    for (const auto& change : pending_)
        if (change.key == key) return &change;
    return nullptr;
}

std::optional<std::vector<std::string>> Domain::keys() {
    refresh();
    std::vector<std::string> keys;
    for (const auto& entry : values_) {
        const Change* changed = change(entry.key);
        if (!changed || changed->value) keys.push_back(entry.key);
    }
    bool exists = fileExists_;
    for (const auto& change : pending_) {
        if (!change.value) continue;
        exists = true;
        if (!values_.objectForKey(change.key)) keys.push_back(change.key);
    }
    if (!exists) return std::nullopt;
    return keys;
}

Value Domain::value(std::string_view key) {
    refresh();
    const PropertyList* found = present(key);
    return found ? Value(*found) : std::nullopt;
}

Dictionary Domain::values(const std::vector<std::string>& keys) {
    refresh();
    Dictionary values;
    for (const auto& key : keys)
        if (const PropertyList* found = present(key)) values.setObjectForKey(*found, key);
    return values;
}

const PropertyList* Domain::present(std::string_view key) const {
    if (const Change* changed = change(key)) return changed->value ? &*changed->value : nullptr;
    return values_.objectForKey(key);
}

void Domain::set(std::string_view key, Value value) {
    for (auto& change : pending_) {
        if (change.key != key) continue;
        change.value = std::move(value);
        return;
    }
    pending_.push_back({std::string(key), std::move(value)});
}

bool Domain::onlyRemovals() const {
    for (const auto& change : pending_)
        if (change.value) return false;
    return true;
}

bool Domain::synchronize() {
    const Status saved = save();
    synchronizeFailure_ = saved ? std::string() : saved.reason();
    if (saved) pending_.clear();
    return static_cast<bool>(saved);
}

Status Domain::save() {
    if (path_.empty()) return Error{"not a domain name"};
    if (pending_.empty()) return Done{};
    auto& files = NSFileManager::defaultManager();
    if (onlyRemovals() && !FileDescriptor(DeviceRoot::open(path_, O_PATH)) && errno == ENOENT)
        return Done{}; // nothing to remove from a domain that does not exist
    const auto apply = [this](const NSFileManager::Present& present, bool& keepAside) {
        return edit(present, keepAside);
    };
    Status saved = files.rewriteFile(path_, apply);
    if (saved || files.fileExistsAtPath(preferencesFolder)) return saved;
    if (auto made = files.createDirectoryAtPath(preferencesFolder); !made)
        return Error{"creating its folder: " + made.reason()};
    return files.rewriteFile(path_, apply);
}

/// The file's present contents with this process's changes, and nothing else, applied.
Result<std::vector<uint8_t>> Domain::edit(const NSFileManager::Present& present, bool& keepAside) const {
    if (!present.unreadable.empty()) return Error{"reading the old file: " + present.unreadable};
    Dictionary values;
    if (present.exists) {
        auto parsed = ParseDomain(present.bytes);
        if (parsed)
            values = std::move(*parsed);
        else
            keepAside = true;
    }
    for (const auto& change : pending_) {
        if (change.value)
            values.setObjectForKey(*change.value, change.key);
        else
            values.removeObjectForKey(change.key);
    }
    auto bytes = BinaryPropertyList::Serialize(PropertyList::dictionary(std::move(values)));
    // A domain that could not be read back would be lost to everybody.
    if (const auto readable = ParseDomain(bytes); !readable)
        return Error{"the domain would be unreadable: " + readable.reason()};
    return bytes;
}

struct Store {
    std::map<std::string, Domain, std::less<>> domains;
    CFPreferencesTrace trace;
};

Store& TheStore() {
    static Store store;
    return store;
}

Domain& DomainNamed(std::string_view name) {
    auto& domains = TheStore().domains;
    const auto found = domains.find(name);
    if (found != domains.end()) return found->second;
    return domains.emplace(std::string(name), Domain(name)).first->second;
}

} // namespace

std::optional<std::vector<std::string>> CFPreferencesCopyKeyList(std::string_view domain, CFPreferencesUser,
                                                                 CFPreferencesHost) {
    return DomainNamed(domain).keys();
}

Dictionary CFPreferencesCopyMultiple(const std::vector<std::string>& keys, std::string_view domain,
                                     CFPreferencesUser, CFPreferencesHost) {
    return DomainNamed(domain).values(keys);
}

std::optional<PropertyList> CFPreferencesCopyAppValue(std::string_view key, std::string_view domain) {
    return DomainNamed(domain).value(key);
}

void CFPreferencesSetAppValue(std::string_view key, std::optional<PropertyList> value,
                              std::string_view domain) {
    if (const auto& heard = TheStore().trace.set) heard(domain, key, value ? &*value : nullptr);
    if (!key.empty()) DomainNamed(domain).set(key, std::move(value));
}

void CFPreferencesSetMultiple(const Dictionary& keysToSet, const std::vector<std::string>& keysToRemove,
                              std::string_view domain, CFPreferencesUser, CFPreferencesHost) {
    for (const auto& entry : keysToSet)
        CFPreferencesSetAppValue(entry.key, entry.value, domain);
    for (const auto& key : keysToRemove)
        CFPreferencesSetAppValue(key, std::nullopt, domain);
}

bool CFPreferencesAppSynchronize(std::string_view domain) {
    if (const auto& heard = TheStore().trace.synchronize) heard(domain);
    return DomainNamed(domain).synchronize();
}

bool SynchronizePendingDomains() {
    bool all = true;
    for (auto& [name, domain] : TheStore().domains)
        if (domain.hasPending()) all = domain.synchronize() && all;
    return all;
}

std::string CFPreferencesSynchronizeFailure(std::string_view domain) {
    return DomainNamed(domain).synchronizeFailure();
}

std::string CFPreferencesReadFailure(std::string_view domain) {
    return DomainNamed(domain).readFailure();
}

std::string CFPreferencesPath(std::string_view domain) {
    return DomainNamed(domain).path();
}

bool CFPreferencesHasPending(std::string_view domain) {
    return DomainNamed(domain).hasPending();
}

void CFPreferencesForgetAll() {
    TheStore().domains.clear();
}

void CFPreferencesSetTrace(CFPreferencesTrace trace) {
    TheStore().trace = std::move(trace);
}

} // namespace tallyforge

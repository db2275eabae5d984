#include "corefoundation/CFPreferences.h"

#include "corefoundation/PendingDomains.h"
#include "foundation/FileDescriptor.h"
#include "foundation/PropertyListFormat.h"
#include "foundation/RegularFile.h"

#include <algorithm>
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
    std::string takeMissedReading() { return std::exchange(missedReading_, {}); }
    std::string takeKeptAside() { return std::exchange(keptAside_, {}); }
    bool hasPending() const { return !pending_.empty(); }

    std::optional<std::vector<std::string>> keys();
    Value value(std::string_view key);
    /// All from one and the same version of the file.
    Dictionary values(const std::vector<std::string>& keys);
    void set(std::string_view key, Value value);
    bool holds(std::string_view key, const PropertyList& value) const;
    void insistOn(std::string_view key);
    bool synchronize();

  private:
    struct Change {
        std::string key;
        Value value;
    };
    void refresh();
    bool areAllKeys(const std::vector<std::string>& keys) const;
    const Change* change(std::string_view key) const;
    const PropertyList* present(std::string_view key) const;
    Status save();
    Result<std::vector<uint8_t>> edit(const NSFileManager::Present& present, std::string& damage);
    Result<Dictionary> takeValuesOf(std::span<const uint8_t> bytes);
    bool onlyRemovals() const;

    std::string path_; // empty when the name is refused
    // The open descriptor of the version that was read keeps its inode number from being given to a later
    // one, so that an identity is never met twice.
    FileDescriptor version_;
    FileIdentity identity_;
    bool fileExists_ = false;
    Dictionary values_;
    // What the last save wrote, or was to write, and what that reads as. Most often the next save finds these
    // very bytes in the file, and need not parse them.
    struct Written {
        std::vector<uint8_t> bytes;
        Dictionary values;
    };
    std::optional<Written> written_;
    std::string readFailure_;
    std::string missedReading_;
    std::string keptAside_;
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
    if (version_) {
        const FileDescriptor present(DeviceRoot::open(path_, O_PATH));
        if (present && IdentityOfDescriptor(present.get()) == identity_) return;
    }
    values_ = {};
    readFailure_.clear();
    version_ = FileDescriptor(DeviceRoot::open(path_, O_RDONLY | O_NONBLOCK));
    fileExists_ = version_ || (errno != ENOENT && errno != ENOTDIR);
    if (!fileExists_) return;
    const auto bytes = version_ ? ReadRegularFile(version_.get(), PropertyListLimits{}.bytes, &identity_)
                                : Result<std::vector<uint8_t>>(ErrorOfErrno(errno));
    if (!bytes) {
        readFailure_ = missedReading_ = bytes.reason();
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
    keys.reserve(values_.count() + pending_.size());
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

/// Whether these are the keys of the file, in its order, as whoever has just asked for them has them.
bool Domain::areAllKeys(const std::vector<std::string>& keys) const {
    return std::ranges::equal(keys, values_.entries(), {}, {}, &Dictionary::Entry::key);
}

Dictionary Domain::values(const std::vector<std::string>& keys) {
    refresh();
    if (pending_.empty() && areAllKeys(keys)) return values_;
    Dictionary values;
    values.reserve(keys.size());
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

bool Domain::holds(std::string_view key, const PropertyList& value) const {
    const PropertyList* held = present(key);
    return held && *held == value;
}

void Domain::insistOn(std::string_view key) {
    const PropertyList* held = present(key);
    if (held && !change(key)) pending_.push_back({std::string(key), *held});
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
    std::string damage;
    const auto apply = [&](const NSFileManager::Present& present, bool& keepAside) {
        auto bytes = edit(present, damage);
        keepAside = !damage.empty();
        return bytes;
    };
    Status saved = files.rewriteFile(path_, apply);
    // By now somebody else may have made the folder that was missing.
    if (!saved && (saved.number() == ENOENT || !files.fileExistsAtPath(preferencesFolder))) {
        if (auto made = files.createDirectoryAtPath(preferencesFolder); !made)
            return made.error().during("creating its folder");
        saved = files.rewriteFile(path_, apply);
    }
    if (saved && !damage.empty()) keptAside_ = damage;
    return saved;
}

/// The file's present contents with this process's changes, and nothing else, applied. Contents that are no
/// domain count as none; `damage` says why they are none.
Result<std::vector<uint8_t>> Domain::edit(const NSFileManager::Present& present, std::string& damage) {
    if (!present.unreadable.empty()) return Error{"reading the old file: " + present.unreadable};
    Dictionary values;
    if (present.exists) {
        auto parsed = takeValuesOf(present.bytes);
        if (parsed)
            values = std::move(*parsed);
        else
            damage = parsed.reason();
    }
    for (const auto& change : pending_) {
        if (change.value)
            values.setObjectForKey(*change.value, change.key);
        else
            values.removeObjectForKey(change.key);
    }
    auto bytes = BinaryPropertyList::Serialize(PropertyList::dictionary(std::move(values)));
    // A domain that could not be read back would be lost to everybody.
    auto readable = ParseDomain(bytes);
    if (!readable) return Error{"the domain would be unreadable: " + readable.reason()};
    written_ = Written{bytes, std::move(*readable)};
    return bytes;
}

/// What the bytes read as. If it is known from the last save, it is taken from there.
Result<Dictionary> Domain::takeValuesOf(std::span<const uint8_t> bytes) {
    auto written = std::exchange(written_, std::nullopt);
    if (written && std::ranges::equal(bytes, written->bytes)) return std::move(written->values);
    return ParseDomain(bytes);
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
    for (const auto& entry : keysToSet) {
        if (const auto& heard = TheStore().trace.set) heard(domain, entry.key, &entry.value);
        Domain& changed = DomainNamed(domain);
        if (!entry.key.empty() && !changed.holds(entry.key, entry.value)) changed.set(entry.key, entry.value);
    }
    for (const auto& key : keysToRemove)
        CFPreferencesSetAppValue(key, std::nullopt, domain);
}

void CFPreferencesInsistOn(const std::vector<std::string>& keys, std::string_view domain) {
    for (const std::string& key : keys)
        DomainNamed(domain).insistOn(key);
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

std::string CFPreferencesTakeMissedReading(std::string_view domain) {
    return DomainNamed(domain).takeMissedReading();
}

std::string CFPreferencesTakeKeptAside(std::string_view domain) {
    return DomainNamed(domain).takeKeptAside();
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

#pragma once

#include "foundation/NSFileManager.h"
#include "foundation/PropertyList.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// Preferences of the current user on any host: "/var/mobile/Library/Preferences/<domain>.plist".
///
/// Reads see what the file holds now (it is read again whenever its identity has changed) under what this
/// process has set and not yet synchronised. Synchronising locks, reads the file again, applies only the keys
/// set here, and saves durably, so another process's keys are never lost. A file that cannot be parsed reads
/// as empty and is kept aside before it is replaced.
enum class CFPreferencesUser { kCFPreferencesCurrentUser };
enum class CFPreferencesHost { kCFPreferencesAnyHost };
inline constexpr auto kCFPreferencesCurrentUser = CFPreferencesUser::kCFPreferencesCurrentUser;
inline constexpr auto kCFPreferencesAnyHost = CFPreferencesHost::kCFPreferencesAnyHost;

/// The keys of the domain; nothing when there is no such domain.
std::optional<std::vector<std::string>> CFPreferencesCopyKeyList(std::string_view domain, CFPreferencesUser,
                                                                 CFPreferencesHost);
/// The values of those keys that are present.
Dictionary CFPreferencesCopyMultiple(const std::vector<std::string>& keys, std::string_view domain,
                                     CFPreferencesUser, CFPreferencesHost);
std::optional<PropertyList> CFPreferencesCopyAppValue(std::string_view key, std::string_view domain);
/// Setting nothing removes the key. An empty key names no place: nothing is kept. Takes effect for other
/// processes at the next synchronise.
void CFPreferencesSetAppValue(std::string_view key, std::optional<PropertyList> value,
                              std::string_view domain);
/// Sets, then removes. A value that the domain has already, as far as this process knows, is no change: what
/// another process has made of it meanwhile stays.
void CFPreferencesSetMultiple(const Dictionary& keysToSet, const std::vector<std::string>& keysToRemove,
                              std::string_view domain, CFPreferencesUser, CFPreferencesHost);
/// The keys' present values are written at the next synchronise even if the file holds them already: they win
/// over what another process writes until then.
void CFPreferencesInsistOn(const std::vector<std::string>& keys, std::string_view domain);
/// True when everything set before is durably in the file. After a failure the values stay pending.
bool CFPreferencesAppSynchronize(std::string_view domain);

/// Why the last synchronise of the domain failed; empty when it succeeded.
std::string CFPreferencesSynchronizeFailure(std::string_view domain);
/// Why the domain's file cannot be read as a domain (it then reads as empty); empty when it can or is absent.
std::string CFPreferencesReadFailure(std::string_view domain);
/// Why the domain's file was there and yet could not be read, at any look since this was last asked; empty
/// when every look succeeded, though what the file holds may be no domain.
std::string CFPreferencesTakeMissedReading(std::string_view domain);
/// Why a synchronise since this was last asked kept the old file aside (it could not be parsed); else empty.
std::string CFPreferencesTakeKeptAside(std::string_view domain);
/// The device path of the domain's file.
std::string CFPreferencesPath(std::string_view domain);
/// Whether this process has set keys that are not yet synchronised.
bool CFPreferencesHasPending(std::string_view domain);
/// Forgets all that is cached and pending; for tests and for a change of the device root.
void CFPreferencesForgetAll();

/// Hears of every set (nothing as value for a removal) and of every synchronise; for traces.
struct CFPreferencesTrace {
    std::function<void(std::string_view domain, std::string_view key, const PropertyList* value)> set;
    std::function<void(std::string_view domain)> synchronize;
};
void CFPreferencesSetTrace(CFPreferencesTrace trace);

} // namespace tallyforge

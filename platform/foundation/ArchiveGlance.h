#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tallyforge {

/// What is told of a keyed archive without building its objects: about a fortieth of the work.
struct ArchiveGlance {
    /// It unarchives to a dictionary. False says nothing: only small archives in the usual layout, of
    /// strings, numbers and booleans, are told at a glance.
    bool isDictionary = false;
    /// The string under the key, when there is one.
    std::optional<std::string> text;
};
ArchiveGlance GlanceAtArchivedDictionary(std::span<const uint8_t> bytes, std::string_view key);

} // namespace tallyforge

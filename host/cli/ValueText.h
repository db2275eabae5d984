#pragma once

#include "foundation/PropertyList.h"
#include "foundation/Result.h"
#include "settings/SettingsKeys.h"

#include <optional>
#include <string>
#include <string_view>

namespace tallyforge {

/// The finite decimal number that the whole text is, with or without a sign; nothing when it is none.
std::optional<double> NumberFromText(std::string_view text);

/// What is allowed for the setting, in words: "a number from 0 to 100".
std::string AllowedValues(const SettingKey& key);

/// The value that the text is for this setting: numbers, codes and switches as float numbers, colours as
/// strings with upper-case digits. An error says what is allowed.
Result<PropertyList> SettingFromText(const SettingKey& key, std::string_view text);

/// Whether the text is whole and valid UTF-8.
bool IsUTF8(std::string_view text);

} // namespace tallyforge

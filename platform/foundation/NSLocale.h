#pragma once

#include <string>
#include <vector>

namespace tallyforge {

/// The languages that the device's user reads, best first, each followed by what it is a kind of: "pt-BR",
/// "pt". The device's global preferences say so under "AppleLanguages"; without them it is "en".
std::vector<std::string> NSLocalePreferredLanguages();

/// The locale that texts are compared in: "AppleLocale" of the device's global preferences, else the first of
/// their languages, else what the environment says, else "en".
std::string NSLocaleCurrentIdentifier();

} // namespace tallyforge

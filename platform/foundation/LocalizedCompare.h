#pragma once

#include <string_view>

namespace tallyforge {

/// `localizedStandardCompare:`: the order in which people expect names (UTF-8). By the current locale;
/// letters count before accents, accents before case and width, and runs of digits by their value. Below 0, 0
/// or above 0; 0 only for the same bytes, so that the order is total. Main thread only.
int localizedStandardCompare(std::string_view a, std::string_view b);

/// The locale is looked up at the first comparison, and again at the next one after this.
void LocalizedCompareForgetLocale();

} // namespace tallyforge

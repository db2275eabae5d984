#pragma once

#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"
#include "corefoundation/NSUserDefaults.h"
#include "foundation/NSNotificationCenter.h"

#include <string>
#include <string_view>
#include <vector>

namespace tallyforge::test {

/// Writes down what happens to the settings and what is posted, a line each, as long as it lives.
class EffectLog {
  public:
    EffectLog() {
        CFPreferencesSetTrace(
            {.set =
                 [this](std::string_view domain, std::string_view key, const PropertyList* value) {
                     lines.push_back("set " + std::string(domain) + " " + std::string(key) + " " +
                                     (value ? value->description() : "nothing"));
                 },
             .synchronize = [this](std::string_view domain) { tell("synchronize", domain); }});
        NSUserDefaults::standardUserDefaults().setTrace([this] { lines.push_back("synchronize-defaults"); });
        NSNotificationCenter::defaultCenter().setTrace([this](std::string_view name) { tell("post", name); });
        CFNotificationCenterGetDarwinNotifyCenter().setTrace(
            [this](std::string_view name) { tell("darwin", name); });
    }
    ~EffectLog() {
        CFPreferencesSetTrace({});
        NSUserDefaults::standardUserDefaults().setTrace({});
        NSNotificationCenter::defaultCenter().setTrace({});
        CFNotificationCenterGetDarwinNotifyCenter().setTrace({});
    }
    EffectLog(const EffectLog&) = delete;
    EffectLog& operator=(const EffectLog&) = delete;

    void tell(std::string verb, std::string_view what) {
        lines.push_back(std::move(verb) + " " + std::string(what));
    }
    std::vector<std::string> lines;
};

} // namespace tallyforge::test

#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"

#include <cstdio>
#include <string>
#include <unistd.h>
#include <vector>

// corefoundation_helper set ROOT DOMAIN PREFIX COUNT [NAME]
//     sets PREFIX0, PREFIX1, ..., synchronises after each, and posts NAME after each where there is one
// corefoundation_helper post NAME ...                  posts and ends at once

namespace {

int SetKeys(const std::vector<std::string>& words) {
    using namespace tallyforge;
    if (!DeviceRoot::set(words[1])) return 1;
    const int count = std::stoi(words[4]);
    for (int i = 0; i < count; ++i) {
        CFPreferencesSetAppValue(words[3] + std::to_string(i), PropertyList::integer(i), words[2]);
        if (CFPreferencesAppSynchronize(words[2])) {
            if (words.size() > 5)
                CFNotificationCenterPostNotification(CFNotificationCenterGetDarwinNotifyCenter(), words[5],
                                                     nullptr, nullptr, true);
            continue;
        }
        std::fprintf(stderr, "%s\n", CFPreferencesSynchronizeFailure(words[2]).c_str());
        return 1;
    }
    return 0;
}

int Post(const std::vector<std::string>& words) {
    using namespace tallyforge;
    for (size_t i = 1; i < words.size(); ++i)
        CFNotificationCenterPostNotification(CFNotificationCenterGetDarwinNotifyCenter(), words[i], nullptr,
                                             nullptr, true);
    _exit(0); // with no farewell to the bus
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.size() >= 5 && words[0] == "set") return SetKeys(words);
    if (words.size() >= 2 && words[0] == "post") return Post(words);
    return 2;
}

#include "cli/AppsCommand.h"

#include "appselect/QuillonAppList.h"
#include "cli/Report.h"
#include "cli/ValueJson.h"
#include "foundation/LocalizedCompare.h"
#include "mobileservices/LSApplicationWorkspace.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace tallyforge {

namespace {

QuillonAppList::Catalogue AppsFor(const std::string& which) {
    const QuillonAppList& list = QuillonAppList::sharedApplicationList();
    if (which == "nonhidden") return list.allNonHiddenApplications();
    if (which == "system") return list.allSystemApplications();
    if (which == "user") return list.allUserApplications();
    return list.allApplications();
}

} // namespace

int RunApps(const Command& command) {
    RegisterApplicationWorkspace();
    const auto apps = AppsFor(command.apps);
    std::vector<std::pair<std::string, std::string>> sorted(apps.begin(), apps.end());
    std::ranges::stable_sort(sorted, [](const auto& a, const auto& b) {
        return localizedStandardCompare(a.second, b.second) < 0;
    });
    auto list = nlohmann::ordered_json::array();
    for (const auto& [identifier, name] : sorted) {
        if (command.json)
            list.push_back({{"identifier", identifier}, {"name", name}});
        else
            Print(OneLineText(identifier) + "\t" + OneLineText(name) + "\n");
    }
    if (command.json) PrintJson(list);
    return FinishOutput(command.name);
}

} // namespace tallyforge

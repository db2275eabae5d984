#include "panes/Reset.h"

#include "corefoundation/CFPreferences.h"
#include "panes/FinishChange.h"
#include "panes/MarkSettings.h"
#include "panes/PaneController.h"
#include "panes/Randomise.h"

namespace tallyforge {

namespace {

struct ResetSetting {
    std::string_view key;
    Via via;
    float number = 0;
    std::string_view color = {}; // counts instead of the number where there is one
};

constexpr ResetSetting kBadge[] = {
    {"badgeshape", Via::row, 0},         {"convertbadgeroman", Via::row, 0},
    {"badgesize", Via::row, 0},          {"badgerotation", Via::row, 0},
    {"badgepos", Via::row, 2},           {"badgeoffsetX", Via::row, 0},
    {"badgeoffsetY", Via::row, 0},       {"badgebgcol", Via::direct, 0, "#FF0000"},
    {"badgealpha", Via::direct, 100},    {"badgetxtcol", Via::direct, 0, "#FFFFFF"},
    {"badgetxtsize", Via::direct, 0},    {"badgetxtoffsetX", Via::direct, 0},
    {"badgetxtoffsetY", Via::direct, 0}, {"badgebordercol", Via::direct, 0, "#FF0000"},
    {"badgebordersize", Via::direct, 0}, {"badgeglowcol", Via::direct, 0, "#00FF00"},
    {"badgeglowalpha", Via::direct, 0},  {"badgeanimtype", Via::direct, 0},
    {"badgeanimspd", Via::direct, 1},
};

constexpr ResetSetting kCloseBox[] = {
    {"closeboxshape", Via::row, 10}, // which randomising never draws
    {"closeboxsize", Via::row, 0},          {"closeboxrotation", Via::row, 0},
    {"closeboxpos", Via::row, 0},           {"closeboxoffsetX", Via::row, 0},
    {"closeboxoffsetY", Via::row, 0},       {"closeboxbgcol", Via::direct, 0, "#FFFFFF"},
    {"closeboxalpha", Via::direct, 100},    {"closeboxtxtcol", Via::direct, 0, "#FFFFFF"},
    {"closeboxtxtsize", Via::direct, 0},    {"closeboxtxtoffsetX", Via::direct, 0},
    {"closeboxtxtoffsetY", Via::direct, 0}, {"closeboxbordercol", Via::direct, 0, "#000000"},
    {"closeboxbordersize", Via::direct, 0}, {"closeboxglowcol", Via::direct, 0, "#FF0000"},
    {"closeboxglowalpha", Via::direct, 0},  {"closeboxanimtype", Via::direct, 0},
    {"closeboxanimspd", Via::direct, 1},
};

constexpr ResetSetting kNewDot[] = {
    {"newdotshape", Via::row, 0},      {"newdotsize", Via::row, 0},
    {"newdotpos", Via::row, 0},        {"newdotoffsetX", Via::row, 0},
    {"newdotoffsetY", Via::row, 0},    {"newdotbgcol", Via::direct, 0, "none"},
    {"newdotalpha", Via::direct, 100}, {"newdotanimtype", Via::direct, 0},
    {"newdotanimspd", Via::direct, 1},
};

constexpr MarkSettings<ResetSetting> kSettings{kBadge, kCloseBox, kNewDot};

PropertyList ValueOf(const ResetSetting& setting) {
    return setting.color.empty() ? PropertyList::floatNumber(setting.number)
                                 : PropertyList::string(std::string(setting.color));
}

} // namespace

void ResetMark(MarkKind mark, MarkPaneController& pane) {
    for (const ResetSetting& setting : kSettings.of(mark)) {
        if (setting.via == Via::row)
            pane.resetSpecifierWithValue(setting.key, setting.number);
        else
            CFPreferencesSetAppValue(setting.key, ValueOf(setting), kSettingsDomain);
    }
    FinishChange();
}

std::vector<std::string_view> SettingsWithoutRow(MarkKind mark, MarkPaneController& pane) {
    std::vector<std::string_view> without;
    for (const ResetSetting& setting : kSettings.of(mark)) {
        if (setting.via == Via::row && !pane.specifierForID(setting.key)) without.push_back(setting.key);
    }
    return without;
}

} // namespace tallyforge

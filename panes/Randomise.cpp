#include "panes/Randomise.h"

#include "corefoundation/CFPreferences.h"
#include "panes/FinishChange.h"
#include "panes/MarkSettings.h"
#include "panes/PaneController.h"
#include "settings/ColorValues.h"
#include "settings/Settings.h"

namespace tallyforge {

namespace {

enum class Draw { code, fraction, color };

struct RandomSetting {
    std::string_view key;
    Via via;
    Draw draw;
    float min = 0; // bounds, inclusive for codes
    float max = 0;
};

constexpr float kLastAnimation = 12;

constexpr RandomSetting kBadge[] = {
    {"convertbadgeroman", Via::row, Draw::code, 0, 1},
    {"badgeshape", Via::row, Draw::code, 0, 4},
    {"badgesize", Via::row, Draw::fraction, -1.5F, 2.25F},
    {"badgerotation", Via::row, Draw::fraction, 0, 360},
    {"badgepos", Via::row, Draw::code, 0, 8},
    {"badgeoffsetX", Via::row, Draw::fraction, -20, 20},
    {"badgeoffsetY", Via::row, Draw::fraction, -20, 20},
    {"badgebgcol", Via::direct, Draw::color},
    {"badgealpha", Via::direct, Draw::fraction, 0, 100},
    {"badgetxtcol", Via::direct, Draw::color},
    {"badgetxtsize", Via::direct, Draw::fraction, -1.5F, 2.25F},
    {"badgetxtoffsetX", Via::direct, Draw::fraction, -20, 20},
    {"badgetxtoffsetY", Via::direct, Draw::fraction, -20, 20},
    {"badgebordercol", Via::direct, Draw::color},
    {"badgebordersize", Via::direct, Draw::fraction, 0, 5},
    {"badgeglowcol", Via::direct, Draw::color},
    {"badgeglowalpha", Via::direct, Draw::fraction, 0, 100},
    {"badgeanimtype", Via::direct, Draw::code, 0, kLastAnimation},
    {"badgeanimspd", Via::direct, Draw::fraction, 0.2F, 4},
};

constexpr RandomSetting kCloseBox[] = {
    {"closeboxshape", Via::row, Draw::code, 0, 4},
    {"closeboxsize", Via::row, Draw::fraction, -1.5F, 1.5F}, // narrower than the badge's, as is meant
    {"closeboxrotation", Via::row, Draw::fraction, 0, 360},
    {"closeboxpos", Via::row, Draw::code, 0, 8},
    {"closeboxoffsetX", Via::row, Draw::fraction, -20, 20},
    {"closeboxoffsetY", Via::row, Draw::fraction, -20, 20},
    {"closeboxbgcol", Via::direct, Draw::color},
    {"closeboxalpha", Via::direct, Draw::fraction, 0, 100},
    {"closeboxtxtcol", Via::direct, Draw::color},
    {"closeboxtxtsize", Via::direct, Draw::fraction, -1.5F, 2.25F},
    {"closeboxtxtoffsetX", Via::direct, Draw::fraction, -20, 20},
    {"closeboxtxtoffsetY", Via::direct, Draw::fraction, -20, 20},
    {"closeboxbordercol", Via::direct, Draw::color},
    {"closeboxbordersize", Via::direct, Draw::fraction, 0, 6},
    {"closeboxglowcol", Via::direct, Draw::color},
    {"closeboxglowalpha", Via::direct, Draw::fraction, 0, 100},
    {"closeboxanimtype", Via::direct, Draw::code, 0, kLastAnimation},
    {"closeboxanimspd", Via::direct, Draw::fraction, 0.2F, 4},
};

constexpr RandomSetting kNewDot[] = {
    {"newdotshape", Via::row, Draw::code, 0, 3},
    {"newdotsize", Via::row, Draw::fraction, -1, 1},
    {"newdotpos", Via::row, Draw::code, 0, 3},
    {"newdotoffsetX", Via::row, Draw::fraction, -20, 20},
    {"newdotoffsetY", Via::row, Draw::fraction, -20, 20},
    {"newdotbgcol", Via::direct, Draw::color},
    {"newdotalpha", Via::direct, Draw::fraction, 0, 100},
    {"newdotanimtype", Via::direct, Draw::code, 0, kLastAnimation},
    {"newdotanimspd", Via::direct, Draw::fraction, 0.2F, 4},
};

constexpr MarkSettings<RandomSetting> kSettings{kBadge, kCloseBox, kNewDot};

} // namespace

void RandomiseMark(MarkKind mark, MarkPaneController& pane) {
    for (const RandomSetting& setting : kSettings.of(mark)) {
        bool isFloat = setting.draw == Draw::fraction;
        if (setting.draw == Draw::color)
            CFPreferencesSetAppValue(setting.key, PropertyList::string(RandomColorString()), kSettingsDomain);
        else if (setting.via == Via::row)
            SetRandomSpecifierValue(setting.key, pane, isFloat, setting.min, setting.max);
        else
            WriteRandomValue(setting.key, isFloat, setting.min, setting.max);
    }
    FinishChange();
}

} // namespace tallyforge

#include "settings/Settings.h"

#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"
#include "foundation/NSNotificationCenter.h"
#include "foundation/Random.h"
#include "preferences/PSListController.h"

#include <cmath>

namespace tallyforge {

namespace {

Dictionary& Snapshot() {
    static Dictionary snapshot;
    return snapshot;
}

int32_t TruncatedToInt32(float value) {
    if (std::isnan(value)) return 0;
    if (value >= 2147483648.0F) return INT32_MAX;
    if (value <= -2147483648.0F) return INT32_MIN;
    return static_cast<int32_t>(value);
}

float DrawRandomValue(bool isFloat, float min, float max) {
    return RandomValue(arc4random(), isFloat ? DrawMode::fraction : DrawMode::wholeNumber, min, max);
}

} // namespace

void LoadSettingsSnapshot() {
    auto keys = CFPreferencesCopyKeyList(kSettingsDomain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    Snapshot() = keys ? CFPreferencesCopyMultiple(*keys, kSettingsDomain, kCFPreferencesCurrentUser,
                                                  kCFPreferencesAnyHost)
                      : Dictionary();
}

const Dictionary& SettingsSnapshot() {
    return Snapshot();
}

float SettingNumber(std::string_view key, float absent) {
    const PropertyList* value = Snapshot().objectForKey(key);
    return value ? value->floatValue() : absent;
}

int32_t SettingCode(std::string_view key, int32_t absent) {
    const PropertyList* value = Snapshot().objectForKey(key);
    return value ? value->intValue() : absent;
}

int32_t SettingTruncated(std::string_view key, float absent) {
    return TruncatedToInt32(SettingNumber(key, absent));
}

bool SettingFlag(std::string_view key) {
    const PropertyList* value = Snapshot().objectForKey(key);
    return value && value->boolValue();
}

void AnnounceSettingsChanged() {
    NSNotificationCenter::defaultCenter().postNotificationName(kReloadPreviewNotification);
    CFNotificationCenterPostNotification(CFNotificationCenterGetDarwinNotifyCenter(), kPrefsNotification,
                                         nullptr, nullptr, true);
}

float RandomValue(uint32_t r, DrawMode mode, float min, float max) {
    if (mode == DrawMode::wholeNumber) {
        auto n = static_cast<uint32_t>(TruncatedToInt32(max + 1 - min));
        int32_t first = TruncatedToInt32(min);
        return n == 0 ? static_cast<float>(first) : static_cast<float>(static_cast<int64_t>(r % n) + first);
    }
    constexpr float kTwoToMinus32 = 2.3283064e-10F;
    float value = (max - min) * (static_cast<float>(r) * kTwoToMinus32) + min;
    // The highest draws round up to the upper bound, which is not to be reached.
    return value >= max && max > min ? std::nextafter(max, min) : value;
}

void SetRandomSpecifierValue(std::string_view key, PSListController& controller, bool isFloat, float min,
                             float max) {
    float value = DrawRandomValue(isFloat, min, max);
    auto specifier = controller.specifierForID(key);
    controller.setPreferenceValueSpecifier(PropertyList::floatNumber(value), specifier);
    controller.reloadSpecifier(specifier);
}

void WriteRandomValue(std::string_view key, bool isFloat, float min, float max) {
    CFPreferencesSetAppValue(key, PropertyList::floatNumber(DrawRandomValue(isFloat, min, max)),
                             kSettingsDomain);
}

float GrowthFactor(float v) {
    return v < 0 ? 1 + v / 2 : 1 + v;
}

} // namespace tallyforge

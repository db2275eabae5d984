#include "panes/FinishChange.h"

#include "corefoundation/CFPreferences.h"
#include "corefoundation/NSUserDefaults.h"
#include "settings/Settings.h"

namespace tallyforge {

void FinishChange() {
    CFPreferencesAppSynchronize(kSettingsDomain);
    NSUserDefaults::standardUserDefaults().synchronize();
    AnnounceSettingsChanged();
}

} // namespace tallyforge

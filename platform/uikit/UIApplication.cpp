#include "uikit/UIApplication.h"

namespace tallyforge {

UIApplication& UIApplication::sharedApplication() {
    static UIApplication application;
    return application;
}

bool UIApplication::canOpenURL(const std::string& url) const {
    return opener_.canOpen && opener_.canOpen(url);
}

bool UIApplication::openURL(const std::string& url) {
    if (trace_) trace_(url);
    return opener_.open && opener_.open(url);
}

} // namespace tallyforge

#include "uikit/UIDevice.h"

namespace tallyforge {

UIDevice& UIDevice::currentDevice() {
    static UIDevice device;
    return device;
}

UIScreen& UIScreen::mainScreen() {
    static UIScreen screen;
    return screen;
}

CGSize UIScreen::size() const {
    if (size_) return *size_;
    return UIDevice::currentDevice().isPad() ? CGSize{768, 1024} : CGSize{375, 667};
}

} // namespace tallyforge

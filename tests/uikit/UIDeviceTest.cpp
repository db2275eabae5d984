#include "UIKitFixture.h"

namespace tallyforge::test {
namespace {

using UIDeviceTest = UIKitFixture;

TEST_F(UIDeviceTest, PhoneAndTablet) {
    UIDevice& device = UIDevice::currentDevice();
    EXPECT_TRUE(device.respondsToUserInterfaceIdiom());
    EXPECT_EQ(static_cast<int>(device.userInterfaceIdiom()), 0);
    EXPECT_FALSE(device.isPad());
    EXPECT_EQ(UIScreen::mainScreen().size(), CGSizeMake(375, 667));

    device.setUserInterfaceIdiom(UIUserInterfaceIdiomPad);
    EXPECT_TRUE(device.respondsToUserInterfaceIdiom());
    EXPECT_EQ(static_cast<int>(device.userInterfaceIdiom()), 1);
    EXPECT_TRUE(device.isPad());
    EXPECT_EQ(UIScreen::mainScreen().size(), CGSizeMake(768, 1024));
}

TEST_F(UIDeviceTest, OldDevicesDoNotAnswerAndArePhones) {
    UIDevice::currentDevice().setUserInterfaceIdiom(std::nullopt);
    EXPECT_FALSE(UIDevice::currentDevice().respondsToUserInterfaceIdiom());
    EXPECT_EQ(UIDevice::currentDevice().userInterfaceIdiom(), UIUserInterfaceIdiomPhone);
    EXPECT_FALSE(UIDevice::currentDevice().isPad());
    EXPECT_EQ(UIScreen::mainScreen().size(), CGSizeMake(375, 667));
}

TEST_F(UIDeviceTest, ThereIsOneDeviceAndOneScreen) {
    EXPECT_EQ(&UIDevice::currentDevice(), &UIDevice::currentDevice());
    UIScreen::mainScreen().setScale(1.5);
    EXPECT_EQ(UIScreen::mainScreen().scale(), 1.5);
}

} // namespace
} // namespace tallyforge::test

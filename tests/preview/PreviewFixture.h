#pragma once

#include "coregraphics/Canvas.h"
#include "foundation/Clock.h"
#include "foundation/Dispatch.h"
#include "preview/PreviewCell.h"
#include "rastergraphics/RasterGraphics.h"
#include "support/DeviceFixture.h"
#include "uikit/UIDevice.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tallyforge::test {

inline const std::string kSpringBoard = "/System/Library/CoreServices/SpringBoard.app/";
inline const std::string kBundle = "/Library/PreferenceBundles/tallyforgeprefs.bundle/";
inline const std::string kConfigFile = "/var/mobile/Documents/Tallyforge/Config/config.tfc";

inline std::vector<uint8_t> encoded(const CGImage& image) {
    return Graphics::current()->encodePNG(image);
}

/// A bitmap of one colour (0xAARRGGBB, premultiplied).
inline std::shared_ptr<CGImage> filled(int width, int height, uint32_t pixel) {
    auto image = std::make_shared<CGImage>(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image->row(y)[x] = pixel;
    return image;
}

inline UIImage imageOf(CGImageRef bitmap, CGFloat scale = 1) {
    return UIImage::imageWithCGImage(std::move(bitmap), scale, UIImageOrientationUp);
}

inline std::string hexadecimal(uint32_t pixel) {
    char text[9];
    std::snprintf(text, sizeof text, "%08X", pixel);
    return text;
}

/// Each channel of the two pixels differs by no more than `tolerance`.
inline testing::AssertionResult isPixel(uint32_t actual, uint32_t expected, int tolerance = 2) {
    for (int shift = 0; shift < 32; shift += 8) {
        int difference = int(actual >> shift & 255) - int(expected >> shift & 255);
        if (std::abs(difference) > tolerance)
            return testing::AssertionFailure() << "is " << hexadecimal(actual) << ", expected "
                                               << hexadecimal(expected) << " within " << tolerance;
    }
    return testing::AssertionSuccess();
}

inline testing::AssertionResult isRect(const CGRect& actual, CGFloat x, CGFloat y, CGFloat width,
                                       CGFloat height, CGFloat tolerance = 1e-4) {
    const CGFloat is[] = {actual.origin.x, actual.origin.y, actual.size.width, actual.size.height};
    const CGFloat want[] = {x, y, width, height};
    for (int i = 0; i < 4; ++i) {
        if (!(std::abs(is[i] - want[i]) <= tolerance))
            return testing::AssertionFailure()
                   << "is (" << is[0] << ", " << is[1] << ", " << is[2] << ", " << is[3] << "), expected ("
                   << x << ", " << y << ", " << width << ", " << height << ")";
    }
    return testing::AssertionSuccess();
}

inline testing::AssertionResult isPoint(const CGPoint& actual, CGFloat x, CGFloat y,
                                        CGFloat tolerance = 1e-4) {
    if (std::abs(actual.x - x) <= tolerance && std::abs(actual.y - y) <= tolerance)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "is (" << actual.x << ", " << actual.y << "), expected (" << x << ", " << y << ")";
}

inline testing::AssertionResult isTransform(const CGAffineTransform& actual, CGFloat a, CGFloat b, CGFloat c,
                                            CGFloat d, CGFloat tolerance = 1e-5) {
    if (std::abs(actual.a - a) <= tolerance && std::abs(actual.b - b) <= tolerance &&
        std::abs(actual.c - c) <= tolerance && std::abs(actual.d - d) <= tolerance && actual.tx == 0 &&
        actual.ty == 0)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "is (" << actual.a << ", " << actual.b << ", " << actual.c << ", "
                                       << actual.d << ", " << actual.tx << ", " << actual.ty << ")";
}

/// A device with artwork of the test's own: a phone with a screen of two pixels a point, icons in one colour
/// each, marks that are wider than high, so that a swap of width and height shows.
class PreviewFixture : public testing::Test {
  protected:
    static constexpr uint32_t kIconColor = 0xFF2040C0;
    static constexpr uint32_t kPlateColor = 0xFF808080;
    static constexpr uint32_t kCrossColor = 0xFF404040;
    static constexpr uint32_t kDotColor = 0xFF00FF00;

    static void SetUpTestSuite() {
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        if (!Graphics::current()) Graphics::install(MakeRasterGraphics());
    }
    PreviewFixture() {
        setenv("XDG_RUNTIME_DIR", device_.root().c_str(), 1);
        be(UIUserInterfaceIdiomPhone, 2);
        MainQueue::main().clear();
        MainQueue::main().setClock(&clock_);
        for (const char* name : {"AppStore", "MobileSMS", "MobileMail", "Preferences"}) {
            writeIcon(std::string(name) + ".app/AppIcon60x60.png", 60);
            writeIcon(std::string(name) + ".app/AppIcon76x76.png", 76);
        }
        writeIcon("Cydia.app/Icon-60.png", 60);
        writeIcon("Cydia.app/Icon-76.png", 76);
        writePicture(kSpringBoard + "IconBadgeAndCloseBox.png", *filled(30, 20, kPlateColor));
        writePicture(kSpringBoard + "IconCloseBoxX.png", *filled(12, 8, kCrossColor));
        writePicture(kSpringBoard + "IconNewDot.png", *filled(10, 6, kDotColor));
        writePicture(kBundle + "icon_shape.png", *filled(26, 18, kPlateColor));
        for (const char* name : {"circle", "square", "triangle", "hexagon", "star", "icon"})
            writePicture(kBundle + "glow_" + name + ".png", *filled(46, 44, 0xFFFFFFFF));
    }
    ~PreviewFixture() override {
        MainQueue::main().clear();
        MainQueue::main().setClock(nullptr);
        be(UIUserInterfaceIdiomPhone, 2);
    }

    static void be(UIUserInterfaceIdiom idiom, CGFloat scale) {
        UIDevice::currentDevice().setUserInterfaceIdiom(idiom);
        UIScreen::mainScreen().setScale(scale);
    }
    void writePicture(const std::string& devicePath, const CGImage& image) const {
        device_.write(devicePath, encoded(image));
    }
    void writeIcon(const std::string& name, int side) const {
        writePicture("/Applications/" + name, *filled(side, side, kIconColor));
    }
    void remove(const std::string& devicePath) const { std::filesystem::remove(device_.file(devicePath)); }

    using Values = std::vector<std::pair<std::string, PropertyList>>;
    static PropertyList number(float value) { return PropertyList::floatNumber(value); }
    static PropertyList text(std::string value) { return PropertyList::string(std::move(value)); }
    void domain(const Values& values) const {
        Dictionary all;
        for (const auto& [key, value] : values)
            all.setObjectForKey(value, key);
        device_.writeDomain(all);
    }

    /// A cell of the given size, with the whole domain being these values.
    std::shared_ptr<PreviewCell> cell(const Values& values = {}, CGFloat width = 320,
                                      CGFloat height = 44) const {
        domain(values);
        auto made = std::make_shared<PreviewCell>();
        made->setFrame(CGRectMake(0, 0, width, height));
        EXPECT_TRUE(made->initWithSpecifier(std::make_shared<PSSpecifier>()));
        return made;
    }

    void advance(CGFloat seconds) {
        MainQueue::main().runUntil(clock_, clock_.nanoseconds() + int64_t(seconds * 1e9));
    }

    TestDevice device_;
    VirtualClock clock_;
};

} // namespace tallyforge::test

#pragma once

#include "coregraphics/Canvas.h"
#include "foundation/Random.h"
#include "rastergraphics/RasterGraphics.h"
#include "settings/Settings.h"
#include "support/DeviceFixture.h"
#include "uikit/UIColor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tallyforge::test {

/// A device of its own with an empty domain, whose notifications stay off the machine's session bus.
class SettingsFixture : public testing::Test {
  protected:
    SettingsFixture() {
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        setenv("XDG_RUNTIME_DIR", device_.root().c_str(), 1);
        Graphics::install(MakeRasterGraphics());
        LoadSettingsSnapshot();
    }
    ~SettingsFixture() override { UnseedRandomSource(); }

    /// Makes these the whole domain and takes the snapshot.
    void load(const std::vector<std::pair<std::string, PropertyList>>& values) {
        Dictionary domain;
        for (const auto& [key, value] : values)
            domain.setObjectForKey(value, key);
        device_.writeDomain(domain);
        LoadSettingsSnapshot();
    }

    TestDevice device_;
};

inline PropertyList text(std::string value) {
    return PropertyList::string(std::move(value));
}

/// An image of these premultiplied 0xAARRGGBB pixels, top row first.
inline UIImage imageOf(int width, int height, const std::vector<uint32_t>& pixels, CGFloat scale = 1) {
    auto bitmap = std::make_shared<CGImage>(width, height);
    for (size_t i = 0; i < pixels.size(); ++i)
        bitmap->row(0)[i] = pixels[i];
    return UIImage::imageWithCGImage(bitmap, scale, UIImageOrientationUp);
}

/// An opaque pixel.
constexpr uint32_t rgb(uint32_t red, uint32_t green, uint32_t blue) {
    return 0xFF000000u | red << 16 | green << 8 | blue;
}

/// Equal as bytes, so that it does not matter in which precision a channel was divided.
inline testing::AssertionResult isBytes(const UIColor& color, int red, int green, int blue) {
    auto near = [](CGFloat channel, int byte) { return std::abs(channel * 255 - byte) < 1e-3; };
    if (near(color.red(), red) && near(color.green(), green) && near(color.blue(), blue) &&
        color.alpha() == 1)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "is " << color.red() * 255 << ", " << color.green() * 255 << ", " << color.blue() * 255
           << " alpha " << color.alpha() << ", expected " << red << ", " << green << ", " << blue;
}

} // namespace tallyforge::test

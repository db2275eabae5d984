#pragma once

#include "coregraphics/Canvas.h"
#include "rastergraphics/RasterGraphics.h"
#include "support/DeviceFixture.h"
#include "uikit/UIDevice.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tallyforge::test {

/// A device with nothing on it: a phone with a screen of scale 2 that draws.
class UIKitFixture : public testing::Test {
  protected:
    UIKitFixture() {
        Graphics::install(MakeRasterGraphics());
        reset();
    }
    ~UIKitFixture() override { reset(); }

    static void reset() {
        UIScreen::mainScreen().setScale(2);
        UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiomPhone);
    }

    static CGImageRef bitmap(int width, int height, const std::vector<uint32_t>& pixels) {
        auto image = std::make_shared<CGImage>(width, height);
        for (size_t i = 0; i < pixels.size(); ++i)
            image->row(0)[i] = pixels[i];
        return image;
    }
    static CGImageRef plain(int width, int height, uint32_t pixel) {
        return bitmap(width, height, std::vector<uint32_t>(size_t(width) * size_t(height), pixel));
    }
    void writePicture(const std::string& devicePath, int width, int height, uint32_t pixel) const {
        device_.write(devicePath, Graphics::current()->encodePNG(*plain(width, height, pixel)));
    }

    TestDevice device_;
};

} // namespace tallyforge::test

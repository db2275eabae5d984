#pragma once

#include "DriveFixture.h"

#include "cli/SettingsStage.h"
#include "coregraphics/Canvas.h"
#include "foundation/Dispatch.h"
#include "preferences/PSControlCells.h"
#include "preferences/PSListController.h"
#include "rastergraphics/RasterGraphics.h"
#include "uikit/UIDevice.h"
#include "uikit/UILabel.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace tallyforge::test {

/// The Settings app within the test, on a furnished device and a clock that only the test moves.
class AppTest : public testing::Test {
  protected:
    AppTest() {
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        setenv("XDG_RUNTIME_DIR", device.root().c_str(), 1);
        device.furnish();
        Graphics::install(MakeRasterGraphics());
    }
    ~AppTest() override { UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiomPhone); }

    static SettingsStage makeStage(bool pad, std::optional<CGSize> size = std::nullopt) {
        UIDevice::currentDevice().setUserInterfaceIdiom(pad ? UIUserInterfaceIdiomPad
                                                            : UIUserInterfaceIdiomPhone);
        return SettingsStage(size, 2);
    }
    static PSListController& list(SettingsStage& stage) {
        return dynamic_cast<PSListController&>(*stage.app().navigation().topViewController());
    }
    template <class Cell>
    static std::shared_ptr<Cell> cell(SettingsStage& stage, const char* identifier) {
        auto path = list(stage).indexPathForSpecifier(list(stage).specifierForID(identifier));
        if (!path) return nullptr;
        list(stage).table()->scrollToRowAtIndexPath(*path);
        stage.app().step();
        return std::dynamic_pointer_cast<Cell>(list(stage).table()->cellForRowAtIndexPath(*path));
    }
    TestDevice device;
};

} // namespace tallyforge::test

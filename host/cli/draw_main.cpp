// The program behind the commands that draw.

#include "cli/Command.h"
#include "cli/Device.h"
#include "cli/Drive.h"
#include "cli/Gallery.h"
#include "cli/PreviewCommands.h"
#include "cli/Report.h"
#include "coregraphics/Canvas.h"
#include "device/DeviceLocation.h"
#include "mobileservices/UIAssetManager.h"
#include "preferences/PSListController.h"
#include "rastergraphics/RasterGraphics.h"
#include "settings/SilentFailures.h"
#include "window/Display.h"
#include "window/RunWindow.h"

#include <utility>

int main(int argc, char** argv) {
    using namespace tallyforge;
    auto parsed = ParseCommandLine(argc, argv);
    if (int* status = std::get_if<int>(&parsed)) return *status;
    const auto& command = std::get<Command>(parsed);
    if (auto status = OpenDeviceFor(command)) return *status;
    Graphics::install(MakeRasterGraphics());
    RegisterMobileServices();
    PSListController::setSpareLists(StockFile);

    if (command.name == "render") return RunRender(command);
    if (command.name == "animate") return RunAnimate(command);
    if (command.name == "inspect") return RunInspect(command);
    if (command.name == "drive") return RunDrive(command);
    if (command.name == "theme gallery") return RunGallery(command);
    SetSilentFailureListener([](const std::string& path, const std::string& why) { Complain(path, why); });
    auto display = FindDisplay();
    if (display) return RunWindow({command.pad, std::move(*display)});
    Complain("no window", display.reason() + "; pictures of the screens instead");
    return RunPictures(command);
}

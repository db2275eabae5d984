#include "cli/PreviewCommands.h"

#include "cli/Animate.h"
#include "cli/Device.h"
#include "cli/Inspector.h"
#include "cli/PreviewStage.h"
#include "cli/Report.h"
#include "cli/Screen.h"
#include "cli/SettingsStage.h"
#include "coregraphics/Canvas.h"
#include "device/DeviceLocation.h"
#include "device/HostFile.h"
#include "panes/PaneNames.h"
#include "uikit/UIDevice.h"

#include <nlohmann/json.hpp>

namespace tallyforge {

namespace {

using Json = nlohmann::ordered_json;

int WritePreview(const Command& command, const std::string& file) {
    PreviewStage stage(command.size, command.scale);
    WarnOfUnreadableSettings(command);
    stage.runTo(command.time);
    auto picture = stage.picture();
    if (!picture) return CouldNot(command.name, picture.reason());
    auto written = WriteHostFile(file, Graphics::current()->encodePNG(**picture));
    return written ? int{kDone} : CouldNot(command.name, written.reason());
}

int NoSuchPane(const Command& command) {
    return WrongWords(command.name,
                      "there is no pane '" + *command.pane + "'; there are " + PaneNamesInOneLine());
}

void WarnOfEmptyScreen(const Command& command, SettingsApp& app) {
    if (std::string why = Screen(app).whyEmpty(); !why.empty()) Complain(command.name, why);
}

int WriteScreen(const Command& command, const std::string& file) {
    SettingsStage stage(command.size, command.scale);
    WarnOfUnreadableSettings(command);
    if (!stage.app().openPane(*command.pane)) return NoSuchPane(command);
    WarnOfEmptyScreen(command, stage.app());
    stage.wait(command.time);
    auto picture = stage.picture();
    if (!picture) return CouldNot(command.name, picture.reason());
    auto written = WriteHostFile(file, Graphics::current()->encodePNG(**picture));
    return written ? int{kDone} : CouldNot(command.name, written.reason());
}

int InspectScreen(const Command& command) {
    SettingsStage stage(command.size, command.scale);
    WarnOfUnreadableSettings(command);
    if (!stage.app().openPane(*command.pane)) return NoSuchPane(command);
    WarnOfEmptyScreen(command, stage.app());
    stage.wait(command.time);
    Json json = Screen(stage.app()).inspect(command.pad, command.time);
    Print(json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
    return FinishOutput(command.name);
}

int WriteAnimation(const Command& command, const std::string& file) {
    PreviewStage stage(command.size, command.scale);
    WarnOfUnreadableSettings(command);
    auto bytes = AnimatePreview(stage, command.seconds, command.framesPerSecond);
    if (!bytes) return CouldNot(command.name, bytes.reason());
    auto written = WriteHostFile(file, *bytes);
    return written ? int{kDone} : CouldNot(command.name, written.reason());
}

} // namespace

int RunRender(const Command& command) {
    return command.pane ? WriteScreen(command, command.output) : WritePreview(command, command.output);
}

int RunAnimate(const Command& command) {
    return WriteAnimation(command, command.output);
}

int RunInspect(const Command& command) {
    if (command.pane) return InspectScreen(command);
    PreviewStage stage(command.size, command.scale);
    WarnOfUnreadableSettings(command);
    stage.runTo(command.time);
    const PreviewCell& cell = stage.cell();
    Json json;
    json["idiom"] = command.pad ? "pad" : "phone";
    json["time"] = command.time;
    json["cell"] = InspectSize(cell.size());
    json["currentIcon"] = cell.currentIcon();
    json["selectedAppName"] = cell.selectedAppName();
    json["view"] = InspectView(cell);
    Print(json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
    return FinishOutput(command.name);
}

int RunPictures(const Command& command) {
    auto data = UserDataFolder();
    if (!data) return CouldNot("pictures", data.reason() + "; 'tallyforge render FILE' draws one anywhere");
    std::filesystem::path folder = *data / "pictures";
    std::error_code failed;
    std::filesystem::create_directories(folder, failed);
    if (failed) return CouldNot("pictures", folder.string() + ": " + failed.message());

    struct Picture {
        const char* name;
        const char* pane; // nullptr: the preview alone, in motion
        UIUserInterfaceIdiom idiom;
    };
    constexpr Picture kPictures[] = {{"settings.png", "tallyforge", UIUserInterfaceIdiomPhone},
                                     {"badge.png", "badge", UIUserInterfaceIdiomPhone},
                                     {"closebox.png", "closebox", UIUserInterfaceIdiomPhone},
                                     {"newdot.png", "newdot", UIUserInterfaceIdiomPhone},
                                     {"badge-pad.png", "badge", UIUserInterfaceIdiomPad},
                                     {"preview.webp", nullptr, UIUserInterfaceIdiomPhone}};
    Command pictures = command;
    pictures.name = "pictures";
    for (const Picture& picture : kPictures) {
        UIDevice::currentDevice().setUserInterfaceIdiom(picture.idiom);
        std::string file = (folder / picture.name).string();
        if (picture.pane) pictures.pane = picture.pane;
        if (int status = picture.pane ? WriteScreen(pictures, file) : WriteAnimation(pictures, file);
            status != kDone)
            return status;
        Print(file + "\n");
    }
    return FinishOutput("pictures");
}

} // namespace tallyforge

// The command. What draws is left to a second program, so that this one starts as fast as any plain one.

#include "cli/AppsCommand.h"
#include "cli/Command.h"
#include "cli/Device.h"
#include "cli/Report.h"
#include "cli/SettingsCommands.h"
#include "cli/ThemeCommands.h"
#include "cli/TieCommands.h"
#include "device/DeviceLocation.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <unistd.h>

namespace tallyforge {

namespace {

int RunDrawingProgram(char** argv) {
    std::string draw = (ProgramPrefix() / "libexec" / "tallyforge-draw").string();
    ::execv(draw.c_str(), argv);
    return CouldNot(draw, std::strerror(errno));
}

int Run(const Command& command) {
    // These need no device.
    if (command.name == "watch") return RunWatch(command);
    if (command.name == "colors") return RunColors(command);
    if (auto status = OpenDeviceFor(command)) return *status;
    if (command.name == "list") return RunList(command);
    if (command.name == "get") return RunGet(command);
    if (command.name == "set") return RunSet(command);
    if (command.name == "randomize") return RunRandomize(command);
    if (command.name == "reset") return RunReset(command);
    if (command.name == "apps") return RunApps(command);
    if (command.name.starts_with("tie ")) return RunTie(command);
    if (command.name.starts_with("theme ")) return RunTheme(command);
    return RunUnset(command);
}

} // namespace

} // namespace tallyforge

int main(int argc, char** argv) {
    using namespace tallyforge;
    auto parsed = ParseCommandLine(argc, argv);
    if (int* status = std::get_if<int>(&parsed)) return *status;
    const auto& command = std::get<Command>(parsed);
    return CommandDraws(command) ? RunDrawingProgram(argv) : Run(command);
}

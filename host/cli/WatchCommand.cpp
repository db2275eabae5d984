#include "cli/Report.h"
#include "cli/SettingsCommands.h"
#include "corefoundation/CFNotificationCenter.h"

#include <chrono>
#include <string>

namespace tallyforge {

int RunWatch(const Command& command) {
    uint64_t heard = 0;
    auto print = [&](std::string_view name) {
        if (command.count && heard >= *command.count) return;
        Print(std::string(name) + "\n");
        ++heard;
    };
    auto listener = DarwinNotificationListener::create(print);
    if (!listener) return CouldNot(command.name, listener.reason());

    using Seconds = std::chrono::duration<double>;
    auto begin = std::chrono::steady_clock::now();
    while (!command.count || heard < *command.count) {
        double left = -1;
        if (command.timeout) {
            left = *command.timeout - Seconds(std::chrono::steady_clock::now() - begin).count();
            if (left <= 0) break;
        }
        if (!(*listener)->wait(left)) return CouldNot(command.name, "the session bus has gone away");
        if (int status = FinishOutput(command.name); status != kDone) return status;
    }
    if (command.count && heard < *command.count)
        return CouldNot(command.name, "heard " + std::to_string(heard) + " of " +
                                          std::to_string(*command.count) +
                                          " notifications before the time was up");
    return kDone;
}

} // namespace tallyforge

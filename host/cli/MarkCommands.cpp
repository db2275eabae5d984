// What the buttons of a mark's pane do, without the pane on a screen.

#include "cli/Device.h"
#include "cli/Report.h"
#include "cli/SettingsCommands.h"
#include "corefoundation/CFPreferences.h"
#include "device/DeviceLocation.h"
#include "foundation/Random.h"
#include "panes/BadgePanes.h"
#include "panes/CloseBoxPanes.h"
#include "panes/NewDotPanes.h"
#include "panes/Reset.h"

#include <memory>

namespace tallyforge {

namespace {

std::unique_ptr<MarkPaneController> PaneOf(MarkKind mark) {
    switch (mark) {
    case MarkKind::badge:
        return std::make_unique<badgeListController>();
    case MarkKind::closeBox:
        return std::make_unique<closeboxListController>();
    case MarkKind::newDot:
        break;
    }
    return std::make_unique<newdotListController>();
}

int RunOnPane(const Command& command, void (MarkPaneController::*action)()) {
    PSListController::setSpareLists(StockFile);
    MarkKind mark = command.mark.value_or(MarkKind::badge);
    auto pane = PaneOf(mark);
    if (auto without = SettingsWithoutRow(mark, *pane); !without.empty())
        return CouldNot(command.name, pane->bundlePath() + ": no readable list has a row for " +
                                          std::string(without.front()) + "; nothing was changed");
    (*pane.*action)();
    return SettingsOutcome(command);
}

} // namespace

int RunRandomize(const Command& command) {
    if (command.seed) SeedRandomSource(*command.seed);
    return RunOnPane(command, &MarkPaneController::randomize);
}

int RunReset(const Command& command) {
    return RunOnPane(command, &MarkPaneController::reset);
}

} // namespace tallyforge

#include "panes/NewDotPanes.h"

#include "panes/PaneMethods.h"

namespace tallyforge {

using namespace PaneMethods;

const MethodTable& newdotListController::methods() const {
    using Pane = newdotListController;
    return Table<kSpecifiers<Pane>, kResetSpecifier<Pane>, kRandomize<Pane>, kReset<Pane>, kSetValue<Pane>,
                 kViewDidAppear<Pane>>();
}

const MethodTable& newdotcolorListController::methods() const {
    using Pane = newdotcolorListController;
    return Table<kSpecifiers<Pane>, kSetSlider<Pane>, kViewDidAppear<Pane>>();
}

const MethodTable& newdotanimListController::methods() const {
    using Pane = newdotanimListController;
    return Table<kSpecifiers<Pane>, kResetSpecifier<Pane>, kSetPreset<Pane>, kSetSlider<Pane>,
                 kViewDidAppear<Pane>>();
}

} // namespace tallyforge

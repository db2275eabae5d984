#include "panes/CloseBoxPanes.h"

#include "panes/PaneMethods.h"

namespace tallyforge {

using namespace PaneMethods;

const MethodTable& closeboxListController::methods() const {
    using Pane = closeboxListController;
    return Table<kSpecifiers<Pane>, kResetSpecifier<Pane>, kRandomize<Pane>, kReset<Pane>, kSetValue<Pane>,
                 kViewDidAppear<Pane>>();
}

const MethodTable& closeboxcolorListController::methods() const {
    using Pane = closeboxcolorListController;
    return Table<kSpecifiers<Pane>, kSetSlider<Pane>, kViewDidAppear<Pane>>();
}

const MethodTable& closeboxlabelListController::methods() const {
    using Pane = closeboxlabelListController;
    return Table<kSpecifiers<Pane>, kResetSpecifier<Pane>, kSetValue<Pane>, kViewDidAppear<Pane>>();
}

const MethodTable& closeboxborderListController::methods() const {
    using Pane = closeboxborderListController;
    return Table<kSpecifiers<Pane>, kSetSlider<Pane>, kViewDidAppear<Pane>>();
}

const MethodTable& closeboxanimListController::methods() const {
    using Pane = closeboxanimListController;
    return Table<kSpecifiers<Pane>, kResetSpecifier<Pane>, kSetPreset<Pane>, kSetSlider<Pane>,
                 kViewDidAppear<Pane>>();
}

const MethodTable& closeboxglowListController::methods() const {
    using Pane = closeboxglowListController;
    return Table<kSpecifiers<Pane>, kSetSlider<Pane>, kViewDidAppear<Pane>>();
}

} // namespace tallyforge

#include "themes/ConditionalThemesController.h"

#include "panes/PaneMethods.h"

namespace tallyforge {

const MethodTable& conditionalthemesListController::methods() const {
    return PaneMethods::Table<PaneMethods::kSpecifiers<conditionalthemesListController>>();
}

} // namespace tallyforge

#include "panes/ThemesPanes.h"

#include "panes/PaneMethods.h"

namespace tallyforge {

const MethodTable& themesListController::methods() const {
    return PaneMethods::Table<PaneMethods::kSpecifiers<themesListController>>();
}

const MethodTable& conditionalthemesListController::methods() const {
    return PaneMethods::Table<PaneMethods::kSpecifiers<conditionalthemesListController>>();
}

} // namespace tallyforge

#include "themes/RegisterThemes.h"

#include "themes/ConditionalThemesController.h"
#include "themes/ThemesController.h"

#include <memory>

namespace tallyforge {

void RegisterThemes() {
    RegisterClass("themesListController", {[] { return std::make_shared<themesListController>(); }});
    RegisterClass("conditionalthemesListController",
                  {[] { return std::make_shared<conditionalthemesListController>(); }});
}

} // namespace tallyforge

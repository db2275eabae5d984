#include "panes/RegisterPanes.h"

#include "panes/BadgePanes.h"
#include "panes/CloseBoxPanes.h"
#include "panes/NewDotPanes.h"
#include "panes/RootPane.h"
#include "panes/TallyforgeSwitchTableCell.h"
#include "preview/PreviewCell.h"

namespace tallyforge {

namespace {

template <class Class>
void Register(std::string_view name) {
    RegisterClass(name, {[] { return std::make_shared<Class>(); }});
}

} // namespace

void RegisterPanes() {
    Register<tallyforgeprefsListController>("tallyforgeprefsListController");
    Register<badgeListController>("badgeListController");
    Register<badgecolorListController>("badgecolorListController");
    Register<badgelabelListController>("badgelabelListController");
    Register<badgeborderListController>("badgeborderListController");
    Register<badgeanimListController>("badgeanimListController");
    Register<badgeglowListController>("badgeglowListController");
    Register<closeboxListController>("closeboxListController");
    Register<closeboxcolorListController>("closeboxcolorListController");
    Register<closeboxlabelListController>("closeboxlabelListController");
    Register<closeboxborderListController>("closeboxborderListController");
    Register<closeboxanimListController>("closeboxanimListController");
    Register<closeboxglowListController>("closeboxglowListController");
    Register<newdotListController>("newdotListController");
    Register<newdotcolorListController>("newdotcolorListController");
    Register<newdotanimListController>("newdotanimListController");
    Register<TallyforgeSwitchTableCell>("TallyforgeSwitchTableCell");
    Register<PreviewCell>("PreviewCell");
}

} // namespace tallyforge

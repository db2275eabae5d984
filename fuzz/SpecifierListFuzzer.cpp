// The bytes of a specifier list, up to a screen of the Settings app that is laid out, tapped and scrolled.

#include "FuzzDevice.h"
#include "PropertyListMutator.h"

#include "cli/SettingsStage.h"
#include "foundation/PropertyListFormat.h"
#include "mobileservices/UIAssetManager.h"
#include "preferences/PSListController.h"
#include "rastergraphics/RasterGraphics.h"
#include "uikit/UITableViewCell.h"

#include <cmath>

using namespace tallyforge;
using fuzz::Require;

namespace {

constexpr const char* kList = "/Library/PreferenceBundles/tallyforgeprefs.bundle/badgeprefs.plist";
constexpr CGSize kScreen{160, 240};

void Prepare() {
    static const bool once = [] {
        Graphics::install(MakeRasterGraphics());
        RegisterMobileServices();
        return true;
    }();
    Require(once, "there is something to draw with");
}

// What lists of rows may cost.
constexpr PropertyListLimits kLimits{
    .bytes = 1u << 20, .objects = 16'384, .depth = 16, .nodes = 32'768, .text = 4u << 20};

// How many rows the list has, as it stands in the file.
size_t RowsIn(std::span<const uint8_t> bytes) {
    const auto list = DeserializePropertyList(bytes, kLimits);
    const Dictionary* contents = list ? std::as_const(*list).asDictionary() : nullptr;
    const PropertyList* items = contents ? contents->objectForKey("items") : nullptr;
    size_t rows = 0;
    if (items && items->asArray()) {
        for (const PropertyList& item : *items->asArray())
            rows += item.asDictionary() ? 1 : 0;
    }
    return rows;
}

PSListController& Pane(SettingsStage& stage) {
    auto* pane = dynamic_cast<PSListController*>(stage.app().navigation().topViewController().get());
    Require(pane && pane->table(), "the screen is shown");
    return *pane;
}

void ScreenIsSound(PSListController& pane, size_t rows) {
    Require(pane.specifiers().size() == rows, "every dictionary of the list is a row");
    UITableView& table = *pane.table();
    size_t shown = 0;
    for (const auto& group : pane.groups())
        shown += group.rows.size() + (group.group ? 1 : 0);
    Require(shown == rows, "every row stands in the table");
    const CGSize whole = table.contentSize();
    Require(std::isfinite(whole.height) && whole.height >= 0 && whole.height < 1e7, "the table has an end");
    for (NSIndexPath path : table.indexPathsForVisibleRows()) {
        const auto cell = table.cellForRowAtIndexPath(path);
        Require(cell != nullptr, "a row on the screen has a cell");
        const CGRect frame = cell->frame();
        Require(std::isfinite(frame.origin.y) && frame.size.height >= 0 && frame.size.width <= kScreen.width,
                "a cell lies in the table");
    }
}

void Touch(SettingsStage& stage, UITouchPhase phase, CGPoint point) {
    stage.app().window().sendTouch({phase, point, stage.nanoseconds()});
    stage.app().step();
}

void Tap(SettingsStage& stage, CGPoint point) {
    Touch(stage, UITouchPhase::began, point);
    Touch(stage, UITouchPhase::ended, point);
}

void Use(SettingsStage& stage) {
    for (CGFloat y = 75; y < kScreen.height; y += 55)
        Tap(stage, {kScreen.width - 25, y});
    Touch(stage, UITouchPhase::began, {30, 200});
    Touch(stage, UITouchPhase::moved, {40, 80});
    Touch(stage, UITouchPhase::ended, {40, 80});
    Tap(stage, {20, 42}); // where "back" is
    stage.app().window().insertText("x");
    stage.wait(0.4);
    Tap(stage, {60, 120});
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Prepare();
    const fuzz::FuzzDevice& device = fuzz::TheDevice();
    device.write(kList, std::span(data, size));
    {
        SettingsStage stage(kScreen, 1);
        Require(stage.app().openPane("badge"), "the screen can be opened");
        const size_t rows = RowsIn({data, size});
        ScreenIsSound(Pane(stage), rows);
        Use(stage);
    }
    device.forgetPreferences();
    device.requireNothingOutside();
    return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
    static constexpr std::string_view words[] = {"items",
                                                 "title",
                                                 "cell",
                                                 "id",
                                                 "key",
                                                 "defaults",
                                                 "default",
                                                 "label",
                                                 "min",
                                                 "max",
                                                 "height",
                                                 "footerText",
                                                 "validValues",
                                                 "validTitles",
                                                 "valuesDataSource",
                                                 "titlesDataSource",
                                                 "set",
                                                 "get",
                                                 "action",
                                                 "cellClass",
                                                 "detail",
                                                 "enabled",
                                                 "PostNotification",
                                                 "PreviewNotification",
                                                 "value",
                                                 "PSGroupCell",
                                                 "PSSwitchCell",
                                                 "PSSliderCell",
                                                 "PSSegmentCell",
                                                 "PSLinkCell",
                                                 "PSLinkListCell",
                                                 "PSButtonCell",
                                                 "PSTitleValueCell",
                                                 "PSListItemsController",
                                                 "QuillonColorPicker",
                                                 "QuillonColorPickerLinkCell",
                                                 "QuillonAppSelect",
                                                 "QuillonAppSelectLinkCell",
                                                 "PreviewCell",
                                                 "TallyforgeSwitchTableCell",
                                                 "badgecolorListController",
                                                 "themesListController",
                                                 "badgeListController",
                                                 "com.quillon.tallyforge",
                                                 "com.example.other",
                                                 "../../outside",
                                                 "setValue:forSpecifier:",
                                                 "setSlider:forSpecifier:",
                                                 "setPreset:forSpecifier:",
                                                 "readPreferenceValue:",
                                                 "randomize",
                                                 "reset",
                                                 "allowAutomatic",
                                                 "badgebgcol",
                                                 "badgesize",
                                                 "com.quillon.tallyforge.prefs"};
    return fuzz::MutatePropertyList(data, size, most, seed, words);
}

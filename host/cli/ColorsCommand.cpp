// The colours that the picker offers.
#include "cli/Report.h"
#include "cli/SettingsCommands.h"
#include "cli/ValueJson.h"
#include "colorpicker/ColorPalettes.h"

#include <nlohmann/json.hpp>

#include <string>

namespace tallyforge {

namespace {

using Json = nlohmann::ordered_json;

Json ColorsAsJson() {
    Json list = Json::array();
    for (const Palette& palette : palettes()) {
        Json colors = Json::array();
        for (const ColorRecord& color : palette.colors)
            colors.push_back({{"name", color.name}, {"hex", color.hex}});
        list.push_back({{"title", palette.title}, {"colors", std::move(colors)}});
    }
    return list;
}

// Palette, name, value; a line each.
std::string ColorsAsText() {
    std::string text;
    for (const Palette& palette : palettes()) {
        for (const ColorRecord& color : palette.colors) {
            text += palette.title;
            text.append("\t").append(color.name).append("\t").append(color.hex).append("\n");
        }
    }
    return text;
}

} // namespace

int RunColors(const Command& command) {
    if (command.json)
        PrintJson(ColorsAsJson());
    else
        Print(ColorsAsText());
    return FinishOutput(command.name);
}

} // namespace tallyforge

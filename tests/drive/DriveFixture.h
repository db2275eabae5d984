#pragma once

#include "foundation/PropertyListFormat.h"
#include "support/DeviceFixture.h"
#include "support/Program.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace tallyforge::test {

using Json = nlohmann::json;
using Lines = std::vector<std::string>;

inline const std::string kBundle = "/Library/PreferenceBundles/tallyforgeprefs.bundle/";
inline const std::string kDomainPath = "/var/mobile/Library/Preferences/com.quillon.tallyforge.plist";

inline const Lines kMarkPanes{"badge",         "badgecolor",     "badgelabel",   "badgeborder",
                              "badgeanim",     "badgeglow",      "closebox",     "closeboxcolor",
                              "closeboxlabel", "closeboxborder", "closeboxanim", "closeboxglow",
                              "newdot",        "newdotcolor",    "newdotanim"};
inline const Lines kOtherPanes{"tallyforge", "themes", "conditionalthemes"};

inline Lines allPanes() {
    Lines panes = kMarkPanes;
    panes.insert(panes.end(), kOtherPanes.begin(), kOtherPanes.end());
    return panes;
}

inline Lines linesOf(const std::string& text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

inline std::string bytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The rows of a pane as its list has them: dictionaries, without the groups.
inline std::vector<Dictionary> rowsOfList(const std::string& pane) {
    const std::string name = (pane == "tallyforge" ? "tallyforge" : pane) + "prefs.plist";
    const std::string bytes = bytesOf(TALLYFORGE_RESOURCES "/stock" + kBundle + name);
    const std::vector<uint8_t> plain(bytes.begin(), bytes.end());
    auto list = DeserializePropertyList(plain);
    std::vector<Dictionary> rows;
    if (!list) return rows;
    const PropertyList contents = *list;
    for (const PropertyList& row : *contents.asDictionary()->objectForKey("items")->asArray()) {
        if (*row.asDictionary()->objectForKey("cell")->asString() != "PSGroupCell")
            rows.push_back(*row.asDictionary());
    }
    return rows;
}

inline std::string text(const Dictionary& row, std::string_view key) {
    const PropertyList* value = row.objectForKey(key);
    return value && value->isString() ? *value->asString() : std::string();
}

/// A number as the shortest digits that read back as the same float.
inline std::string digits(float value) {
    return PropertyList::floatNumber(value).description();
}

/// What a value handler does after the value was written: the effects of one change, in order.
inline Lines change(const std::string& key, const std::string& value) {
    return {"set com.quillon.tallyforge " + key + " " + value, "reload-specifier " + key,
            "synchronize-defaults", "post reloadTallyforgePreviewNotify",
            "darwin com.quillon.tallyforge.prefs"};
}

inline const std::string kReload = "post reloadTallyforgePreviewNotify";
inline const std::string kSynchronise = "synchronize com.quillon.tallyforge";

/// What happens when the pane comes on screen: the preview of a mark's pane draws, and a colour row reads its
/// setting from the file.
inline Lines appearance(const std::string& pane) {
    Lines lines;
    if (std::find(kMarkPanes.begin(), kMarkPanes.end(), pane) != kMarkPanes.end()) lines.push_back(kReload);
    for (const Dictionary& row : rowsOfList(pane)) {
        if (text(row, "cellClass") == "QuillonColorPickerLinkCell") lines.push_back(kSynchronise);
    }
    return lines;
}

inline Lines joined(std::initializer_list<Lines> parts) {
    Lines all;
    for (const Lines& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// The program on a furnished device of the test's own, without a session bus.
class DriveTest : public testing::Test {
  protected:
    DriveTest() {
        device.furnish();
        scratch = device.root() / "scratch";
        std::filesystem::create_directories(scratch);
    }
    Ended tallyforge(std::vector<std::string> words) const {
        words.insert(words.begin(), TALLYFORGE_BIN "/tallyforge");
        return RunProgram(words, {{"TALLYFORGE_ROOT", device.root().string()},
                                  {"DBUS_SESSION_BUS_ADDRESS", ""},
                                  {"XDG_RUNTIME_DIR", ""}});
    }
    /// Runs the script from a file.
    Ended drive(const std::string& script, std::vector<std::string> words = {}) const {
        const std::string file = (scratch / "script").string();
        std::ofstream(file, std::ios::binary) << script;
        words.insert(words.begin(), {"drive", file});
        return tallyforge(words);
    }
    /// The effects of a script that has to succeed.
    Lines trace(const std::string& script, std::vector<std::string> words = {}) const {
        words.insert(words.end(), {"--trace", "-"});
        Ended ended = drive(script, words);
        EXPECT_EQ(ended.status, 0) << script << ended.errors;
        EXPECT_EQ(ended.errors, "") << script;
        return linesOf(ended.output);
    }
    /// The effects from a pane that is already there.
    Lines traceOn(const std::string& pane, const std::string& script) const {
        Lines all = trace("open " + pane + "\n" + script);
        const Lines first = appearance(pane);
        if (all.size() < first.size()) return all;
        const auto after = all.begin() + static_cast<std::ptrdiff_t>(first.size());
        EXPECT_EQ(Lines(all.begin(), after), first);
        return {after, all.end()};
    }
    Json inspect(std::vector<std::string> words) const {
        words.insert(words.begin(), "inspect");
        Ended ended = tallyforge(words);
        EXPECT_EQ(ended.status, 0) << ended.errors;
        EXPECT_EQ(ended.errors, "");
        return Json::parse(ended.output, nullptr, false);
    }
    static void expectRefused(const Ended& ended, int status, const std::string& says) {
        EXPECT_EQ(ended.status, status) << ended.errors;
        EXPECT_EQ(ended.errorLines(), 1U) << ended.errors;
        EXPECT_TRUE(ended.errors.starts_with("tallyforge: ")) << ended.errors;
        EXPECT_NE(ended.errors.find(says), std::string::npos) << ended.errors;
    }
    std::filesystem::path domainFile() const { return device.file(kDomainPath); }
    /// The settings as a foreign reader of property lists sees them.
    Json domain() const {
        if (!std::filesystem::exists(domainFile())) return Json::object();
        Ended ended = RunProgram({"python3", "-c",
                                  "import plistlib, json, sys\n"
                                  "print(json.dumps(plistlib.load(open(sys.argv[1], 'rb'))))",
                                  domainFile().string()});
        EXPECT_EQ(ended.status, 0) << ended.errors;
        return Json::parse(ended.output, nullptr, false);
    }
    static const Json* row(const Json& screen, const std::string& title) {
        for (const Json& entry : screen["rows"]) {
            if (entry["title"] == title) return &entry;
        }
        return nullptr;
    }

    TestDevice device;
    std::filesystem::path scratch;
};

} // namespace tallyforge::test

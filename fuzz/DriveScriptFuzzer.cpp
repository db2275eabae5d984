// Any text as a script for the screens of the Settings app, run on a copy of the stock device in memory.

#include "FuzzDevice.h"
#include "PlainGraphics.h"

#include "cli/Drive.h"
#include "cli/Report.h"
#include "foundation/NSFileManager.h"
#include "foundation/PropertyListFormat.h"
#include "mobileservices/UIAssetManager.h"
#include "panes/PaneNames.h"

#include <algorithm>
#include <iterator>
#include <random>
#include <sstream>
#include <utility>

using namespace tallyforge;
using fuzz::Require;

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t most);

namespace {

namespace fs = std::filesystem;

constexpr const char* kThemes = "/var/mobile/Documents/Tallyforge";
constexpr const char* kDefaultThemes = "/Library/Application Support/Tallyforge";

bool somethingChanged = false;

void CopyThemes(const fuzz::FuzzDevice& device) {
    device.empty(kThemes);
    fs::create_directories(device.file(kThemes));
    for (const char* name : {"starlight.tft", "caesar.tft"})
        fs::copy_file(device.file(kDefaultThemes) / name, device.file(kThemes) / name,
                      fs::copy_options::overwrite_existing);
}

void KeepTwo(const fs::path& folder) {
    std::vector<fs::path> entries(fs::directory_iterator(folder), fs::directory_iterator{});
    std::ranges::sort(entries);
    for (size_t i = 2; i < entries.size(); ++i)
        fs::remove_all(entries[i]);
}

// The stock device, with fewer applications. Its lists stand in the quicker of their forms.
const fuzz::FuzzDevice& Device() {
    static const bool furnished = [] {
        Graphics::install(std::make_unique<fuzz::PlainGraphics>());
        RegisterMobileServices();
        const fuzz::FuzzDevice& device = fuzz::TheDevice();
        fs::copy(TALLYFORGE_RESOURCES "/stock", device.file("/"), fs::copy_options::recursive);
        const std::string bundle = "/Library/PreferenceBundles/tallyforgeprefs.bundle/";
        for (const auto& entry : fs::directory_iterator(device.file(bundle))) {
            if (entry.path().extension() != ".plist") continue;
            const std::string path = bundle + entry.path().filename().string();
            const auto list = DeserializePropertyList(*NSFileManager::defaultManager().contentsAtPath(path));
            Require(bool(list), "a list of the stock device is sound");
            device.write(path, BinaryPropertyList::Serialize(*list));
        }
        CopyThemes(device);
        for (const char* folder : {"/Applications", "/var/containers/Bundle/Application"})
            KeepTwo(device.file(folder));
        return true;
    }();
    Require(furnished, "there is a device");
    return fuzz::TheDevice();
}

/// What is said on a standard stream while this lives.
class Said {
  public:
    explicit Said(FILE*& stream)
        : stream_(stream), former_(stream), capture_(open_memstream(&text_, &size_)) {
        stream_ = capture_;
    }
    ~Said() {
        stream_ = former_;
        std::fclose(capture_);
        std::free(text_);
    }
    Said(const Said&) = delete;
    Said& operator=(const Said&) = delete;
    std::string text() {
        std::fflush(capture_);
        return {text_, size_};
    }

  private:
    FILE*& stream_;
    FILE* former_;
    char* text_ = nullptr;
    size_t size_ = 0;
    FILE* capture_;
};

bool Holds(const std::string& line, const char* word) {
    return line.find(word) != std::string::npos;
}

/// What the steps of one script may take of the processor's time. The clock is virtual: waiting takes none,
/// however long, and of a drag its touches count, sixty for each of its seconds.
class Budget {
  public:
    explicit Budget(bool mayInspect) : mayInspect_(mayInspect) {}

    /// Whether there is enough left for the step, which is then paid for. A drag is shortened to what is
    /// left.
    bool pays(std::string& line) {
        int cost = Holds(line, "inspect") ? 0 : kOther; // that is much more than all others, but done once
        for (const auto& [word, itsCost] : kCosts)
            if (Holds(line, word)) cost = itsCost;
        if (cost > left_) return false;
        left_ -= cost;
        if (Holds(line, "drag")) shortenDrag(line);
        return true;
    }
    bool mayInspect() { return std::exchange(mayInspect_, false); }

  private:
    // In tenths of a millisecond with the sanitizers. The dearest is a sixth of the whole.
    static constexpr int kWhole = 96;
    static constexpr int kOther = 2;
    static constexpr std::pair<const char*, int> kCosts[] = {
        {"tap", 4}, {"render", 6}, {"slide", 6}, {"scroll", 8}, {"back", 8}, {"drag", 8}, {"open", 16}};
    static constexpr double kMostDragging = 4; // seconds

    void shortenDrag(std::string& line) {
        std::istringstream text(line);
        std::vector<std::string> words(std::istream_iterator<std::string>(text), {});
        if (words.size() < 6) return;
        const double seconds = std::atof(words[5].c_str() + (words[5][0] == '"' ? 1 : 0));
        if (!(seconds > 0)) return;
        const double rest = std::min(seconds, dragging_);
        dragging_ -= rest;
        if (rest == seconds) return;
        words[5] = std::to_string(rest);
        line.clear();
        for (const std::string& word : words)
            line += word + " ";
    }

    int left_ = kWhole;
    double dragging_ = kMostDragging;
    bool mayInspect_;
};

// The first steps, as far as the budget goes. What takes most of the time, telling of a whole screen, is done
// in few scripts and once.
std::string ShortScript(const uint8_t* data, size_t size) {
    std::istringstream lines(std::string(reinterpret_cast<const char*>(data), size));
    std::string script, line;
    Budget budget(size % 16 == 0);
    while (std::getline(lines, line) && budget.pays(line)) {
        if (Holds(line, "inspect") && !budget.mayInspect()) continue;
        script += line + "\n";
    }
    return script;
}

void RunScript(const std::string& text) {
    Command command;
    command.name = "drive";
    command.size = CGSize{160, 240};
    command.scale = 1;
    std::istringstream script(text);
    size_t files = 0;
    Said output(stdout);
    Said errors(stderr);
    const int status = RunDriveScript(command, script, [&](const fs::path&, std::span<const uint8_t> bytes) {
        Require(!bytes.empty(), "a file has contents");
        ++files;
        return files < 3 ? Status(Done{}) : Status(Error{"no room"});
    });
    const std::string said = errors.text();
    Require(status == kDone || status == kFailed, "a script is done or cannot be done");
    Require(status == kDone || !said.empty(), "a failure is told");
    std::istringstream lines(said);
    for (std::string line; std::getline(lines, line);)
        Require(line.starts_with("tallyforge: "), "what is told is told as one line");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const fuzz::FuzzDevice& device = Device();
    NSFileManager::defaultManager().setTrace([](std::string_view, std::string_view path) {
        if (!path.starts_with("/var/mobile/Library/Preferences/")) somethingChanged = true;
    });
    RunScript(ShortScript(data, size));
    Require(CFPreferencesReadFailure(kSettingsDomain).empty(), "the settings can be read afterwards");
    device.forgetPreferences();
    if (somethingChanged) {
        CopyThemes(device);
        device.empty("/var/mobile/Documents/Tallyforge/PerAppThemes");
        somethingChanged = false;
    }
    device.requireNothingOutside();
    return 0;
}

namespace {

constexpr std::string_view kTexts[] = {
    "Badge",  "Close Box", "New Dot", "Themes", "Per-App Themes", "Colour",    "Number", "Border",
    "Glow",   "Animation", "Size",    "Reset",  "Randomise",      "Randomize", "Save",   "Load",
    "Delete", "Cancel",    "OK",      "Done",   "Star",           "Caesar",    "None",   "Restore",
    "App",    "Theme",     "Clear",   "Red",    "Shape",          "Roundness", "Back"};
constexpr std::string_view kNumbers[] = {"0",   "1",   "-1",  "0.5", "20",  "42",
                                         "100", "150", "190", "250", "nan", "1e9"};

constexpr std::string_view kTimes[] = {"0", "0.1", "0.3", "1.3", "2.3", "7.5", "60", "3600"};

template <class Choices>
std::string_view Any(const Choices& choices, std::minstd_rand& random) {
    return choices[random() % std::size(choices)];
}

std::string AnyStep(std::minstd_rand& random) {
    const auto quoted = [&] { return " \"" + std::string(Any(kTexts, random)) + "\""; };
    const auto number = [&] { return " " + std::string(Any(kNumbers, random)); };
    const auto point = [&] {
        return " " + std::to_string(random() % 160) + " " + std::to_string(random() % 240);
    };
    switch (random() % 12) {
    case 0:
    case 1:
        return "open " + std::string(Any(kPaneNames, random));
    case 2:
        return "back";
    case 3:
    case 4:
        return "tap" + point();
    case 5:
        return "tap" + quoted();
    case 6:
        return "slide" + quoted() + number() + (random() % 3 == 0 ? " hold" : "");
    case 7:
        return "drag" + point() + point() + (random() % 2 == 0 ? " " + std::string(Any(kTimes, random)) : "");
    case 8:
        return random() % 2 == 0 ? "scroll" + quoted() : "pick" + quoted();
    case 9:
        return "type" + quoted();
    case 10:
        return "wait " + std::string(Any(kTimes, random));
    default:
        return random() % 2 == 0 ? "inspect out" : random() % 2 == 0 ? "render out.png" : "back";
    }
}

} // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
    std::minstd_rand random(seed);
    if (random() % 4 == 0) return LLVMFuzzerMutate(data, size, most);
    std::vector<std::string> lines;
    std::istringstream text(std::string(reinterpret_cast<const char*>(data), size));
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    const size_t at = lines.empty() ? 0 : random() % lines.size();
    const auto place = lines.begin() + static_cast<std::ptrdiff_t>(at);
    if (lines.empty() || random() % 2 == 0)
        lines.insert(place, AnyStep(random));
    else if (random() % 2 == 0)
        *place = AnyStep(random);
    else
        lines.erase(place);
    std::string script;
    for (const std::string& line : lines)
        script += line + "\n";
    if (script.size() > most) return LLVMFuzzerMutate(data, size, most);
    std::copy(script.begin(), script.end(), data);
    return script.size();
}

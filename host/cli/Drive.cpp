#include "cli/Drive.h"

#include "cli/Device.h"
#include "cli/Report.h"
#include "cli/Screen.h"
#include "cli/SettingsStage.h"
#include "cli/Trace.h"
#include "cli/ValueText.h"
#include "corefoundation/CFPreferences.h"
#include "coregraphics/Canvas.h"
#include "device/HostFile.h"
#include "settings/SettingsKeys.h"
#include "settings/SilentFailures.h"
#include "uikit/UIAlertView.h"
#include "uikit/UIApplication.h"
#include "uikit/UIPickerView.h"
#include "uikit/UISlider.h"
#include "uikit/UITextField.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iostream>

namespace tallyforge {

namespace {

constexpr double kDragTime = 0.3; // seconds

constexpr double kLongestWait = 3600;

/// One step: its words, those in quotation marks without them.
struct Step {
    std::vector<std::string> words;
    size_t count() const { return words.size(); }
    bool is(size_t index, std::string_view word) const { return index < count() && words[index] == word; }
};

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

// Words end at blanks; "..." is one word in which \" and \\ stand for themselves; # begins a comment.
Result<Step> parseStep(const std::string& line) {
    Step step;
    for (size_t i = 0; i < line.size();) {
        if (isBlank(line[i])) {
            ++i;
            continue;
        }
        if (line[i] == '#') break;
        std::string word;
        if (line[i] != '"') {
            while (i < line.size() && !isBlank(line[i]))
                word += line[i++];
            step.words.push_back(word);
            continue;
        }
        for (++i; i < line.size() && line[i] != '"'; ++i) {
            if (line[i] == '\\' && i + 1 < line.size() && (line[i + 1] == '"' || line[i + 1] == '\\')) ++i;
            word += line[i];
        }
        if (i == line.size()) return Error{"a quotation mark is not closed"};
        ++i;
        if (i < line.size() && !isBlank(line[i]) && line[i] != '#')
            return Error{"after a closing quotation mark a blank is missing"};
        step.words.push_back(word);
    }
    return step;
}

/// The hands of whoever drives: each step as touches, typed text and waiting.
class Driver {
  public:
    Driver(const Command& command, const DriveFiles& files)
        : command_(command), files_(files), stage_(command.size, command.scale), screen_(stage_.app()) {}

    void complainOfEmptyScreen() const {
        if (std::string why = screen_.whyEmpty(); !why.empty()) Complain("drive", why);
    }
    /// Done, or why the step cannot be done.
    Status run(const Step& step);

  private:
    struct Verb {
        std::string_view name;
        size_t least, most; // words after it
        std::string_view usage;
        Status (Driver::*run)(const Step& step);
    };
    static const Verb kVerbs[];

    Status open(const Step& step);
    Status back(const Step& step);
    Status tap(const Step& step);
    Status slide(const Step& step);
    Status drag(const Step& step);
    Status scroll(const Step& step);
    Status pick(const Step& step);
    Status type(const Step& step);
    Status wait(const Step& step);
    Status render(const Step& step);
    Status inspect(const Step& step);

    void touch(UITouchPhase phase, const CGPoint& point);
    void tapAt(const CGPoint& point);
    Status screenIsFree() const;
    Result<CGPoint> point(const Step& step, size_t first) const;

    const Command& command_;
    const DriveFiles& files_;
    SettingsStage stage_;
    Screen screen_;
    CGPoint finger_; // where it is while it is down
};

const Driver::Verb Driver::kVerbs[] = {
    {"open", 1, 1, "open PANE", &Driver::open},
    {"back", 0, 0, "back", &Driver::back},
    {"tap", 1, 2, "tap \"TEXT\" or tap X Y", &Driver::tap},
    {"slide", 2, 3, "slide \"ROW\" VALUE [hold]", &Driver::slide},
    {"drag", 4, 5, "drag X1 Y1 X2 Y2 [SECONDS]", &Driver::drag},
    {"scroll", 1, 1, "scroll \"TEXT\"", &Driver::scroll},
    {"pick", 1, 1, "pick \"TEXT\"", &Driver::pick},
    {"type", 1, 1, "type \"TEXT\"", &Driver::type},
    {"wait", 1, 1, "wait SECONDS", &Driver::wait},
    {"render", 1, 1, "render FILE", &Driver::render},
    {"inspect", 0, 1, "inspect [FILE]", &Driver::inspect},
};

Status Driver::run(const Step& step) {
    for (const Verb& verb : kVerbs) {
        if (!step.is(0, verb.name)) continue;
        if (step.count() - 1 < verb.least || step.count() - 1 > verb.most)
            return Error{"wanted is: " + std::string(verb.usage)};
        auto done = (this->*verb.run)(step);
        stage_.app().step();
        return done;
    }
    return Error{"'" + step.words[0] + "' is no step; 'tallyforge drive --help' lists them"};
}

// Whether one may go to another screen.
Status Driver::screenIsFree() const {
    if (FrontAlertPanel()) return Error{"an alert is in front"};
    if (stage_.app().window().touching()) return Error{"a finger is still down"};
    return Done{};
}

Status Driver::open(const Step& step) {
    if (auto free = screenIsFree(); !free) return free;
    if (!stage_.app().openPane(step.words[1])) return Error{"there is no pane '" + step.words[1] + "'"};
    complainOfEmptyScreen();
    return Done{};
}

Status Driver::back(const Step&) {
    if (auto free = screenIsFree(); !free) return free;
    UINavigationController& navigation = stage_.app().navigation();
    if (navigation.viewControllers().size() < 2) return Error{"this is the first screen"};
    stage_.app().step();
    UIControl* button = navigation.backButton();
    tapAt(button->convertPointToView({CGRectGetMidX(button->bounds()), CGRectGetMidY(button->bounds())},
                                     nullptr));
    return Done{};
}

void Driver::touch(UITouchPhase phase, const CGPoint& point) {
    finger_ = point;
    stage_.app().window().sendTouch({phase, point, stage_.nanoseconds()});
    stage_.app().step();
}

void Driver::tapAt(const CGPoint& point) {
    touch(UITouchPhase::began, point);
    touch(UITouchPhase::ended, point);
}

Result<CGPoint> Driver::point(const Step& step, size_t first) const {
    auto x = NumberFromText(step.words[first]), y = NumberFromText(step.words[first + 1]);
    if (!x || !y) return Error{"'" + step.words[first] + " " + step.words[first + 1] + "' is no point"};
    return CGPoint{*x, *y};
}

Status Driver::tap(const Step& step) {
    if (stage_.app().window().touching()) return Error{"a finger is still down"};
    if (step.count() == 3) {
        auto where = point(step, 1);
        if (!where) return where.error();
        tapAt(*where);
        return Done{};
    }
    auto where = screen_.pointShowing(step.words[1]);
    if (!where) return where.error();
    tapAt(*where);
    return Done{};
}

// But for what coordinates leave of a number.
bool standsAt(const UISlider& slider, double value) {
    const double range = double{slider.maximumValue()} - slider.minimumValue();
    return std::abs(slider.value() - value) <= 1e-6 * std::max(1.0, range);
}

Status Driver::slide(const Step& step) {
    auto value = NumberFromText(step.words[2]);
    if (!value) return Error{"'" + step.words[2] + "' is no number"};
    const bool hold = step.is(3, "hold");
    if (step.count() == 4 && !hold) return Error{"'" + step.words[3] + "' is not 'hold'"};
    UISlider* slider = screen_.sliderOf(step.words[1]);
    if (!slider) return Error{"there is no slider '" + step.words[1] + "'"};
    if (*value < double{slider->minimumValue()} - 1e-6 || *value > double{slider->maximumValue()} + 1e-6)
        return Error{"the slider goes from " +
                     PropertyList::floatNumber(slider->minimumValue()).description() + " to " +
                     PropertyList::floatNumber(slider->maximumValue()).description()};

    auto keptAlive = slider->shared_from_this();
    auto thumbAt = [&](float at) {
        return slider->convertPointToView(slider->thumbCentreForValue(at), nullptr);
    };
    if (!stage_.app().window().touching())
        touch(UITouchPhase::began, thumbAt(slider->value()));
    else if (!slider->tracking())
        return Error{"a finger is still down elsewhere"};
    if (!slider->tracking()) {
        touch(UITouchPhase::cancelled, finger_); // it is no tap on the row either
        return Error{"the slider '" + step.words[1] + "' takes no touches"};
    }
    const CGPoint to = thumbAt(static_cast<float>(*value));
    touch(UITouchPhase::moved, to);
    if (!hold) touch(UITouchPhase::ended, to);
    if (!standsAt(*slider, *value))
        return Error{"the slider '" + step.words[1] + "' stands at " +
                     PropertyList::floatNumber(slider->value()).description()};
    return Done{};
}

Status Driver::drag(const Step& step) {
    if (stage_.app().window().touching()) return Error{"a finger is still down"};
    auto from = point(step, 1), to = point(step, 3);
    if (!from) return from.error();
    if (!to) return to.error();
    double seconds = kDragTime;
    if (step.count() == 6) {
        auto given = NumberFromText(step.words[5]);
        if (!given || *given < 0 || *given > 60)
            return Error{"'" + step.words[5] + "' is no time from 0 to 60"};
        seconds = *given;
    }
    touch(UITouchPhase::began, *from);
    const int steps = std::max(2, static_cast<int>(std::lround(seconds * 60)));
    for (int i = 1; i <= steps; ++i) {
        stage_.wait(seconds / steps);
        const double share = static_cast<double>(i) / steps;
        touch(UITouchPhase::moved,
              {from->x + (to->x - from->x) * share, from->y + (to->y - from->y) * share});
    }
    touch(UITouchPhase::ended, *to);
    return Done{};
}

Status Driver::scroll(const Step& step) {
    return screen_.scrollTo(step.words[1]);
}

Status Driver::pick(const Step& step) {
    auto panel = FrontAlertPanel();
    auto* picker = panel ? dynamic_cast<UIPickerView*>(panel->contents().accessory.get()) : nullptr;
    if (!picker) return Error{"no alert with a picker is in front"};
    for (int row = 0; row < picker->numberOfRowsInComponent(0); ++row) {
        if (picker->titleForRow(row) != step.words[1]) continue;
        // Row by row, as a key turns it: unlike a program's own choice, it is told to the picker's owner.
        const int away = row - picker->selectedRowInComponent(0);
        for (int turned = 0; turned < std::abs(away); ++turned)
            picker->pressKey(away > 0 ? UIKey::down : UIKey::up);
        return Done{};
    }
    return Error{"the picker has no row '" + step.words[1] + "'"};
}

Status Driver::type(const Step& step) {
    if (!stage_.app().window().insertText(step.words[1])) return Error{"no text field is in front"};
    return Done{};
}

Status Driver::wait(const Step& step) {
    auto seconds = NumberFromText(step.words[1]);
    if (!seconds || *seconds < 0 || *seconds > kLongestWait)
        return Error{"'" + step.words[1] + "' is no time from 0 to 3600"};
    stage_.wait(*seconds);
    return Done{};
}

Status Driver::render(const Step& step) {
    auto picture = stage_.picture();
    if (!picture) return picture.error();
    return files_(step.words[1], Graphics::current()->encodePNG(**picture));
}

Status Driver::inspect(const Step& step) {
    using Json = nlohmann::ordered_json;
    std::string text =
        screen_.inspect(command_.pad, stage_.time()).dump(2, ' ', false, Json::error_handler_t::replace) +
        "\n";
    if (step.count() == 1) {
        Print(text);
        return Done{};
    }
    return files_(step.words[1], std::vector<uint8_t>(text.begin(), text.end()));
}

/// What the screens do not say of files that could not be written, said on standard error.
class SilentFailures {
  public:
    SilentFailures() {
        SetSilentFailureListener([this](const std::string& path, const std::string& why) {
            any_ = true;
            Complain("drive", path + ": " + why);
        });
    }
    ~SilentFailures() { SetSilentFailureListener({}); }
    SilentFailures(const SilentFailures&) = delete;
    SilentFailures& operator=(const SilentFailures&) = delete;
    bool any() const { return any_; }

  private:
    bool any_ = false;
};

} // namespace

int RunDrive(const Command& command) {
    std::ifstream file;
    if (!command.script.empty()) {
        file.open(command.script);
        if (!file) return CouldNot("drive", command.script + ": " + std::strerror(errno));
    }
    const auto write = [](const std::filesystem::path& path, std::span<const uint8_t> bytes) {
        return WriteHostFile(path, bytes);
    };
    return RunDriveScript(command, command.script.empty() ? std::cin : file, write);
}

int RunDriveScript(const Command& command, std::istream& script, const DriveFiles& files) {
    // Nothing is opened on this machine; whether a program takes an address, the device alone would know.
    UIApplication::sharedApplication().setOpener(
        {[](const std::string& url) { return url.starts_with("http"); },
         [](const std::string&) { return true; }});

    Driver driver(command, files);
    EffectTrace trace;
    const SilentFailures failures;
    if (command.trace) {
        if (auto opened = trace.open(*command.trace); !opened) return CouldNot("drive", opened.reason());
    }
    WarnOfUnreadableSettings(command);
    driver.complainOfEmptyScreen();
    std::string line;
    for (int number = 1; std::getline(script, line); ++number) {
        auto step = parseStep(line);
        Status done = step ? Status(Done{}) : Status(step.error());
        if (step && step->count() > 0) done = driver.run(*step);
        if (!done) return CouldNot("drive", "line " + std::to_string(number) + ": " + done.reason());
    }
    if (script.bad())
        return CouldNot("drive",
                        (command.script.empty() ? "standard input" : command.script) + ": it cannot be read");
    if (auto closed = trace.close(); !closed) return CouldNot("drive", closed.reason());
    if (std::string failure = CFPreferencesSynchronizeFailure(kSettingsDomain); !failure.empty())
        return CouldNot("drive", CFPreferencesPath(kSettingsDomain) + ": " + failure);
    const int finished = FinishOutput("drive");
    return failures.any() ? int{kFailed} : finished;
}

} // namespace tallyforge

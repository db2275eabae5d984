#include "cli/Command.h"

#include "cli/Report.h"
#include "cli/ValueText.h"
#include "settings/SettingsKeys.h"

#include <CLI/CLI.hpp>

#include <array>
#include <charconv>
#include <cstdio>
#include <memory>
#include <string_view>

namespace tallyforge {

namespace {

constexpr double kLongestTime = 3600;
constexpr double kMostFrames = 3600;

// "WxH" in points.
std::string ParseSize(const std::string& text, std::optional<CGSize>& size) {
    size_t cross = text.find('x');
    auto width = NumberFromText(std::string_view(text).substr(0, cross));
    auto height =
        cross == std::string::npos ? std::nullopt : NumberFromText(std::string_view(text).substr(cross + 1));
    if (!width || !height || *width < 1 || *height < 1 || *width > 4096 || *height > 4096)
        return "'" + text + "' is no size: wanted is WxH in points, each from 1 to 4096, for example 375x44";
    size = CGSize{*width, *height};
    return {};
}

std::optional<uint64_t> WholeNumber(const std::string& text) {
    uint64_t number = 0;
    auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), number);
    return failed == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// Shows positional words as they are named, with dots where there may be more.
class WordsFormatter final : public CLI::Formatter {
  public:
    std::string make_option_usage(const CLI::Option* option) const override {
        std::string name = option->get_name(true);
        return option->get_expected_max() > 1 ? name + " ..." : name;
    }
    std::string make_option_opts(const CLI::Option* option) const override {
        return option->get_positional() ? std::string() : CLI::Formatter::make_option_opts(option);
    }
};

// What every setting may be, a line each; made only when help is asked for.
std::string SettingsHelp() {
    std::string text =
        "Example:\n  tallyforge set badgeshape 4 badgebgcol '#3355FF' badgesize -0.5\n\nSettings:\n";
    for (const SettingKey& key : SettingsKeyTable()) {
        std::string name(key.name);
        name.resize(20, ' ');
        text += "  " + name + AllowedValues(key) + "\n";
    }
    return text;
}

/// Makes the options that several commands share, each time with the same words.
class Options {
  public:
    explicit Options(Command& command) : command_(command) {}

    void common(CLI::App* app) {
        app->add_option("--root", command_.root,
                        "The device root: a folder that stands for the device's \"/\"")
            ->type_name("DIR");
        app->add_option_function<std::string>(
               "--idiom", [this](const std::string& word) { command_.pad = word == "pad"; },
               "The kind of device: phone (unless given) or pad")
            ->check([](const std::string& word) {
                return word == "phone" || word == "pad" ? std::string()
                                                        : "'" + word + "' is neither phone nor pad";
            })
            ->type_name("phone|pad");
    }
    void json(CLI::App* app) { app->add_flag("--json", command_.json, "Print JSON"); }
    void size(CLI::App* app) {
        app->add_option("--size", "The cell's size in points at its creation (320x44 unless given); it is "
                                  "shown at least 150 high")
            ->check([this](const std::string& text) { return ParseSize(text, command_.size); })
            ->type_name("WxH");
    }
    void pane(CLI::App* app) {
        app->add_option(
               "--pane", command_.pane,
               "A whole screen instead of the preview alone: tallyforge (the first one), badge, "
               "badgecolor, closebox, newdot, themes, ..., or the key of a row that opens a screen of "
               "its own (badgeapps); --size is then the screen's")
            ->type_name("PANE");
    }
    void scale(CLI::App* app) {
        number(app, "--scale", command_.scale, 0.25, 8, "Pixels a point (2 unless given)");
    }
    void time(CLI::App* app) {
        number(app, "--time", command_.time, 0, kLongestTime,
               "Seconds after the marks were built (0 unless given)", "SECONDS");
    }
    void mark(CLI::App* app) {
        app->add_option("MARK", "badge, closebox or newdot")
            ->required()
            ->check([this](const std::string& word) {
                if (word == "badge")
                    command_.mark = MarkKind::badge;
                else if (word == "closebox")
                    command_.mark = MarkKind::closeBox;
                else if (word == "newdot")
                    command_.mark = MarkKind::newDot;
                else
                    return "'" + word + "' is no mark: wanted is badge, closebox or newdot";
                return std::string();
            });
    }
    template <class Number> // double, or an optional one
    void number(CLI::App* app, const std::string& name, Number& value, double min, double max,
                const std::string& help, const std::string& type = "N") {
        addNumber(
            app, name, [&value](double number) { value = number; }, min, max, help, type);
    }

  private:
    static void addNumber(CLI::App* app, const std::string& name, std::function<void(double)> take,
                          double min, double max, const std::string& help, const std::string& type) {
        app->add_option(name, help)
            ->check([take = std::move(take), min, max](const std::string& text) {
                auto number = NumberFromText(text);
                if (!number || *number < min || *number > max) {
                    std::array<char, 96> range{};
                    std::snprintf(range.data(), range.size(), "' is no number from %g to %g", min, max);
                    return "'" + text + range.data();
                }
                take(*number);
                return std::string();
            })
            ->type_name(type);
    }
    Command& command_;
};

CLI::App* AddCommand(CLI::App& app, Options& options, const std::string& name, const std::string& help,
                     const std::string& example) {
    CLI::App* command = app.add_subcommand(name, help);
    options.common(command);
    command->footer("Example:\n  " + example);
    return command;
}

void AddSettingsCommands(CLI::App& app, Options& options, Command& words) {
    CLI::App* list =
        AddCommand(app, options, "list", "Print the 46 look settings: key, value, and 'set' or 'fallback'",
                   "tallyforge list --json");
    options.json(list);

    CLI::App* get = AddCommand(app, options, "get", "Print a setting's value, or its fallback",
                               "tallyforge get badgesize");
    get->add_option("KEY", words.words, "The setting")->required()->expected(1);
    options.json(get);

    CLI::App* set =
        AddCommand(app, options, "set",
                   "Check all values, then write them, and tell the preview and the home screen once",
                   "tallyforge set badgeshape 4 badgebgcol '#3355FF' badgesize -0.5");
    set->add_option("KEY VALUE", words.words, "Settings and their values; what is allowed is listed below")
        ->required()
        ->expected(1, 4096);
    set->footer("");
    set->footer(SettingsHelp);

    CLI::App* unset = AddCommand(app, options, "unset", "Remove settings, so that their fallbacks count",
                                 "tallyforge unset badgesize badgeshape");
    unset->add_option("KEY", words.words, "The settings")->required()->expected(1, 4096);

    CLI::App* randomize =
        AddCommand(app, options, "randomize", "Give every setting of a mark a random value; there is no undo",
                   "tallyforge randomize badge --seed 7");
    randomize->alias("randomise");
    options.mark(randomize);
    randomize->add_option("--seed", "Makes the draws repeatable: the same number, the same values")
        ->check([&words](const std::string& text) {
            words.seed = WholeNumber(text);
            return words.seed ? std::string() : "'" + text + "' is no whole number from 0";
        })
        ->type_name("N");

    CLI::App* reset = AddCommand(
        app, options, "reset", "Put every setting of a mark back to the system's own look; there is no undo",
        "tallyforge reset closebox");
    options.mark(reset);

    CLI::App* watch =
        AddCommand(app, options, "watch", "Print the system's notifications as they arrive, one name a line",
                   "tallyforge watch --count 1 --timeout 10");
    watch->add_option("--count", "End after that many")
        ->check([&words](const std::string& text) {
            words.count = WholeNumber(text);
            return words.count.value_or(0) > 0 ? std::string() : "'" + text + "' is no whole number from 1";
        })
        ->type_name("N");
    options.number(watch, "--timeout", words.timeout, 0, 1e9, "End after that many seconds", "SECONDS");
}

void AddAppsCommand(CLI::App& app, Options& options, Command& words) {
    CLI::App* apps =
        AddCommand(app, options, "apps", "Print the installed apps: identifier and name, by their names",
                   "tallyforge apps user --json");
    apps->add_option("WHICH", words.apps,
                     "all (unless given), nonhidden (without hidden and web apps), and of those only the\n"
                     "system's or the user's")
        ->check([](const std::string& word) {
            for (const char* known : {"all", "nonhidden", "system", "user"}) {
                if (word == known) return std::string();
            }
            return "'" + word + "' is none of all, nonhidden, system and user";
        })
        ->type_name("all|nonhidden|system|user");
    options.json(apps);
}

void AddPictureCommands(CLI::App& app, Options& options, Command& words) {
    CLI::App* render = AddCommand(app, options, "render", "Draw the preview, or a screen, into a PNG file",
                                  "tallyforge render badge.png --scale 3 --time 0.5");
    render->add_option("OUT.png", words.output, "The file to write")->required();
    options.pane(render);
    options.size(render);
    options.scale(render);
    options.time(render);

    CLI::App* animate = AddCommand(app, options, "animate", "Draw the preview into an animated WebP file",
                                   "tallyforge animate badge.webp --seconds 2 --fps 30");
    animate->add_option("OUT.webp", words.output, "The file to write")->required();
    options.number(animate, "--seconds", words.seconds, 0.01, kLongestTime, "How long (4 unless given)",
                   "SECONDS");
    options.number(animate, "--fps", words.framesPerSecond, 1, 100, "Frames a second (30 unless given)");
    options.size(animate);
    options.scale(animate);

    CLI::App* inspect = AddCommand(app, options, "inspect", "Print what 'render' would draw, as JSON",
                                   "tallyforge inspect --pane badge --idiom pad");
    options.pane(inspect);
    options.size(inspect);
    options.time(inspect);
    options.json(inspect);
}

constexpr const char* kDriveHelp =
    "Steps, one a line; # begins a comment:\n"
    "  open PANE                        goes to that screen\n"
    "  back                             taps the way back\n"
    "  tap \"TEXT\"                       taps the row, button or alert button that shows it\n"
    "  tap X Y                          taps a point of the screen\n"
    "  slide \"ROW\" VALUE [hold]         drags the row's slider there; hold does not let go\n"
    "  drag X1 Y1 X2 Y2 [SECONDS]       draws a finger across the screen\n"
    "  scroll \"TEXT\"                    until it is on screen\n"
    "  pick \"TEXT\"                      turns the picker of the alert in front to that row\n"
    "  type \"TEXT\"                      into the text field in front\n"
    "  wait SECONDS                     lets the clock run\n"
    "  render FILE, inspect [FILE]      the screen as a picture, or as JSON\n"
    "Example:\n"
    "  printf 'open badge\\nslide \"Size\" 1.2\\n' | tallyforge drive --trace -";

void AddDriveCommand(CLI::App& app, Options& options, Command& words) {
    CLI::App* drive = AddCommand(app, options, "drive", "Run the screens by a script, without a window", "");
    drive->add_option("SCRIPT", words.script, "A file of steps; standard input without one");
    drive->add_option("--trace", words.trace, "Write every effect into this file; - is standard output")
        ->type_name("FILE");
    options.scale(drive);
    drive->footer(kDriveHelp);
}

std::string FirstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

// The command's first word that is none of the options, to say which word was not understood.
std::string FirstWord(int argc, const char* const* argv) {
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] != '-') return argv[i];
        if (std::string_view(argv[i]) == "--root" || std::string_view(argv[i]) == "--idiom") ++i;
    }
    return {};
}

int ReportWrongWords(const CLI::App& app, const CLI::ParseError& error, int argc, const char* const* argv) {
    auto chosen = app.get_subcommands();
    std::string word = FirstWord(argc, argv);
    if (!word.empty() && (chosen.empty() || !chosen.front()->check_name(word)))
        return WrongWords(word, "no such command; see 'tallyforge --help'");
    if (chosen.empty()) return WrongWords("command line", FirstLine(error.what()));
    return WrongWords(chosen.front()->get_name(), FirstLine(error.what()));
}

// What the options cannot check by themselves.
std::optional<int> CheckTogether(const Command& command, int argc, const char* const* argv) {
    // The parser takes a bracketed word apart as a list; no setting and no value is written so.
    for (int i = 1; i < argc && !command.words.empty(); ++i) {
        if (argv[i][0] == '[')
            return WrongWords(command.name,
                              "'" + std::string(argv[i]) + "' is neither a setting nor a value");
    }
    if ((command.name == "render" || command.name == "animate") && command.output.empty())
        return WrongWords(command.name, "no file is named");
    if (command.name == "set" && command.words.size() % 2 != 0)
        return WrongWords("set",
                          "'" + command.words.back() + "' has no value; wanted are pairs of KEY VALUE");
    if (command.name == "animate" && command.seconds * command.framesPerSecond > kMostFrames)
        return WrongWords("animate", "more than 3600 frames; take fewer seconds or frames a second");
    return std::nullopt;
}

} // namespace

std::variant<Command, int> ParseCommandLine(int argc, const char* const* argv) {
    Command command;
    Options options(command);
    CLI::App app("Tallyforge: how the badge, the close box and the new dot of app icons look.", "tallyforge");
    app.set_version_flag("--version", "tallyforge " TALLYFORGE_VERSION);
    app.footer("Alone, tallyforge opens the Settings window; without a display it draws pictures of the "
               "screens into\n"
               "its own folder and prints where they are. 'tallyforge COMMAND --help' explains a command.\n"
               "The device is --root, else $TALLYFORGE_ROOT, else one of the program's own in the user's "
               "data folder.");
    app.formatter(std::make_shared<WordsFormatter>());
    app.require_subcommand(0, 1);
    options.common(&app);
    AddSettingsCommands(app, options, command);
    AddAppsCommand(app, options, command);
    AddPictureCommands(app, options, command);
    AddDriveCommand(app, options, command);

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) { // --help, --version
        return app.exit(help) == 0 ? FinishOutput("help") : int{kFailed};
    } catch (const CLI::ParseError& error) {
        return ReportWrongWords(app, error, argc, argv);
    }
    if (auto chosen = app.get_subcommands(); !chosen.empty()) command.name = chosen.front()->get_name();
    if (auto status = CheckTogether(command, argc, argv)) return *status;
    return command;
}

bool CommandDraws(const Command& command) {
    return command.name.empty() || command.name == "render" || command.name == "animate" ||
           command.name == "inspect" || command.name == "drive";
}

} // namespace tallyforge

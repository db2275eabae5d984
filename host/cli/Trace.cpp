#include "cli/Trace.h"

#include "cli/Report.h"
#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"
#include "corefoundation/NSUserDefaults.h"
#include "device/HostFile.h"
#include "foundation/NSFileManager.h"
#include "foundation/NSNotificationCenter.h"
#include "preferences/PSListController.h"
#include "uikit/UIAlertView.h"
#include "uikit/UIApplication.h"

namespace tallyforge {

namespace {

// A value on one line; lists in brackets, dictionaries in braces.
std::string valueText(const PropertyList& value) {
    if (const auto* items = value.asArray()) {
        std::string text = "[";
        for (const PropertyList& item : *items)
            text += (text.size() > 1 ? ", " : "") + valueText(item);
        return text + "]";
    }
    if (const auto* entries = value.asDictionary()) {
        std::string text = "{";
        for (const auto& [key, item] : *entries)
            text += (text.size() > 1 ? ", " : "") + key + ": " + valueText(item);
        return text + "}";
    }
    return value.description();
}

constexpr const char* kStandardOutput = "-";
constexpr std::string_view kPreferencesFolder = "/var/mobile/Library/Preferences/";

std::string oneLine(std::string text) {
    for (char& c : text) {
        if (c == '\n' || c == '\r') c = ' ';
    }
    return text;
}

} // namespace

EffectTrace::~EffectTrace() {
    static_cast<void>(close());
}

Status EffectTrace::open(const std::string& file) {
    if (file != kStandardOutput) {
        if (auto writable = ExpectHostFileWritable(file); !writable) return writable;
    }
    file_ = file;
    open_ = true;
    CFPreferencesSetTrace({[this](std::string_view domain, std::string_view key, const PropertyList* value) {
                               note("set " + std::string(domain) + " " + std::string(key) + " " +
                                    (value ? valueText(*value) : "(removed)"));
                           },
                           [this](std::string_view domain) { note("synchronize " + std::string(domain)); }});
    NSUserDefaults::standardUserDefaults().setTrace([this] { note("synchronize-defaults"); });
    NSNotificationCenter::defaultCenter().setTrace(
        [this](std::string_view name) { note("post " + std::string(name)); });
    CFNotificationCenterGetDarwinNotifyCenter().setTrace(
        [this](std::string_view name) { note("darwin " + std::string(name)); });
    PSListController::setReloadTrace([this](const std::string& id) { note("reload-specifier " + id); });
    UIAlertView::setTrace([this](int tag, const std::string& title, const std::string& message) {
        note("alert " + std::to_string(tag) + " " + title + " | " + message);
    });
    UIApplication::sharedApplication().setTrace([this](const std::string& url) { note("open-url " + url); });
    NSFileManager::defaultManager().setTrace([this](std::string_view verb, std::string_view path) {
        // A domain's file is written by its synchronise, which has a line of its own.
        if (!path.starts_with(kPreferencesFolder)) note(std::string(verb) + " " + std::string(path));
    });
    return Done{};
}

Status EffectTrace::close() {
    if (!open_) return Done{};
    open_ = false;
    CFPreferencesSetTrace({});
    NSUserDefaults::standardUserDefaults().setTrace({});
    NSNotificationCenter::defaultCenter().setTrace({});
    CFNotificationCenterGetDarwinNotifyCenter().setTrace({});
    PSListController::setReloadTrace({});
    UIAlertView::setTrace({});
    UIApplication::sharedApplication().setTrace({});
    NSFileManager::defaultManager().setTrace({});
    if (file_ == kStandardOutput) return Done{}; // its failures are told with those of all that is printed
    const auto written =
        WriteHostFile(file_, {reinterpret_cast<const uint8_t*>(lines_.data()), lines_.size()});
    return written ? written : Error{"the trace could not be written whole: " + written.reason()};
}

void EffectTrace::note(const std::string& line) {
    const std::string text = oneLine(line) + "\n";
    if (file_ == kStandardOutput)
        Print(text);
    else
        lines_ += text;
}

} // namespace tallyforge

#include "cli/Trace.h"

#include "corefoundation/CFNotificationCenter.h"
#include "corefoundation/CFPreferences.h"
#include "corefoundation/NSUserDefaults.h"
#include "foundation/NSFileManager.h"
#include "foundation/NSNotificationCenter.h"
#include "preferences/PSListController.h"
#include "uikit/UIAlertView.h"
#include "uikit/UIApplication.h"

#include <cerrno>
#include <cstring>

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
    out_ = file == "-" ? stdout : std::fopen(file.c_str(), "we");
    if (!out_) return Error{file + ": " + std::strerror(errno)};

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
    if (!out_) return Done{};
    CFPreferencesSetTrace({});
    NSUserDefaults::standardUserDefaults().setTrace({});
    NSNotificationCenter::defaultCenter().setTrace({});
    CFNotificationCenterGetDarwinNotifyCenter().setTrace({});
    PSListController::setReloadTrace({});
    UIAlertView::setTrace({});
    UIApplication::sharedApplication().setTrace({});
    NSFileManager::defaultManager().setTrace({});
    bool closed = out_ == stdout ? std::fflush(out_) == 0 : std::fclose(out_) == 0;
    out_ = nullptr;
    if (failed_ || !closed) return Error{"the trace could not be written whole"};
    return Done{};
}

void EffectTrace::note(const std::string& line) {
    std::string text = oneLine(line) + "\n";
    if (std::fwrite(text.data(), 1, text.size(), out_) != text.size()) failed_ = true;
}

} // namespace tallyforge

#include "window/URLOpener.h"

#include "cli/Report.h"

#include <QProcess>
#include <QStandardPaths>
#include <QString>

#include <algorithm>
#include <map>
#include <memory>
#include <string>

namespace tallyforge {

namespace {

constexpr int kLongestQuestion = 500; // milliseconds

/// Lower case; empty when the text is no URL. Only what such a name may hold, because it is handed on.
std::string schemeOf(const std::string& url) {
    std::string scheme = url.substr(0, url.find(':'));
    if (scheme.size() == url.size() || scheme.empty() || scheme.size() > 64) return {};
    std::transform(scheme.begin(), scheme.end(), scheme.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
    const bool known =
        scheme.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789+-.") == std::string::npos;
    return known && scheme.front() >= 'a' && scheme.front() <= 'z' ? scheme : std::string();
}

bool isForBrowsers(const std::string& scheme) {
    return scheme == "http" || scheme == "https";
}

bool someProgramTakes(const std::string& scheme) {
    const QString question = QStandardPaths::findExecutable(QStringLiteral("xdg-mime"));
    if (question.isEmpty()) return false;
    QProcess asked;
    asked.setStandardErrorFile(QProcess::nullDevice());
    asked.start(question, {QStringLiteral("query"), QStringLiteral("default"),
                           QStringLiteral("x-scheme-handler/") + QString::fromStdString(scheme)});
    const bool answered = asked.waitForFinished(kLongestQuestion) && asked.exitCode() == 0;
    if (asked.state() != QProcess::NotRunning) {
        asked.kill();
        asked.waitForFinished(-1);
    }
    return answered && !asked.readAllStandardOutput().trimmed().isEmpty();
}

/// Whether a program takes a scheme, once it was asked.
using Answers = std::map<std::string, bool>;

bool canOpen(const std::string& url, Answers& answers) {
    const std::string scheme = schemeOf(url);
    if (scheme.empty() || QStandardPaths::findExecutable(QStringLiteral("xdg-open")).isEmpty()) return false;
    if (isForBrowsers(scheme)) return true;
    auto known = answers.find(scheme);
    if (known == answers.end()) known = answers.emplace(scheme, someProgramTakes(scheme)).first;
    return known->second;
}

bool start(const std::string& url) {
    QProcess opener;
    opener.setProgram(QStandardPaths::findExecutable(QStringLiteral("xdg-open")));
    opener.setArguments({QString::fromStdString(url)});
    opener.setStandardInputFile(QProcess::nullDevice());
    opener.setStandardOutputFile(QProcess::nullDevice());
    opener.setStandardErrorFile(QProcess::nullDevice());
    return opener.startDetached();
}

bool open(const std::string& url, Answers& answers) {
    if (canOpen(url, answers) && start(url)) return true;
    Complain("window", url + ": no program on this machine opens it");
    return false;
}

} // namespace

UIApplication::Opener DesktopOpener() {
    const auto answers = std::make_shared<Answers>();
    return {[answers](const std::string& url) { return canOpen(url, *answers); },
            [answers](const std::string& url) { return open(url, *answers); }};
}

} // namespace tallyforge

#include "window/URLOpener.h"

#include <QProcess>
#include <QStandardPaths>
#include <QString>

#include <algorithm>

namespace tallyforge {

namespace {

constexpr int kLongestQuestion = 2000; // milliseconds

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

bool canOpen(const std::string& url) {
    const std::string scheme = schemeOf(url);
    if (scheme.empty() || QStandardPaths::findExecutable(QStringLiteral("xdg-open")).isEmpty()) return false;
    return isForBrowsers(scheme) || someProgramTakes(scheme);
}

bool open(const std::string& url) {
    if (!canOpen(url)) return false;
    QProcess opener;
    opener.setProgram(QStandardPaths::findExecutable(QStringLiteral("xdg-open")));
    opener.setArguments({QString::fromStdString(url)});
    opener.setStandardInputFile(QProcess::nullDevice());
    opener.setStandardOutputFile(QProcess::nullDevice());
    opener.setStandardErrorFile(QProcess::nullDevice());
    return opener.startDetached();
}

} // namespace

UIApplication::Opener DesktopOpener() {
    return {canOpen, open};
}

} // namespace tallyforge

#include "window/RunWindow.h"

#include "coregraphics/Canvas.h"
#include "foundation/Dispatch.h"
#include "rastergraphics/RasterGraphics.h"
#include "rastergraphics/ToolkitRuntimeFolder.h"
#include "settings_app/SettingsApp.h"
#include "uikit/UIDevice.h"
#include "window/OutsideChanges.h"
#include "window/SettingsWindow.h"
#include "window/URLOpener.h"
#include "window/WindowIcon.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>

namespace tallyforge {

namespace {

/// The window draws itself and only pixels: neither a desktop's look nor its graphics card's libraries are of
/// use, and loading them takes longer than everything else.
void keepToolkitSmall() {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORMTHEME")) qputenv("QT_QPA_PLATFORMTHEME", "generic");
    if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION")) qputenv("QT_XCB_GL_INTEGRATION", "none");
}

/// What the toolkit remarks on its surroundings is of no use to anyone here; what it cannot go on without is.
void sayOnlyWhatCounts(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type == QtCriticalMsg || type == QtFatalMsg)
        std::fprintf(stderr, "tallyforge: window: %s\n", message.toLocal8Bit().constData());
}

/// The screen at one unit a point, smaller where the display has no room for it.
QSize firstSize(const CGSize& points) {
    const QScreen* const display = QGuiApplication::primaryScreen();
    if (!display) return {int(points.width), int(points.height)};
    constexpr double kShareForTheWindow = 0.92; // the rest is for its frame
    const QSize room = display->availableSize();
    const double factor = std::min({1.0, kShareForTheWindow * room.width() / points.width,
                                    kShareForTheWindow * room.height() / points.height});
    return {std::max(1, int(points.width * factor)), std::max(1, int(points.height * factor))};
}

} // namespace

int RunWindow(WindowOptions options) {
    keepToolkitSmall();
    qInstallMessageHandler(sayOnlyWhatCounts);
    std::string words[] = {"tallyforge", "-platform", options.display.platform};
    char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    int count = qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") ? 3 : 1;
    auto folder = std::make_unique<const ToolkitRuntimeFolder>();
    QGuiApplication application(count, arguments);
    folder.reset();
    options.display.connection.reset();
    QGuiApplication::setApplicationName(QStringLiteral("tallyforge"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Tallyforge"));
    QGuiApplication::setDesktopFileName(QStringLiteral("tallyforge"));

    static const MonotonicClock clock;
    MainQueue::main().setClock(&clock);
    UIDevice::currentDevice().setUserInterfaceIdiom(options.pad ? UIUserInterfaceIdiomPad
                                                                : UIUserInterfaceIdiomPhone);
    UIApplication::sharedApplication().setOpener(DesktopOpener());
    const CGSize points = UIScreen::mainScreen().size();
    const QSize size = firstSize(points);
    const QScreen* const display = QGuiApplication::primaryScreen();
    UIScreen::mainScreen().setScale(std::min(size.width() / points.width, size.height() / points.height) *
                                    (display ? display->devicePixelRatio() : 1));

    SettingsApp app;
    SettingsWindow window(app, clock);
    window.setTitle(QStringLiteral("Tallyforge"));
    window.setIcon(WindowIcon());
    window.setMinimumSize({int(points.width / 2), int(points.height / 2)});
    window.resize(size);
    window.show();

    // Not before the first frame.
    std::unique_ptr<OutsideChanges> outside;
    QTimer::singleShot(0, &window, [&] {
        outside = std::make_unique<OutsideChanges>([&window] { window.settingsChangedOutside(); });
        window.settingsChangedOutside(); // what has changed until now
    });
    const int status = QGuiApplication::exec();
    MainQueue::main().clear();
    MainQueue::main().setClock(nullptr);
    return status;
}

} // namespace tallyforge

#include "window/SettingsWindow.h"

#include "foundation/Dispatch.h"
#include "quartzcore/CADisplayLink.h"
#include "quartzcore/Presentation.h"
#include "settings/Settings.h"
#include "uikit/UIDevice.h"
#include "uikit/UITextField.h"
#include "window/Keys.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>
#include <QTouchEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

/// What a notch of a wheel moves, in points: about a row and a half.
constexpr double kNotch = 60;
constexpr double kNotchUnits = 120;

void layOutAgain(UIView& view) {
    view.setNeedsLayout();
    for (const auto& subview : view.subviews())
        layOutAgain(*subview);
}

} // namespace

SettingsWindow::SettingsWindow(SettingsApp& app, const Clock& clock)
    : app_(app), clock_(clock), picture_(*this, app.size()),
      frames_(
          clock, [this] { frame(); }, [this] { runJobs(); }) {
    MainQueue::main().setWakeUp([this] {
        if (!working_) frames_.followMainQueue();
    });
    CADisplayLink::setWakeUp([this] {
        if (!working_) settle();
    });
    frames_.followMainQueue();
}

SettingsWindow::~SettingsWindow() {
    MainQueue::main().setWakeUp({});
    CADisplayLink::setWakeUp({});
}

void SettingsWindow::settingsChangedOutside() {
    working_ = true;
    app_.settingsChangedOutside();
    app_.step();
    settle();
}

void SettingsWindow::runJobs() {
    working_ = true;
    app_.step();
    settle();
}

// Whatever has happened: the next frame and the next job.
void SettingsWindow::settle() {
    working_ = false;
    tellInputMethod();
    frames_.followMainQueue();
    if (!isExposed()) return; // who is shown again makes a frame
    if (app_.animating() || shownRevision_ != app_.layer().revision()) frames_.askForFrame();
}

void SettingsWindow::frame() {
    if (!isExposed()) return;
    working_ = true;
    refit();
    FrameTrace::Frame times;
    times.begun = clock_.nanoseconds();
    app_.step();
    times.stepped = clock_.nanoseconds();
    shownRevision_ = app_.layer().revision();
    const auto painted = picture_.paint(app_.layer(), CACurrentMediaTime());
    times.painted = clock_.nanoseconds();
    picture_.show(painted);
    times.shown = clock_.nanoseconds();
    trace_.frame(times, painted);
    settle();
}

// Hairlines are as wide as a pixel, and images are chosen or made for one scale.
void SettingsWindow::refit() {
    if (!picture_.fit()) return;
    if (const QScreen* const display = screen()) frames_.setFramesPerSecond(display->refreshRate());
    UIScreen& device = UIScreen::mainScreen();
    if (device.scale() == picture_.scale()) return;
    device.setScale(picture_.scale());
    layOutAgain(app_.window());
    app_.screenScaleChanged();
}

void SettingsWindow::exposeEvent(QExposeEvent*) {
    if (!isExposed()) return frames_.forgetFrame();
    picture_.showAll();
    frames_.forgetFrame();
    frame();
}

void SettingsWindow::resizeEvent(QResizeEvent*) {
    if (isExposed()) frames_.askForFrame();
}

bool SettingsWindow::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::InputMethod:
        composeText(static_cast<QInputMethodEvent&>(*event));
        return true;
    case QEvent::InputMethodQuery:
        answerInputMethod(static_cast<QInputMethodQueryEvent&>(*event));
        return true;
    default:
        return QWindow::event(event);
    }
}

// Events carry the display's time. How far it is from ours is learnt from the event that came fastest.
int64_t SettingsWindow::timeOf(quint64 milliseconds) {
    const int64_t now = clock_.nanoseconds();
    if (milliseconds == 0) return now;
    const auto stamp = int64_t(milliseconds) * 1'000'000;
    constexpr int64_t kClockHasJumped = 2'000'000'000;
    const int64_t apart = now - stamp;
    if (!eventClock_ || apart < *eventClock_ || apart - *eventClock_ > kClockHasJumped) eventClock_ = apart;
    return std::min(stamp + *eventClock_, now);
}

void SettingsWindow::touch(UITouchPhase phase, const QPointF& at, quint64 milliseconds) {
    trace_.input(clock_.nanoseconds());
    touchedAt_ = at;
    touching_ = phase == UITouchPhase::began || phase == UITouchPhase::moved;
    working_ = true;
    app_.window().sendTouch({phase, picture_.pointAt(at), timeOf(milliseconds)});
    app_.step();
    settle();
}

void SettingsWindow::cancelTouch() {
    if (touching_) touch(UITouchPhase::cancelled, touchedAt_, 0);
    finger_.reset();
}

void SettingsWindow::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && !touching_)
        touch(UITouchPhase::began, event->position(), event->timestamp());
}

void SettingsWindow::mouseMoveEvent(QMouseEvent* event) {
    if (!touching_ || finger_) return;
    // A button that was let go where nobody could see it.
    if (!(event->buttons() & Qt::LeftButton)) return cancelTouch();
    touch(UITouchPhase::moved, event->position(), event->timestamp());
}

void SettingsWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && touching_ && !finger_)
        touch(UITouchPhase::ended, event->position(), event->timestamp());
}

void SettingsWindow::touchEvent(QTouchEvent* event) {
    event->accept(); // or it comes again as a mouse
    if (event->type() == QEvent::TouchCancel) {
        if (finger_) cancelTouch();
        return;
    }
    for (const QEventPoint& point : event->points()) {
        switch (point.state()) {
        case QEventPoint::Pressed:
            if (touching_) break;
            finger_ = point.id();
            touch(UITouchPhase::began, point.position(), event->timestamp());
            break;
        case QEventPoint::Updated:
            if (finger_ == point.id()) touch(UITouchPhase::moved, point.position(), event->timestamp());
            break;
        case QEventPoint::Released:
            if (finger_ != point.id()) break;
            touch(UITouchPhase::ended, point.position(), event->timestamp());
            finger_.reset();
            break;
        default:
            break;
        }
    }
}

void SettingsWindow::wheelEvent(QWheelEvent* event) {
    // X servers do not count the pixels of a turn reliably.
    const bool exact = !event->pixelDelta().isNull() && QGuiApplication::platformName() != "xcb";
    const double units = picture_.scale() / devicePixelRatio(); // of the window a point
    const double down =
        exact ? event->pixelDelta().y() / units : event->angleDelta().y() / kNotchUnits * kNotch;
    if (down == 0 || !std::isfinite(down)) return;
    trace_.input(clock_.nanoseconds());
    working_ = true;
    app_.window().scrollBy(picture_.pointAt(event->position()), -down,
                           exact ? UIWindow::Turn::exact : UIWindow::Turn::notch);
    app_.step();
    settle();
}

void SettingsWindow::keyPressEvent(QKeyEvent* event) {
    if (ClosesWindow(*event)) {
        close();
        return;
    }
    trace_.input(clock_.nanoseconds());
    working_ = true;
    bool used = false;
    if (app_.window().editedField() && WritesText(*event))
        used = app_.window().insertText(event->text().toStdString());
    else if (const auto key = ScreenKey(*event))
        used = app_.window().sendKey(*key);
    if (!used) event->ignore();
    app_.step();
    settle();
}

void SettingsWindow::focusOutEvent(QFocusEvent*) {
    cancelTouch();
}

void SettingsWindow::composeText(const QInputMethodEvent& event) {
    working_ = true;
    UITextField* field = app_.window().editedField();
    if (field) field->setMarkedText({});
    if (!event.commitString().isEmpty()) app_.window().insertText(event.commitString().toStdString());
    field = app_.window().editedField(); // what was inserted may have ended it
    if (field) field->setMarkedText(event.preeditString().toStdString());
    app_.step();
    settle();
}

void SettingsWindow::answerInputMethod(QInputMethodQueryEvent& event) const {
    UITextField* const field = app_.window().editedField();
    const Qt::InputMethodQueries asked = event.queries();
    if (asked & Qt::ImEnabled) event.setValue(Qt::ImEnabled, field != nullptr);
    if (field && (asked & Qt::ImCursorRectangle))
        event.setValue(Qt::ImCursorRectangle, picture_.rectInWindow(field->caretRectInWindow()));
    if (field && (asked & (Qt::ImCursorPosition | Qt::ImAnchorPosition))) {
        const auto before = QString::fromUtf8(field->text().data(),
                                              qsizetype(std::min(field->caret(), field->text().size())));
        event.setValue(Qt::ImCursorPosition, before.size());
        event.setValue(Qt::ImAnchorPosition, before.size());
    }
    if (field && (asked & Qt::ImSurroundingText))
        event.setValue(Qt::ImSurroundingText, QString::fromStdString(field->text()));
    if (asked & Qt::ImHints) event.setValue(Qt::ImHints, int(Qt::ImhNone));
    event.accept();
}

void SettingsWindow::tellInputMethod() {
    UITextField* const field = app_.window().editedField();
    QInputMethod* const method = QGuiApplication::inputMethod();
    if (composed_.lock().get() != field) {
        method->reset(); // what is half composed does not go into another field
        composed_.reset();
        if (field) composed_ = field->weak_from_this();
        caret_ = field ? field->caretRectInWindow() : CGRect{};
        method->update(Qt::ImQueryAll);
    } else if (field && field->caretRectInWindow() != caret_) {
        caret_ = field->caretRectInWindow();
        method->update(Qt::ImQueryInput);
    }
}

} // namespace tallyforge

#pragma once

#include "foundation/Clock.h"
#include "settings_app/SettingsApp.h"
#include "window/FrameClock.h"
#include "window/FrameTrace.h"
#include "window/ScreenPicture.h"

#include <QWindow>

#include <optional>

class QInputMethodEvent;
class QInputMethodQueryEvent;

namespace tallyforge {

/// The window that shows the Settings app and hands it what fingers, mouse and keys do.
class SettingsWindow final : public QWindow {
  public:
    SettingsWindow(SettingsApp& app, const Clock& clock);
    ~SettingsWindow() override;

    /// The settings may have been changed by others.
    void settingsChangedOutside();

  protected:
    bool event(QEvent* event) override;
    void exposeEvent(QExposeEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void touchEvent(QTouchEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    void frame();
    void runJobs();
    void settle();
    void refit();
    void touch(UITouchPhase phase, const QPointF& at, quint64 milliseconds);
    void cancelTouch();
    int64_t timeOf(quint64 milliseconds);
    void composeText(const QInputMethodEvent& event);
    void answerInputMethod(QInputMethodQueryEvent& event) const;
    void tellInputMethod();

    SettingsApp& app_;
    const Clock& clock_;
    ScreenPicture picture_;
    FrameClock frames_;
    FrameTrace trace_;
    std::optional<uint64_t> shownRevision_;
    bool working_ = false; // the app is at it and will be looked after when it is done

    bool touching_ = false;
    std::optional<int> finger_; // that touches; nothing: the mouse
    QPointF touchedAt_;
    std::optional<int64_t> eventClock_; // nanoseconds from the events' clock to ours

    std::weak_ptr<const UIView> composed_; // the field that the input method was told of
    CGRect caret_;
};

} // namespace tallyforge

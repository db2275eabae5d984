#include "window/Keys.h"

#include <QKeyEvent>

namespace tallyforge {

namespace {

constexpr Qt::KeyboardModifiers kCommands = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;

} // namespace

std::optional<UIKey> ScreenKey(const QKeyEvent& event) {
    if (event.modifiers() & kCommands) return std::nullopt;
    switch (event.key()) {
    case Qt::Key_Up:
        return UIKey::up;
    case Qt::Key_Down:
        return UIKey::down;
    case Qt::Key_Left:
        return UIKey::left;
    case Qt::Key_Right:
        return UIKey::right;
    case Qt::Key_Tab:
        return event.modifiers() & Qt::ShiftModifier ? UIKey::backTab : UIKey::tab;
    case Qt::Key_Backtab:
        return UIKey::backTab;
    case Qt::Key_Space:
        return UIKey::space;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return UIKey::enter;
    case Qt::Key_Escape:
    case Qt::Key_Back:
        return UIKey::escape;
    case Qt::Key_Home:
        return UIKey::home;
    case Qt::Key_End:
        return UIKey::end;
    case Qt::Key_PageUp:
        return UIKey::pageUp;
    case Qt::Key_PageDown:
        return UIKey::pageDown;
    case Qt::Key_Backspace:
        return UIKey::backspace;
    case Qt::Key_Delete:
        return UIKey::forwardDelete;
    default:
        return std::nullopt;
    }
}

bool ClosesWindow(const QKeyEvent& event) {
    return event.modifiers() == Qt::ControlModifier && (event.key() == Qt::Key_Q || event.key() == Qt::Key_W);
}

bool WritesText(const QKeyEvent& event) {
    // The right Alt key of many keyboards reports itself as Control and Alt at once and writes letters.
    const Qt::KeyboardModifiers held = event.modifiers() & kCommands;
    const bool command = held && held != (Qt::ControlModifier | Qt::AltModifier);
    return !command && !event.text().isEmpty() && event.text().front().isPrint();
}

} // namespace tallyforge

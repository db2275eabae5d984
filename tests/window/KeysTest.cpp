#include "window/Keys.h"

#include "coregraphics/Canvas.h"
#include "rastergraphics/RasterGraphics.h"

#include <QKeyEvent>

#include <gtest/gtest.h>

namespace tallyforge {

namespace {

QKeyEvent pressed(int key, Qt::KeyboardModifiers held = Qt::NoModifier, const char* text = "") {
    return QKeyEvent(QEvent::KeyPress, key, held, QString::fromUtf8(text));
}

TEST(WindowKeys, AreThoseOfTheScreens) {
    Graphics::install(MakeRasterGraphics()); // brings along what the leak checker must know of the toolkit
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_Up)), UIKey::up);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_Down)), UIKey::down);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_Left)), UIKey::left);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_Right)), UIKey::right);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_Tab)), UIKey::tab);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_Tab, Qt::ShiftModifier)), UIKey::backTab);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_Backtab, Qt::ShiftModifier)), UIKey::backTab);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_Space, {}, " ")), UIKey::space);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_Return)), UIKey::enter);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_Enter, Qt::KeypadModifier)), UIKey::enter);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_Escape)), UIKey::escape);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_Home)), UIKey::home);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_End)), UIKey::end);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_PageUp)), UIKey::pageUp);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_PageDown)), UIKey::pageDown);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_Backspace)), UIKey::backspace);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_Delete)), UIKey::forwardDelete);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_A, {}, "a")), std::nullopt);
    EXPECT_EQ(ScreenKey(pressed(Qt::Key_F1)), std::nullopt);
}

TEST(WindowKeys, WithCommandKeysAreLeftAlone) {
    for (const Qt::KeyboardModifier held : {Qt::ControlModifier, Qt::AltModifier, Qt::MetaModifier})
        EXPECT_EQ(ScreenKey(pressed(Qt::Key_Left, held)), std::nullopt);
}

TEST(WindowKeys, CloseTheWindow) {
    EXPECT_TRUE(ClosesWindow(pressed(Qt::Key_Q, Qt::ControlModifier)));
    EXPECT_TRUE(ClosesWindow(pressed(Qt::Key_W, Qt::ControlModifier)));
    EXPECT_FALSE(ClosesWindow(pressed(Qt::Key_Q, {}, "q")));
    EXPECT_FALSE(ClosesWindow(pressed(Qt::Key_Q, Qt::ControlModifier | Qt::ShiftModifier)));
    EXPECT_FALSE(ClosesWindow(pressed(Qt::Key_Escape)));
}

TEST(WindowKeys, WriteText) {
    EXPECT_TRUE(WritesText(pressed(Qt::Key_A, {}, "a")));
    EXPECT_TRUE(WritesText(pressed(Qt::Key_A, Qt::ShiftModifier, "A")));
    EXPECT_TRUE(WritesText(pressed(Qt::Key_Space, {}, " ")));
    EXPECT_TRUE(WritesText(pressed(Qt::Key_unknown, {}, "\u00E9")));
    EXPECT_TRUE(WritesText(pressed(Qt::Key_At, Qt::ControlModifier | Qt::AltModifier, "@")));
    EXPECT_FALSE(WritesText(pressed(Qt::Key_A, Qt::ControlModifier, "\x01")));
    EXPECT_FALSE(WritesText(pressed(Qt::Key_A, Qt::ControlModifier, "a")));
    EXPECT_FALSE(WritesText(pressed(Qt::Key_Return, {}, "\r")));
    EXPECT_FALSE(WritesText(pressed(Qt::Key_Backspace, {}, "\b")));
    EXPECT_FALSE(WritesText(pressed(Qt::Key_Delete, {}, "\x7F")));
    EXPECT_FALSE(WritesText(pressed(Qt::Key_Left)));
}

} // namespace

} // namespace tallyforge

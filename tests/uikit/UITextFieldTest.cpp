// Text fields: editing by characters as people see them, and no waking up when nobody edits.
#include "ControlFixture.h"

#include "uikit/UITextField.h"

namespace tallyforge::test {
namespace {

class UITextFieldTest : public ControlFixture {
  protected:
    UITextFieldTest() {
        window_->addSubview(field_);
        record(*field_, events_);
    }
    void keys(std::initializer_list<UIKey> pressed) {
        for (const UIKey key : pressed)
            EXPECT_TRUE(field_->pressKey(key));
    }
    // Whether the caret shows: it is the only thing of this colour.
    bool caretShows() {
        const auto image = picture();
        for (const uint32_t pixel : image->pixels()) {
            if ((pixel & 0xFFFFFFU) == 0x007AFFU) return true;
        }
        return false;
    }
    std::shared_ptr<UITextField> field_ = std::make_shared<UITextField>(CGRectMake(50, 100, 200, 26));
    Events events_;
};

TEST_F(UITextFieldTest, BeginsEmpty) {
    EXPECT_EQ(field_->text(), "");
    EXPECT_EQ(field_->caret(), 0U);
    EXPECT_FALSE(field_->editing());
    EXPECT_FALSE(field_->pressKey(UIKey::left));
}

TEST_F(UITextFieldTest, TypesAtTheCaret) {
    field_->beginEditing();
    field_->insertText("My theme");
    EXPECT_EQ(field_->text(), "My theme");
    EXPECT_EQ(field_->caret(), 8U);
    keys({UIKey::home, UIKey::right, UIKey::right});
    field_->insertText("!");
    EXPECT_EQ(field_->text(), "My! theme");
    EXPECT_EQ(field_->caret(), 3U);
    keys({UIKey::backspace, UIKey::forwardDelete});
    EXPECT_EQ(field_->text(), "Mytheme");
    keys({UIKey::end, UIKey::left, UIKey::backspace});
    EXPECT_EQ(field_->text(), "Mythee");
    EXPECT_EQ(field_->caret(), 5U);
    EXPECT_EQ(events_, (Events{"editing", "editing", "editing", "editing", "editing"}));
}

TEST_F(UITextFieldTest, TheEndsHold) {
    field_->beginEditing();
    keys({UIKey::backspace, UIKey::forwardDelete, UIKey::left, UIKey::right});
    EXPECT_TRUE(events_.empty());
    field_->setText("ab");
    EXPECT_EQ(field_->caret(), 2U);
    keys({UIKey::right, UIKey::forwardDelete, UIKey::home, UIKey::left, UIKey::backspace});
    EXPECT_EQ(field_->text(), "ab");
    EXPECT_EQ(field_->caret(), 0U);
    EXPECT_TRUE(events_.empty());
}

TEST_F(UITextFieldTest, MovesAndDeletesWholeCharacters) {
    const std::string accented = "e\u0301";                                  // two code points, one character
    const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467"; // five, one
    field_->beginEditing();
    field_->setText("a" + accented + family + "z");
    keys({UIKey::left});
    EXPECT_EQ(field_->caret(), 1 + accented.size() + family.size());
    keys({UIKey::left});
    EXPECT_EQ(field_->caret(), 1 + accented.size());
    keys({UIKey::left});
    EXPECT_EQ(field_->caret(), 1U);
    keys({UIKey::forwardDelete});
    EXPECT_EQ(field_->text(), "a" + family + "z");
    keys({UIKey::right, UIKey::backspace});
    EXPECT_EQ(field_->text(), "az");
}

TEST_F(UITextFieldTest, AnAccentTypedBehindALetterJoinsIt) {
    field_->beginEditing();
    field_->insertText("ae");
    field_->insertText("\u0301");
    EXPECT_EQ(field_->caret(), 4U);
    keys({UIKey::left});
    EXPECT_EQ(field_->caret(), 1U);
}

TEST_F(UITextFieldTest, WithoutGraphicsCodePointsAreCharacters) {
    Graphics::install(nullptr);
    field_->beginEditing();
    field_->insertText("a\u00E4\U0001F600");
    keys({UIKey::left});
    EXPECT_EQ(field_->caret(), 3U);
    keys({UIKey::backspace});
    EXPECT_EQ(field_->text(), "a\U0001F600");
    keys({UIKey::forwardDelete, UIKey::home, UIKey::forwardDelete});
    EXPECT_EQ(field_->text(), "");
    field_->layoutIfNeeded();
}

TEST_F(UITextFieldTest, LeavesOutWhatIsNoText) {
    field_->insertText(std::string_view("a\0b\tc\nd\r\x7F", 9));
    EXPECT_EQ(field_->text(), "abcd");
    field_->setText("\x1B[0mx\u2028y\u0085z");
    EXPECT_EQ(field_->text(), "[0mxyz");
    field_->setText("a\xFF\xC3(\xE2\x82"
                    "b\xED\xA0\x80"
                    "c\xF0\x9F\x98");
    EXPECT_EQ(field_->text(), "a(bc");
    field_->insertText("\n");
    EXPECT_EQ(field_->text(), "a(bc");
    field_->setMarkedText("\n\xFF");
    EXPECT_EQ(field_->markedText(), "");
}

TEST_F(UITextFieldTest, MarkedTextIsNoPartOfTheText) {
    field_->beginEditing();
    field_->setText("ab");
    keys({UIKey::left});
    const CGRect before = field_->caretRectInWindow();
    field_->setMarkedText("にほ");
    EXPECT_EQ(field_->text(), "ab");
    EXPECT_EQ(field_->markedText(), "にほ");
    EXPECT_EQ(field_->caret(), 1U);
    EXPECT_GT(field_->caretRectInWindow().origin.x, before.origin.x + 20) << "the caret stands behind it";
    field_->insertText("日本");
    EXPECT_EQ(field_->text(), "a日本b");
    EXPECT_EQ(field_->markedText(), "");
    EXPECT_EQ(field_->caret(), 7U);
    field_->setMarkedText("x");
    field_->setMarkedText("");
    EXPECT_EQ(field_->markedText(), "");
    field_->setMarkedText("x");
    field_->endEditing();
    EXPECT_EQ(field_->markedText(), "");
    EXPECT_EQ(field_->text(), "a日本b");
}

TEST_F(UITextFieldTest, UnderlinesMarkedText) {
    field_->beginEditing();
    field_->setMarkedText("mmmmm");
    // A black line of at least 20 points below the text, where without marked text there is none.
    const auto longestBlackRun = [&] {
        const auto image = picture();
        int longest = 0;
        for (int y = 228; y < 252; ++y) {
            for (int x = 0, run = 0; x < image->width(); ++x) {
                run = (image->pixel(x, y) & 0xFFFFFFU) == 0 ? run + 1 : 0;
                longest = std::max(longest, run);
            }
        }
        return longest;
    };
    EXPECT_GT(longestBlackRun(), 40);
    field_->insertText("mmmmm");
    EXPECT_LT(longestBlackRun(), 40);
}

TEST_F(UITextFieldTest, ATapPutsTheCaretAtTheNearestBoundary) {
    field_->setText("iiiiWWWW");
    // The text begins 6 points from the left side.
    const auto x = [](std::string_view text) {
        return 56 + Graphics::current()->measureText(text, UIFont::systemFontOfSize(14).face()).width;
    };
    tap({x("iiii") + 1, 113});
    EXPECT_TRUE(field_->editing());
    EXPECT_EQ(field_->caret(), 4U);
    tap({x("iiiiWW") - 2, 113});
    EXPECT_EQ(field_->caret(), 6U);
    tap({51, 113});
    EXPECT_EQ(field_->caret(), 0U);
    tap({240, 113});
    EXPECT_EQ(field_->caret(), 8U);
    EXPECT_EQ(window_->editedField(), field_.get());
}

TEST_F(UITextFieldTest, LongTextScrollsSoThatTheCaretShows) {
    field_->beginEditing();
    std::string text;
    for (int i = 0; i < 40; ++i)
        text += "long ";
    field_->insertText(text);
    CGRect caret = field_->caretRectInWindow();
    EXPECT_GT(caret.origin.x, 230);
    EXPECT_LE(CGRectGetMaxX(caret), 244.5);
    EXPECT_TRUE(caretShows());
    keys({UIKey::home});
    EXPECT_NEAR(field_->caretRectInWindow().origin.x, 56, 0.5);
    tap({100, 113});
    EXPECT_LT(field_->caret(), 20U);
    keys({UIKey::end});
    tap({100, 113});
    EXPECT_GT(field_->caret(), text.size() - 50) << "the end is what is shown";
    // Deleting brings the hidden start back instead of leaving the right side empty.
    keys({UIKey::end});
    for (size_t i = 0; i < 150; ++i)
        EXPECT_TRUE(field_->pressKey(UIKey::backspace));
    EXPECT_GT(field_->caretRectInWindow().origin.x, 230);
    field_->setText("x");
    EXPECT_LT(field_->caretRectInWindow().origin.x, 70);
}

TEST_F(UITextFieldTest, TheCaretBlinksEveryHalfSecond) {
    EXPECT_FALSE(caretShows());
    field_->beginEditing();
    EXPECT_TRUE(caretShows());
    pass(0.51);
    EXPECT_FALSE(caretShows());
    pass(0.5);
    EXPECT_TRUE(caretShows());
    pass(0.3);
    field_->insertText("a"); // solid for half a second from here
    pass(0.4);
    EXPECT_TRUE(caretShows());
    pass(0.15);
    EXPECT_FALSE(caretShows());
}

TEST_F(UITextFieldTest, NothingWaitsWhenNobodyEdits) {
    EXPECT_FALSE(MainQueue::main().nextDeadline());
    field_->beginEditing();
    for (int i = 0; i < 100; ++i)
        field_->insertText("a");
    ASSERT_TRUE(MainQueue::main().nextDeadline());
    field_->endEditing();
    EXPECT_FALSE(caretShows());
    pass(0.6);
    EXPECT_FALSE(MainQueue::main().nextDeadline());
    field_->beginEditing();
    pass(2);
    EXPECT_TRUE(MainQueue::main().nextDeadline());
    field_->removeFromSuperview();
    pass(0.6);
    EXPECT_FALSE(MainQueue::main().nextDeadline());
}

TEST_F(UITextFieldTest, WithoutAWindowItIsEditedAllTheSame) {
    auto field = std::make_shared<UITextField>(CGRectMake(0, 0, 100, 26));
    field->beginEditing();
    EXPECT_TRUE(field->editing());
    field->insertText("name");
    EXPECT_EQ(field->text(), "name");
    EXPECT_FALSE(MainQueue::main().nextDeadline());
}

TEST_F(UITextFieldTest, EndsWithAJobWaiting) {
    field_->beginEditing();
    field_->removeFromSuperview();
    field_.reset();
    pass(1);
    EXPECT_FALSE(MainQueue::main().nextDeadline());
    EXPECT_EQ(window_->editedField(), nullptr);
}

TEST_F(UITextFieldTest, OnlyOneIsEditedAtATime) {
    auto other = std::make_shared<UITextField>(CGRectMake(50, 200, 200, 26));
    window_->addSubview(other);
    field_->beginEditing();
    other->beginEditing();
    EXPECT_FALSE(field_->editing());
    EXPECT_EQ(window_->editedField(), other.get());
    EXPECT_TRUE(window_->insertText("x"));
    EXPECT_EQ(other->text(), "x");
    EXPECT_EQ(field_->text(), "");
    EXPECT_TRUE(window_->sendKey(UIKey::backspace));
    EXPECT_EQ(other->text(), "");
}

TEST_F(UITextFieldTest, TheKeyboardsFocusBeginsAndTakesAwayEditing) {
    auto button = std::make_shared<UIControl>(CGRectMake(50, 200, 100, 44));
    window_->addSubview(button);
    field_->beginEditing();
    EXPECT_TRUE(window_->sendKey(UIKey::tab));
    EXPECT_EQ(window_->focusedView(), button.get());
    EXPECT_FALSE(field_->editing());
    EXPECT_TRUE(window_->sendKey(UIKey::tab));
    EXPECT_EQ(window_->focusedView(), field_.get());
    EXPECT_TRUE(field_->editing());
}

TEST_F(UITextFieldTest, DisabledItTakesNothing) {
    field_->beginEditing();
    field_->setEnabled(false);
    EXPECT_FALSE(field_->editing());
    field_->insertText("x");
    field_->setMarkedText("y");
    tap({100, 113});
    field_->beginEditing();
    EXPECT_FALSE(field_->editing());
    EXPECT_EQ(field_->text(), "");
    EXPECT_EQ(field_->markedText(), "");
}

TEST_F(UITextFieldTest, ShowsAPlaceholderWhereThereIsNoText) {
    const auto darkest = [&] {
        const auto image = picture();
        uint32_t least = 255;
        for (const uint32_t pixel : image->pixels())
            least = std::min(least, pixel & 255U);
        return least;
    };
    EXPECT_EQ(darkest(), 255U);
    field_->setPlaceholder("Name");
    EXPECT_EQ(field_->accessibilityLabel(), "Name");
    EXPECT_LT(darkest(), 250U);
    EXPECT_GT(darkest(), 180U) << "grey, not black";
    field_->setText("A");
    EXPECT_LT(darkest(), 100U);
    EXPECT_EQ(field_->accessibilityLabel(), "A");
}

TEST_F(UITextFieldTest, HoldsTwoThousandBytesOfWholeCharacters) {
    field_->beginEditing();
    field_->setText(std::string(20000, 'm'));
    EXPECT_EQ(field_->text().size(), 2000U);
    EXPECT_TRUE(caretShows());
    tap({100, 113});
    EXPECT_GT(field_->caret(), 1950U);
    field_->setText(std::string(1997, 'm'));
    field_->setMarkedText("にほ");
    EXPECT_EQ(field_->markedText(), "に");
    field_->insertText("にほ");
    EXPECT_EQ(field_->text().size(), 2000U);
    field_->setText(std::string(1998, 'm'));
    field_->insertText("に");
    EXPECT_EQ(field_->text().size(), 1998U);
    field_->insertText("ab");
    field_->insertText("c");
    EXPECT_EQ(field_->text().substr(1998), "ab");
}

} // namespace
} // namespace tallyforge::test

// How the screens lie on the display: no text cut, nothing on top of anything else, nothing outside.

#include "AppFixture.h"

#include "cli/Screen.h"
#include "preview/PreviewCell.h"
#include "quartzcore/TextLayout.h"
#include "uikit/UIControl.h"
#include "uikit/UIImageView.h"
#include "uikit/UISegmentedControl.h"
#include "uikit/UITableView.h"

#include <gtest/gtest-spi.h>

#include <algorithm>
#include <cmath>

namespace tallyforge::test {
namespace {

constexpr CGFloat kSlack = 0.01; // points, for sums of fractions
constexpr CGFloat kPhoneWidth = 375;

CGRect inWindow(const UIView& view) {
    return view.convertRectToView(view.bounds(), nullptr);
}

std::string shown(const CGRect& r) {
    return "(" + std::to_string(r.origin.x) + ", " + std::to_string(r.origin.y) + ", " +
           std::to_string(r.size.width) + " x " + std::to_string(r.size.height) + ")";
}

bool within(const CGRect& inner, const CGRect& outer) {
    return inner.origin.x >= outer.origin.x - kSlack && inner.origin.y >= outer.origin.y - kSlack &&
           CGRectGetMaxX(inner) <= CGRectGetMaxX(outer) + kSlack &&
           CGRectGetMaxY(inner) <= CGRectGetMaxY(outer) + kSlack;
}

bool overlap(const CGRect& a, const CGRect& b) {
    return a.origin.x < CGRectGetMaxX(b) - kSlack && b.origin.x < CGRectGetMaxX(a) - kSlack &&
           a.origin.y < CGRectGetMaxY(b) - kSlack && b.origin.y < CGRectGetMaxY(a) - kSlack;
}

/// What stands on the screen: a text with the room that its letters take, or a control or picture.
struct Thing {
    std::string name;
    CGRect place;
    const UITableViewCell* row = nullptr;
    const UIControl* control = nullptr; // that it is part of
};

struct Variant {
    const char* name;
    bool pad;
    std::optional<CGSize> size;
};

class LayoutTest : public AppTest, public testing::WithParamInterface<Variant> {
  protected:
    /// Looks at the screen in front; the window is high enough for all of its rows.
    void expectInOrder(SettingsStage& stage, const std::string& name) {
        SCOPED_TRACE(name);
        stage.app().step();
        things_.clear();
        collect(stage.app().window(), nullptr, nullptr);
        EXPECT_GT(things_.size(), 2U);
        const CGFloat width = stage.app().size().width;
        for (size_t i = 0; i < things_.size(); ++i) {
            const Thing& a = things_[i];
            EXPECT_GE(a.place.origin.x, -kSlack) << a.name;
            EXPECT_LE(CGRectGetMaxX(a.place), width + kSlack) << a.name;
            EXPECT_TRUE(!a.row || within(a.place, inWindow(*a.row))) << a.name << shown(a.place);
            for (size_t j = i + 1; j < things_.size(); ++j) {
                const Thing& b = things_[j];
                const bool partsOfOne = a.control && a.control == b.control;
                EXPECT_TRUE(partsOfOne || !overlap(a.place, b.place))
                    << a.name << shown(a.place) << " and " << b.name << shown(b.place);
            }
        }
        expectRowsInOrder(stage);
        looked_ += things_.size();
    }
    size_t looked_ = 0;
    bool longValues_ = false; // values that no row has room for

  private:
    void collect(const UIView& view, const UITableViewCell* row, const UIControl* control) {
        if (view.hidden()) return;
        if (const auto* cell = dynamic_cast<const UITableViewCell*>(&view)) row = cell;
        const auto* own = dynamic_cast<const UIControl*>(&view);
        if (own && !control) {
            control = own;
            things_.push_back({own->className(), inWindow(view), row, own});
        }
        if (const auto* label = dynamic_cast<const UILabel*>(&view); label && !label->text().empty())
            addText(*label, row, control);
        if (const auto* image = dynamic_cast<const UIImageView*>(&view); image && image->image() && !control)
            things_.push_back({"picture", inWindow(view), row, nullptr});
        if (dynamic_cast<const PreviewCell*>(&view)) return; // its drawing has its own rules
        for (const auto& subview : view.subviews())
            collect(*subview, row, control);
    }
    void addText(const UILabel& label, const UITableViewCell* row, const UIControl* control) {
        const CGSize room = label.bounds().size;
        auto lines = CALayOutText(label.text(), label.font().face(), room, label.numberOfLines() != 1);
        EXPECT_TRUE(longValues_ || !lines->truncated) << label.text() << shown(label.frame());
        ASSERT_FALSE(lines->lines.empty()) << label.text() << shown(label.frame());
        CGFloat widest = 0;
        for (const auto& line : lines->lines)
            widest = std::max(widest, line.width);
        const CGFloat height = static_cast<CGFloat>(lines->lines.size()) * lines->lineHeight;
        EXPECT_LE(widest, room.width + kSlack) << label.text();
        EXPECT_LE(height, room.height + 1) << label.text(); // rounded up to whole points
        CGRect place = inWindow(label);
        if (label.textAlignment() == NSTextAlignmentCenter) place.origin.x += (room.width - widest) / 2;
        if (label.textAlignment() == NSTextAlignmentRight) place.origin.x += room.width - widest;
        place.origin.y += std::max(0.0, (room.height - height) / 2);
        place.size = {widest, std::min(height, room.height)};
        things_.push_back({"'" + label.text() + "'", place, row, control});
    }
    static void expectRowsInOrder(SettingsStage& stage) {
        const UITableView& table = *Screen(stage.app()).table();
        CGFloat y = 0;
        for (int section = 0; section < table.numberOfSections(); ++section) {
            for (int row = 0; row < table.numberOfRowsInSection(section); ++row) {
                const CGRect rect = table.rectForRowAtIndexPath({section, row});
                if (row == 0)
                    EXPECT_GE(rect.origin.y, y);
                else
                    EXPECT_EQ(rect.origin.y, y);
                EXPECT_GE(rect.size.height, 44);
                EXPECT_EQ(rect.origin.x + CGRectGetMaxX(rect), table.bounds().size.width) << "in the middle";
                y = CGRectGetMaxY(rect);
                auto cell = table.cellForRowAtIndexPath({section, row});
                ASSERT_NE(cell, nullptr) << section << ' ' << row;
                EXPECT_EQ(inWindow(*cell).size, rect.size);
            }
        }
        EXPECT_GE(table.contentSize().height, y);
    }
    std::vector<Thing> things_;

  protected:
    /// All panes and all lists of choices.
    void lookAtEverything() {
        const Variant& variant = GetParam();
        for (const std::string& pane : allPanes()) {
            auto stage = makeStage(variant.pad, variant.size);
            ASSERT_TRUE(stage.app().openPane(pane));
            expectInOrder(stage, pane);
            for (const Dictionary& row : rowsOfList(pane)) {
                if (text(row, "cell") != "PSLinkListCell" && text(row, "cell") != "PSLinkCell") continue;
                auto specifier = list(stage).specifierForID(text(row, "id"));
                auto next = list(stage).controllerForSpecifier(specifier);
                if (!next) continue;
                // The picker's sliders have their size; narrower screens than a phone's cut them.
                const bool picker = !dynamic_cast<PSListController*>(next.get());
                if (picker && stage.app().size().width < kPhoneWidth) continue;
                stage.app().navigation().pushViewController(std::move(next), false);
                expectInOrder(stage, pane + " > " + text(row, "label"));
                stage.app().navigation().popViewController(false);
            }
        }
        EXPECT_GT(looked_, 500U);
    }
    /// The domain with every number at one end of its row, and every choice the one with the longest name.
    Dictionary extremes(const char* end) const {
        Dictionary domain;
        for (const std::string& pane : kMarkPanes) {
            for (const Dictionary& row : rowsOfList(pane)) {
                const std::string key = text(row, "key");
                if (text(row, "cell") == "PSSliderCell")
                    domain.setObjectForKey(PropertyList::floatNumber(row.objectForKey(end)->floatValue()),
                                           key);
                if (text(row, "cell") != "PSLinkListCell") continue;
                const auto& titles = *row.objectForKey("validTitles")->asArray();
                auto longest =
                    std::max_element(titles.begin(), titles.end(), [](const auto& a, const auto& b) {
                        return a.asString()->size() < b.asString()->size();
                    });
                domain.setObjectForKey((*row.objectForKey("validValues")
                                             ->asArray())[static_cast<size_t>(longest - titles.begin())],
                                       key);
            }
        }
        return domain;
    }
};

INSTANTIATE_TEST_SUITE_P(Screens, LayoutTest,
                         testing::Values(Variant{"phone", false, CGSize{375, 3400}},
                                         Variant{"pad", true, CGSize{768, 3400}},
                                         Variant{"narrow", false, CGSize{320, 3400}},
                                         Variant{"wide", false, CGSize{414, 3400}}),
                         [](const auto& which) { return std::string(which.param.name); });

// The measure itself: what is wrong is seen.
TEST_P(LayoutTest, CutOverlappingAndStrayTextsAreSeen) {
    auto stage = makeStage(GetParam().pad, GetParam().size);
    ASSERT_TRUE(stage.app().openPane("badge"));
    auto row = cell<PSSliderTableCell>(stage, "badgesize");
    ASSERT_NE(row, nullptr);
    auto faults = [&] {
        testing::TestPartResultArray seen;
        testing::ScopedFakeTestPartResultReporter reporter(
            testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &seen);
        expectInOrder(stage, "badge");
        return seen.size();
    };
    EXPECT_EQ(faults(), 0);
    auto label = std::make_shared<UILabel>(CGRectMake(10, 10, 200, 22));
    row->contentView()->addSubview(label);
    label->setText("on the title"); // and on nothing else
    EXPECT_EQ(faults(), 1);
    label->setFrame(CGRectMake(110, 10, 3, 22));
    EXPECT_GE(faults(), 1) << "no room";
    label->setText("cut in the middle");
    label->setFrame(CGRectMake(80, 2, 60, 22));
    EXPECT_EQ(faults(), 1);
    label->setText("a");
    label->setFrame(CGRectMake(row->bounds().size.width - 3, 14, 30, 22));
    EXPECT_GE(faults(), 1) << "beyond the row";
    label->removeFromSuperview();
    EXPECT_EQ(faults(), 0);
}

TEST_P(LayoutTest, WithNothingSet) {
    lookAtEverything();
}

TEST_P(LayoutTest, WithTheLeastValuesAndTheLongestNames) {
    device.writeDomain(extremes("min"));
    lookAtEverything();
}

TEST_P(LayoutTest, WithTheMostValues) {
    device.writeDomain(extremes("max"));
    lookAtEverything();
}

TEST_P(LayoutTest, WithFractionsOfManyDigits) {
    Dictionary domain;
    for (const std::string& pane : kMarkPanes) {
        for (const Dictionary& row : rowsOfList(pane)) {
            if (text(row, "cell") == "PSSliderCell")
                domain.setObjectForKey(
                    PropertyList::floatNumber(-(row.objectForKey("max")->floatValue() - 0.12345678F)),
                    text(row, "key"));
        }
    }
    device.writeDomain(domain);
    lookAtEverything();
}

// Others may write what no row can show; the rows stay in order all the same.
TEST_P(LayoutTest, WithNumbersBeyondAllBounds) {
    Dictionary domain;
    for (const std::string& pane : kMarkPanes) {
        for (const Dictionary& row : rowsOfList(pane)) {
            if (text(row, "cell") == "PSSliderCell")
                domain.setObjectForKey(PropertyList::doubleNumber(-3.25e37), text(row, "key"));
        }
    }
    device.writeDomain(domain);
    longValues_ = true;
    lookAtEverything();
}

} // namespace
} // namespace tallyforge::test

#include "PreviewFixture.h"

#include "foundation/NSKeyedArchiver.h"
#include "settings/Settings.h"
#include "uikit/UIFont.h"
#include "uikit/UIGestureRecognizer.h"

#include <cstdio>
#include <limits>

namespace tallyforge::test {
namespace {

class PreviewCellTest : public PreviewFixture {
  protected:
    void configure(const PropertyList& icon) const {
        Dictionary configuration;
        configuration.setObjectForKey(icon, "configpreviewicon");
        device_.write(kConfigFile,
                      NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(configuration)));
    }
    void configure(int icon) const { configure(PropertyList::integer(icon)); }
    void removeApp(const std::string& name) const {
        std::filesystem::remove_all(device_.file("/Applications/" + name + ".app"));
    }
    /// What another reader finds in the configuration file.
    std::string configuration() const {
        const std::string script = "import plistlib, sys\n"
                                   "a = plistlib.load(open(sys.argv[1], 'rb'))\n"
                                   "o = a['$objects']\n"
                                   "r = o[a['$top']['root'].data]\n"
                                   "keys = [o[k.data] for k in r['NS.keys']]\n"
                                   "values = [o[v.data] for v in r['NS.objects']]\n"
                                   "print(a['$archiver'], a['$version'], o[r['$class'].data]['$classname'],\n"
                                   "      list(zip(keys, [(type(v).__name__, v) for v in values])))\n";
        device_.write("/read.py", {script.begin(), script.end()});
        const std::string command = "python3 '" + device_.file("/read.py").string() + "' '" +
                                    device_.file(kConfigFile).string() + "' 2>&1";
        std::string output;
        if (FILE* pipe = popen(command.c_str(), "r")) {
            char buffer[512];
            while (fgets(buffer, sizeof buffer, pipe))
                output += buffer;
            pclose(pipe);
        }
        return output;
    }
    static std::string written(int icon) {
        return "NSKeyedArchiver 100000 NSMutableDictionary [('configpreviewicon', ('int', " +
               std::to_string(icon) + "))]\n";
    }
    void writeLargeIcon(int side) const {
        writePicture("/Applications/AppStore.app/AppIcon60x60.png", *filled(side, side, kIconColor));
        writePicture("/Applications/AppStore.app/AppIcon76x76.png", *filled(side, side, kIconColor));
    }
};

TEST_F(PreviewCellTest, IsMadeForASpecifier) {
    auto specifier = std::make_shared<PSSpecifier>();
    PreviewCell made;
    ASSERT_TRUE(made.initWithSpecifier(specifier));
    EXPECT_EQ(made.style(), 0);
    EXPECT_EQ(made.reuseIdentifier(), "PreviewCell");
    EXPECT_EQ(made.specifier(), specifier);
    EXPECT_STREQ(made.className(), "PreviewCell");
    PreviewCell other;
    ASSERT_TRUE(other.initWithStyleReuseIdentifierSpecifier(3, "another", specifier));
    EXPECT_EQ(other.style(), 3);
    EXPECT_EQ(other.reuseIdentifier(), "another");
}

TEST_F(PreviewCellTest, TheIconLiesInTheCellWithNameAndMarksOnIt) {
    auto made = cell();
    ASSERT_EQ(made->subviews().size(), 1u);
    EXPECT_EQ(made->subviews()[0], made->iconView());
    EXPECT_TRUE(isRect(made->iconView()->frame(), 170, 45, 60, 60)) << "centred at 320 / 1.6 and 75";
    const auto& children = made->iconView()->subviews();
    ASSERT_EQ(children.size(), 3u);
    EXPECT_EQ(children[0], made->iconLabel());
    EXPECT_EQ(children[1], made->badgeView());
    EXPECT_EQ(children[2], made->closeBoxView());
    ASSERT_EQ(made->iconLabel()->subviews().size(), 1u);
    EXPECT_EQ(made->iconLabel()->subviews()[0], made->newDotView());
}

TEST_F(PreviewCellTest, TheNameStandsUnderTheIcon) {
    auto made = cell();
    const UILabel& name = *made->iconLabel();
    EXPECT_EQ(name.text(), "App Store");
    EXPECT_EQ(name.font(), UIFont::systemFontOfSize(12));
    EXPECT_EQ(name.textColor(), UIColor::blackColor());
    EXPECT_EQ(name.textAlignment(), NSTextAlignmentCenter);
    EXPECT_EQ(name.backgroundColor().value_or(UIColor::clearColor()).alpha(), 0);
    CGFloat width = NSStringBoundingSize("App Store", {400, 20}, UIFont::systemFontOfSize(12)).width;
    EXPECT_GT(width, 30);
    EXPECT_TRUE(isPoint(name.center(), 30, 44 + 45));
    EXPECT_TRUE(isRect(name.bounds(), 0, 0, width, 44));
}

TEST_F(PreviewCellTest, ATabletHasLargerIconsAndLetters) {
    be(UIUserInterfaceIdiomPad, 2);
    auto made = cell();
    EXPECT_TRUE(isRect(made->iconView()->frame(), 162, 37, 76, 76));
    EXPECT_EQ(made->iconLabel()->font(), UIFont::systemFontOfSize(14));
    EXPECT_TRUE(isPoint(made->iconLabel()->center(), 38, 89));
    CGFloat width = NSStringBoundingSize("App Store", {400, 20}, UIFont::systemFontOfSize(14)).width;
    EXPECT_TRUE(isRect(made->iconLabel()->bounds(), 0, 0, width, 44));
}

TEST_F(PreviewCellTest, ADeviceThatDoesNotAnswerIsAPhone) {
    UIDevice::currentDevice().setUserInterfaceIdiom(std::nullopt);
    auto made = cell();
    EXPECT_TRUE(isRect(made->iconView()->frame(), 170, 45, 60, 60));
    EXPECT_EQ(made->iconLabel()->font(), UIFont::systemFontOfSize(12));
}

TEST_F(PreviewCellTest, AllIsLaidOutByTheSizeAtCreation) {
    auto made = cell({}, 400, 90);
    EXPECT_EQ(made->size(), CGSizeMake(400, 90));
    EXPECT_TRUE(isPoint(made->iconView()->center(), 250, 75));
    EXPECT_TRUE(isPoint(made->iconLabel()->center(), 30, 135));
    EXPECT_EQ(made->iconLabel()->bounds().size.height, 90);
    made->setFrame(CGRectMake(0, 0, 700, 200));
    made->layoutSubviews();
    made->tap();
    EXPECT_EQ(made->size(), CGSizeMake(400, 90));
    EXPECT_TRUE(isPoint(made->iconView()->center(), 250, 75));
}

TEST_F(PreviewCellTest, StockIconsInTheirOrder) {
    const char* names[] = {"App Store", "Messages", "Mail", "Preferences", "Cydia"};
    const char* apps[] = {"AppStore", "MobileSMS", "MobileMail", "Preferences", "Cydia"};
    for (auto idiom : {UIUserInterfaceIdiomPhone, UIUserInterfaceIdiomPad}) {
        be(idiom, 2);
        for (int icon = 0; icon < 5; ++icon) {
            // One colour for each, so that the picture tells which it is.
            std::string path = std::string("/Applications/") + apps[icon] + ".app/" +
                               (icon == 4 ? "Icon-" : "AppIcon") +
                               (idiom == UIUserInterfaceIdiomPad ? (icon == 4 ? "76" : "76x76")
                                                                 : (icon == 4 ? "60" : "60x60")) +
                               ".png";
            uint32_t color = 0xFF000000u | uint32_t(icon * 40 + 10) << 16 | uint32_t(idiom) * 200;
            int side = idiom == UIUserInterfaceIdiomPad ? 76 : 60;
            writePicture(path, *filled(side, side, color));
            configure(icon);
            auto made = cell();
            EXPECT_EQ(made->currentIcon(), icon);
            EXPECT_EQ(made->selectedAppName(), names[icon]);
            EXPECT_EQ(made->iconLabel()->text(), names[icon]);
            EXPECT_TRUE(isPixel(made->appIconImage().bitmap()->pixel(30, 30), color));
        }
    }
}

TEST_F(PreviewCellTest, WithoutAConfigurationItIsTheAppStoreAndATapShowsMessages) {
    auto made = cell();
    EXPECT_EQ(made->currentIcon(), 0);
    EXPECT_FALSE(std::filesystem::exists(device_.file(kConfigFile)));
    made->tap();
    EXPECT_EQ(made->currentIcon(), 1);
    EXPECT_EQ(made->selectedAppName(), "Messages");
    EXPECT_EQ(made->iconLabel()->text(), "Messages");
    EXPECT_EQ(configuration(), written(1));
}

TEST_F(PreviewCellTest, TapsGoRound) {
    auto made = cell();
    ASSERT_EQ(made->gestureRecognizers().size(), 1u);
    auto tap = std::dynamic_pointer_cast<UITapGestureRecognizer>(made->gestureRecognizers()[0]);
    ASSERT_TRUE(tap);
    for (int icon : {1, 2, 3, 4, 0, 1}) {
        tap->fire();
        EXPECT_EQ(made->currentIcon(), icon);
        EXPECT_EQ(configuration(), written(icon));
    }
    EXPECT_EQ(cell()->currentIcon(), 1) << "the choice is remembered";
}

TEST_F(PreviewCellTest, ATapBuildsTheIconAnewAndReadsTheDomainAgain) {
    auto made = cell();
    auto before = made->iconView();
    auto badgeBefore = made->badgeView();
    domain({{"badgepos", number(0)}});
    made->tap();
    EXPECT_EQ(before->superview(), nullptr);
    EXPECT_NE(made->iconView(), before);
    ASSERT_EQ(made->subviews().size(), 1u);
    EXPECT_EQ(made->subviews()[0], made->iconView());
    EXPECT_EQ(made->iconView()->subviews().size(), 3u);
    EXPECT_NE(made->badgeView(), badgeBefore);
    EXPECT_TRUE(isRect(made->badgeView()->frame(), -9, -9, 30, 20));
}

TEST_F(PreviewCellTest, ATapWritesTheConfigurationWhole) {
    Dictionary configuration;
    configuration.setObjectForKey(PropertyList::integer(2), "configpreviewicon");
    configuration.setObjectForKey(PropertyList::string("stays not"), "another");
    device_.write(kConfigFile,
                  NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(configuration)));
    cell()->tap();
    EXPECT_EQ(this->configuration(), written(3));
}

TEST_F(PreviewCellTest, AConfigurationThatCannotBeWrittenIsDoneWithout) {
    device_.write("/var/mobile/Documents/Tallyforge", {'f', 'i', 'l', 'e'});
    auto made = cell();
    made->tap();
    EXPECT_EQ(made->currentIcon(), 1);
    EXPECT_EQ(made->iconLabel()->text(), "Messages");
    EXPECT_EQ(cell()->currentIcon(), 0) << "and lasts only as long as the cell";
}

TEST_F(PreviewCellTest, UnreadableConfigurationsAreTheFirstIcon) {
    auto iconWith = [this](const std::vector<uint8_t>& bytes) {
        device_.write(kConfigFile, bytes);
        return cell()->currentIcon();
    };
    EXPECT_EQ(iconWith({}), 0);
    EXPECT_EQ(iconWith({'g', 'a', 'r', 'b', 'a', 'g', 'e'}), 0);
    EXPECT_EQ(iconWith(NSKeyedArchiver::archivedDataWithRootObject(PropertyList::string("3"))), 0);
    EXPECT_EQ(iconWith(NSKeyedArchiver::archivedDataWithRootObject(PropertyList::integer(3))), 0);
    EXPECT_EQ(iconWith(NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary({}))), 0);
    Dictionary plain;
    plain.setObjectForKey(PropertyList::integer(3), "configpreviewicon");
    EXPECT_EQ(iconWith(BinaryPropertyList::Serialize(PropertyList::dictionary(plain))), 0) << "no archive";
    auto cut = NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(plain));
    EXPECT_EQ(iconWith(cut), 3);
    cut.resize(cut.size() / 2);
    EXPECT_EQ(iconWith(cut), 0);
}

TEST_F(PreviewCellTest, ConfigurationsOfEitherDictionaryClassAndAnyNumber) {
    Dictionary dictionary;
    dictionary.setObjectForKey(PropertyList::integer(3), "configpreviewicon");
    device_.write(kConfigFile,
                  NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(dictionary),
                                                              ArchivedDictionaryClass::NSDictionary));
    EXPECT_EQ(cell()->currentIcon(), 3);
    configure(PropertyList::floatNumber(2.9f));
    EXPECT_EQ(cell()->currentIcon(), 2);
    configure(PropertyList::string("4"));
    EXPECT_EQ(cell()->currentIcon(), 4);
    configure(PropertyList::boolean(true));
    EXPECT_EQ(cell()->currentIcon(), 1);
}

TEST_F(PreviewCellTest, IndicesOutsideTheTableEndAtTheFirstIcon) {
    for (int icon :
         {5, 7, 1'000'000, std::numeric_limits<int>::max(), -1, -3, std::numeric_limits<int>::min()}) {
        configure(icon);
        auto made = cell();
        EXPECT_EQ(made->currentIcon(), 0) << icon;
        EXPECT_EQ(made->selectedAppName(), "App Store") << icon;
        EXPECT_TRUE(made->appIconImage());
    }
}

TEST_F(PreviewCellTest, AMissingIconIsSkipped) {
    removeApp("MobileMail");
    configure(2);
    auto made = cell();
    EXPECT_EQ(made->currentIcon(), 3);
    EXPECT_EQ(made->selectedAppName(), "Preferences");
    removeApp("Cydia");
    made->tap();
    EXPECT_EQ(made->currentIcon(), 0);
    EXPECT_EQ(made->selectedAppName(), "App Store");
    EXPECT_EQ(configuration(), written(4)) << "the choice was written before the icon was looked for";
}

TEST_F(PreviewCellTest, TheLastIconMissingGoesToTheFirst) {
    removeApp("Cydia");
    configure(4);
    EXPECT_EQ(cell()->selectedAppName(), "App Store");
    removeApp("AppStore");
    auto made = cell();
    EXPECT_EQ(made->currentIcon(), 1);
    EXPECT_EQ(made->selectedAppName(), "Messages");
    EXPECT_TRUE(made->appIconImage());
}

TEST_F(PreviewCellTest, MessagesIsNeverSkipped) {
    removeApp("Cydia");
    removeApp("AppStore");
    removeApp("MobileSMS");
    configure(4);
    auto made = cell();
    EXPECT_EQ(made->currentIcon(), 1);
    EXPECT_EQ(made->selectedAppName(), "Messages");
    EXPECT_FALSE(made->appIconImage());
    // The rest is there without it.
    ASSERT_TRUE(made->iconView());
    EXPECT_FALSE(made->iconView()->image());
    EXPECT_EQ(made->iconLabel()->text(), "Messages");
    EXPECT_TRUE(isPoint(made->iconView()->center(), 200, 75));
    EXPECT_TRUE(made->badgeView());
    EXPECT_TRUE(made->closeBoxView());
    EXPECT_TRUE(made->newDotView());
    made->tap();
    EXPECT_EQ(made->currentIcon(), 2);
    EXPECT_EQ(made->selectedAppName(), "Mail");
    EXPECT_TRUE(made->iconView()->image());
}

TEST_F(PreviewCellTest, LargeBitmapsAreShownAtTheExpectedSize) {
    const std::pair<int, CGFloat> phone[] = {{180, 60}, {120, 60}, {60, 60}, {61, 61}, {150, 75}, {40, 40}};
    for (auto [pixels, points] : phone) {
        writeLargeIcon(pixels);
        EXPECT_EQ(cell()->iconView()->bounds().size, CGSizeMake(points, points)) << pixels;
    }
    be(UIUserInterfaceIdiomPad, 2);
    const std::pair<int, CGFloat> tablet[] = {{152, 76}, {228, 76}, {76, 76}, {60, 60}, {180, 90}};
    for (auto [pixels, points] : tablet) {
        writeLargeIcon(pixels);
        EXPECT_EQ(cell()->iconView()->bounds().size, CGSizeMake(points, points)) << pixels;
    }
}

TEST_F(PreviewCellTest, TheIconIsRoundedAtTheScreensScale) {
    for (CGFloat scale : {1.0, 1.5, 2.0, 3.0}) {
        be(UIUserInterfaceIdiomPhone, scale);
        auto made = cell();
        const UIImage& image = made->iconView()->image();
        EXPECT_EQ(image.size(), CGSizeMake(60, 60));
        EXPECT_EQ(image.scale(), scale);
        auto at = [&](CGFloat x, CGFloat y) {
            return image.uprightBitmap()->pixel(int(x * scale), int(y * scale));
        };
        EXPECT_TRUE(isPixel(at(30, 30), kIconColor));
        // With a radius of 12 the corner's arc passes 3.5 from both edges.
        for (auto [x, y] :
             {std::pair(0.4, 0.4), std::pair(59.6, 0.4), std::pair(0.4, 59.6), std::pair(59.6, 59.6)})
            EXPECT_EQ(at(x, y), 0u);
        EXPECT_EQ(at(2, 2), 0u);
        EXPECT_TRUE(isPixel(at(5, 5), kIconColor));
        EXPECT_TRUE(isPixel(at(13, 0.4), kIconColor));
        EXPECT_TRUE(isPixel(at(0.4, 30), kIconColor));
    }
}

TEST_F(PreviewCellTest, AnAnnouncedChangeIsShown) {
    auto made = cell();
    auto icon = made->iconView();
    EXPECT_TRUE(isRect(made->badgeView()->frame(), 39, -9, 30, 20));
    domain({{"badgepos", number(0)}});
    made->reloadBadge();
    EXPECT_TRUE(isRect(made->badgeView()->frame(), 39, -9, 30, 20)) << "a mark reads the snapshot";
    NSNotificationCenter::defaultCenter().postNotificationName("reloadTallyforgePreviewNotify");
    EXPECT_TRUE(isRect(made->badgeView()->frame(), -9, -9, 30, 20));
    EXPECT_EQ(made->iconView(), icon) << "the icon stays";
    EXPECT_EQ(icon->subviews().size(), 3u);
    domain({});
    AnnounceSettingsChanged();
    EXPECT_TRUE(isRect(made->badgeView()->frame(), 39, -9, 30, 20));
}

TEST_F(PreviewCellTest, EveryCellThatLivesIsTold) {
    auto first = cell();
    auto second = cell();
    domain({{"badgepos", number(0)}});
    AnnounceSettingsChanged();
    EXPECT_TRUE(isRect(first->badgeView()->frame(), -9, -9, 30, 20));
    EXPECT_TRUE(isRect(second->badgeView()->frame(), -9, -9, 30, 20));
}

TEST_F(PreviewCellTest, ADestroyedCellIsToldNoMore) {
    auto made = cell({{"badgeanimtype", number(8)}});
    std::weak_ptr<PreviewCell> gone = made;
    std::weak_ptr<UIImageView> icon = made->iconView();
    made.reset();
    EXPECT_TRUE(gone.expired());
    EXPECT_TRUE(icon.expired());
    domain({{"badgepos", number(0)}});
    NSNotificationCenter::defaultCenter().postNotificationName("reloadTallyforgePreviewNotify");
    EXPECT_EQ(SettingNumber("badgepos", 2), 2) << "nobody took a new snapshot";
    advance(1);
}

TEST_F(PreviewCellTest, AnEmptyOrBrokenDomainIsAnEmptySnapshot) {
    auto made = cell({{"badgepos", number(0)}});
    std::filesystem::remove(device_.file("/var/mobile/Library/Preferences/com.quillon.tallyforge.plist"));
    made->realod();
    EXPECT_TRUE(isRect(made->badgeView()->frame(), 39, -9, 30, 20));
    device_.write("/var/mobile/Library/Preferences/com.quillon.tallyforge.plist", {'n', 'o'});
    made->realod();
    EXPECT_TRUE(isRect(made->badgeView()->frame(), 39, -9, 30, 20));
}

TEST_F(PreviewCellTest, TheStockDevice) {
    TestDevice stock;
    stock.furnish();
    for (auto idiom : {UIUserInterfaceIdiomPhone, UIUserInterfaceIdiomPad}) {
        be(idiom, 2);
        const CGFloat side = idiom == UIUserInterfaceIdiomPad ? 76 : 60;
        PreviewCell made;
        ASSERT_TRUE(made.initWithSpecifier(std::make_shared<PSSpecifier>()));
        for (const char* name : {"App Store", "Messages", "Mail", "Preferences", "Cydia"}) {
            EXPECT_EQ(made.selectedAppName(), name);
            EXPECT_EQ(made.iconView()->bounds().size, CGSizeMake(side, side));
            EXPECT_TRUE(isRect(made.badgeView()->frame(), side + 9 - 24, -9, 24, 24));
            EXPECT_EQ(made.closeBoxView()->bounds().size, CGSizeMake(24, 24));
            EXPECT_EQ(made.newDotView()->bounds().size, CGSizeMake(8, 8));
            ASSERT_EQ(made.closeBoxView()->subviews().size(), 4u);
            EXPECT_TRUE(isRect(made.closeBoxView()->subviews()[0]->frame(), -10.5, -10.5, 45, 45));
            made.tap();
        }
        EXPECT_EQ(made.currentIcon(), 0);
    }
    device_.use();
}

} // namespace
} // namespace tallyforge::test

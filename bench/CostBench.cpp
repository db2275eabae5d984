// How the cost grows with the work: themes in the folder, apps on the device, rows of a screen, pixels
// painted, tinted and made smaller. Prints SERIES <tab> HOW MANY <tab> SECONDS of the processor, the least of
// some runs.

#include "appselect/QuillonAppList.h"
#include "coregraphics/CGContext.h"
#include "mobileservices/UIAssetManager.h"
#include "peers/ManyApps.h"
#include "peers/ManyThemes.h"
#include "peers/PairedRuns.h"
#include "preferences/PSListController.h"
#include "preview/PreviewCell.h"
#include "preview/imaging/MarkImages.h"
#include "quartzcore/RenderServer.h"
#include "rastergraphics/RasterGraphics.h"
#include "themes/ThemeFiles.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace tallyforge::bench {

namespace {

void Print(const char* series, long amount, const std::function<void()>& work) {
    std::printf("%s\t%ld\t%.9g\n", series, amount, PairedRuns::secondsOf(work));
    std::fflush(stdout);
}

void Themes() {
    for (int count = 1; count <= 10'000; count *= 10) {
        const BenchDevice device;
        const auto files = WriteThemes(device, count);
        // What the system itself takes, to which the lists are held.
        Print("files opened and read", count, [&files] { ReadFiles(files); });
        Print("themes listed", count, [count] {
            Demand(ListThemes().themes.size() == static_cast<size_t>(count), "themes are missing");
        });
    }
}

void Apps() {
    for (int count = 1; count <= 10'000; count *= 10) {
        const BenchDevice device;
        InstallApps(device.root(), count);
        Print("apps catalogued", count, [count] {
            Demand(QuillonAppList::sharedApplicationList().allNonHiddenApplications().size() ==
                       static_cast<size_t>(count),
                   "apps are missing");
        });
    }
}

class LongScreen : public PSListController {
  public:
    std::string bundlePath() const override { return "/Library/PreferenceBundles/long.bundle/"; }
    const std::vector<PSSpecifierRef>& specifiers() override {
        if (specifiers_.empty()) specifiers_ = loadSpecifiersFromPlistNameTarget("longprefs", *this);
        return specifiers_;
    }
};

PropertyList ListOfRows(int count) {
    std::vector<PropertyList> rows;
    rows.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        rows.push_back(PropertyList::dictionary(Texts({{"cell", "PSSwitchCell"},
                                                       {"label", "Row " + std::to_string(i)},
                                                       {"key", "key" + std::to_string(i)},
                                                       {"defaults", "com.example.bench"}})));
    Dictionary list;
    list.setObjectForKey(PropertyList::array(std::move(rows)), "items");
    return PropertyList::dictionary(list);
}

void Rows() {
    // A screen takes no more than 1,024.
    for (int count = 1; count <= 1'000; count *= 10) {
        const BenchDevice device;
        WriteFile(device.root() + "/Library/PreferenceBundles/long.bundle/longprefs.plist",
                  BinaryPropertyList::Serialize(ListOfRows(count)));
        Print("rows of a screen opened", count, [count] {
            const auto screen = std::make_shared<LongScreen>();
            screen->view()->layoutIfNeeded();
            Demand(screen->specifiers().size() == static_cast<size_t>(count), "rows are missing");
        });
    }
}

std::shared_ptr<CGImage> Picture(int side) {
    auto image = std::make_shared<CGImage>(side, side);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            image->row(y)[x] = 0xFF000000U | static_cast<uint32_t>(x * 255 / side) << 16U |
                               static_cast<uint32_t>(y * 255 / side);
    return image;
}

void Pixels() {
    const BenchDevice device;
    std::filesystem::copy(TALLYFORGE_RESOURCES "/stock", device.root(),
                          std::filesystem::copy_options::recursive);
    auto cell = std::make_shared<PreviewCell>();
    cell->initWithSpecifier(std::make_shared<PSSpecifier>());
    cell->setFrame(CGRectMake(0, 0, 375, 150));
    for (int wanted = 1'000; wanted <= 10'000'000; wanted *= 10) {
        const double scale = std::sqrt(double(wanted) / (375 * 150));
        CGImage bitmap(static_cast<int>(std::lround(375 * scale)),
                       static_cast<int>(std::lround(150 * scale)));
        const long pixels = static_cast<long>(bitmap.width()) * bitmap.height();
        // What memory itself takes, to which the others are held.
        Print("pixels filled with a colour", pixels,
              [&] { std::fill_n(bitmap.row(0), pixels, 0xFFEFEFF4U); });
        auto canvas = Graphics::current()->makeCanvas(bitmap);
        Print("pixels of the preview painted", pixels, [&] {
            RenderServer::paint(*cell->layer(), 1, *canvas, CGAffineTransformMakeScale(scale, scale));
        });
    }
    for (const int side : {10, 32, 100, 316, 1000, 2000}) {
        const UIImage image = UIImage::imageWithCGImage(Picture(side), 1, UIImageOrientationUp);
        const long pixels = static_cast<long>(side) * side;
        const UIColor color = UIColor::colorWithRed(0.2, 0.3, 1, 1);
        Print("pixels tinted", pixels,
              [&] { Demand(TintImage(image, color, 0.65).size().width > 0, "no tint"); });
        Print("pixels made smaller", pixels,
              [&] { Demand(ResizeImage(image, side * 0.6, side * 0.6).size().width > 0, "no picture"); });
    }
}

} // namespace

} // namespace tallyforge::bench

// `cost_bench themes|apps|rows|pixels` measures only these.
int main(int count, char** words) {
    using namespace tallyforge;
    Graphics::install(MakeRasterGraphics());
    RegisterMobileServices();
    const std::string_view only = count > 1 ? words[1] : "";
    const auto wants = [&](std::string_view kind) { return only.empty() || only == kind; };
    if (wants("themes")) bench::Themes();
    if (wants("apps")) bench::Apps();
    if (wants("rows")) bench::Rows();
    if (wants("pixels")) bench::Pixels();
    return 0;
}

// Repainting the preview and a whole screen, beside the same on Cairo and Pango.

#include "CairoScene.h"
#include "PairedRuns.h"
#include "PictureDifference.h"
#include "Scenes.h"

#include "coregraphics/Canvas.h"
#include "quartzcore/RenderServer.h"

#include <algorithm>

namespace tallyforge {

namespace {

constexpr uint32_t kWhite = 0xFFFFFFFF;

/// Repaints everything, on a canvas of its own as every frame has one.
void repaint(const CALayer& layer, CGImage& bitmap) {
    auto canvas = Graphics::current()->makeCanvas(bitmap);
    RenderServer::paint(layer, 0, *canvas, kToPixels);
}

void measure(const PairedRuns& runs, const char* item, const CALayer& layer, int width, int height,
             CairoScene::Texts texts) {
    CGImage bitmap(width, height);
    std::fill_n(bitmap.row(0), bitmap.pixels().size(), kWhite);
    const DisplayList list = RecordDisplayList(layer, 0, kToPixels, width, height);
    CairoScene peer(list, texts, CairoScene::Pictures::upright);
    CairoScene keeper(list, texts, CairoScene::Pictures::all);

    repaint(layer, bitmap);
    peer.paint();
    const CGImage peerPicture = ImageFromCairoSurface(peer.surface());
    PairedRuns::remark(item, Describe(DifferenceOf(bitmap, peerPicture)));
    KeepPicture(bitmap, std::string(item) + "-ours");
    KeepPicture(peerPicture, std::string(item) + "-cairo");

    runs.measure(
        item, [&] { repaint(layer, bitmap); }, [&] { peer.paint(); });
    const double ours = PairedRuns::secondsOf([&] { repaint(layer, bitmap); });
    const double kept = PairedRuns::secondsOf([&] { keeper.paint(); });
    PairedRuns::remark(item, "with the turned marks' pixels kept too, Cairo takes " +
                                 PairedRuns::figure(kept * 1e6, 1) +
                                 " us: " + PairedRuns::figure(ours / kept, 2) + " of that");
}

void run(const PairedRuns& runs) {
    FurnishedDevice device;
    FurnishedDevice::set("badgeglowalpha", 80);
    {
        const PreviewScene scene;
        measure(runs, "repaint-preview", scene.layer(), kPreviewWidth, kPreviewHeight,
                CairoScene::Texts::glyphs);
    }
    SettingsStage stage(std::nullopt, kPixelsAPoint);
    if (!stage.app().openPane("badge")) std::abort();
    stage.app().step();
    measure(runs, "repaint-pane", stage.app().layer(), kScreenWidth, kScreenHeight,
            CairoScene::Texts::layouts);
}

} // namespace

} // namespace tallyforge

int main(int argc, char** argv) {
    tallyforge::run({argc, argv, "Repaints the preview and a whole screen, ours and on Cairo in turn."});
    return 0;
}

#include "Scenes.h"

#include "corefoundation/CFPreferences.h"
#include "coregraphics/Canvas.h"
#include "foundation/Dispatch.h"
#include "mobileservices/UIAssetManager.h"
#include "rastergraphics/RasterGraphics.h"
#include "settings/SettingsKeys.h"
#include "uikit/UIDevice.h"

namespace tallyforge {

FurnishedDevice::FurnishedDevice() {
    std::filesystem::copy(TALLYFORGE_RESOURCES "/stock", root(), std::filesystem::copy_options::recursive);
    Graphics::install(MakeRasterGraphics());
    RegisterMobileServices();
}

FurnishedDevice::~FurnishedDevice() {
    Graphics::install(nullptr);
}

void FurnishedDevice::set(std::string_view key, float value) {
    CFPreferencesSetAppValue(key, PropertyList::floatNumber(value), kSettingsDomain);
    CFPreferencesAppSynchronize(kSettingsDomain);
}

PreviewScene::PreviewScene() {
    MainQueue::main().setClock(&clock_);
    UIScreen::mainScreen().setScale(kPixelsAPoint);
    cell_ = std::make_shared<PreviewCell>();
    cell_->initWithSpecifier(std::make_shared<PSSpecifier>());
    cell_->setFrame({{0, 0}, {kPreviewWidth / kPixelsAPoint, kPreviewHeight / kPixelsAPoint}});
    cell_->layoutSubviews();
}

PreviewScene::~PreviewScene() {
    cell_.reset();
    MainQueue::main().clear();
    MainQueue::main().setClock(nullptr);
}

void PreviewScene::nextFrame() {
    MainQueue::main().runUntil(clock_, clock_.nanoseconds() + NSEC_PER_SEC / kFramesASecond);
}

double PreviewScene::seconds() const {
    return double(clock_.nanoseconds()) / NSEC_PER_SEC;
}

} // namespace tallyforge

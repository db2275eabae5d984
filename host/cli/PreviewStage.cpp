#include "cli/PreviewStage.h"

#include "cli/StagePicture.h"
#include "foundation/Dispatch.h"
#include "uikit/UIDevice.h"

#include <algorithm>
#include <cmath>

namespace tallyforge {

namespace {

constexpr CGFloat kPreviewHeight = 150; // of the preview's row in the panes

} // namespace

PreviewStage::PreviewStage(const std::optional<CGSize>& size, double scale) : scale_(scale) {
    MainQueue::main().setClock(&clock_);
    UIScreen::mainScreen().setScale(scale);
    cell_ = std::make_shared<PreviewCell>();
    if (size) cell_->setFrame({{0, 0}, *size});
    cell_->initWithSpecifier(std::make_shared<PSSpecifier>());

    CGFloat width = size ? size->width : UIScreen::mainScreen().size().width;
    cell_->setFrame(CGRectMake(0, 0, width, std::max(cell_->size().height, kPreviewHeight)));
    cell_->layoutSubviews();
}

PreviewStage::~PreviewStage() {
    cell_.reset();
    MainQueue::main().clear();
    MainQueue::main().setClock(nullptr);
}

void PreviewStage::runTo(double seconds) {
    MainQueue::main().runUntil(clock_, std::llround(seconds * static_cast<double>(NSEC_PER_SEC)));
}

double PreviewStage::time() const {
    return static_cast<double>(clock_.nanoseconds()) / NSEC_PER_SEC;
}

Result<std::shared_ptr<CGImage>> PreviewStage::picture() const {
    return StagePicture(*cell_->layer(), cell_->bounds().size, time(), scale_);
}

} // namespace tallyforge

#pragma once

#include "BenchDevice.h"
#include "cli/SettingsStage.h"
#include "foundation/Clock.h"
#include "preview/PreviewCell.h"

#include <memory>
#include <string_view>

namespace tallyforge {

/// A device furnished as a new one is, and the machine's drawing. There is one at a time.
class FurnishedDevice : public bench::BenchDevice {
  public:
    FurnishedDevice();
    ~FurnishedDevice();
    FurnishedDevice(const FurnishedDevice&) = delete;
    FurnishedDevice& operator=(const FurnishedDevice&) = delete;

    /// Before scenes are made.
    static void set(std::string_view key, float value);
};

/// What scenes are measured in.
inline constexpr int kPreviewWidth = 750;
inline constexpr int kPreviewHeight = 300;
inline constexpr int kScreenWidth = 750;
inline constexpr int kScreenHeight = 1334;
inline constexpr CGFloat kPixelsAPoint = 2;
inline constexpr int kFramesASecond = 60;
inline constexpr CGAffineTransform kToPixels{kPixelsAPoint, 0, 0, kPixelsAPoint, 0, 0};

/// The preview as it stands in the panes of a phone, on a clock at 0.
class PreviewScene {
  public:
    PreviewScene();
    ~PreviewScene();
    PreviewScene(const PreviewScene&) = delete;
    PreviewScene& operator=(const PreviewScene&) = delete;

    const PreviewCell& cell() const { return *cell_; }
    const CALayer& layer() const { return *cell_->layer(); }
    /// Lets the clock go on by a sixtieth of a second.
    void nextFrame();
    double seconds() const;

  private:
    VirtualClock clock_;
    std::shared_ptr<PreviewCell> cell_;
};

} // namespace tallyforge

#pragma once

#include "coregraphics/CGGeometry.h"
#include "uikit/UIColor.h"

#include <array>
#include <functional>
#include <memory>
#include <optional>

namespace tallyforge {

class UISlider;
class UIView;

// The tags by which the parts of the custom colour are found again.
inline constexpr int kRedSliderTag = 201;
inline constexpr int kGreenSliderTag = 202;
inline constexpr int kBlueSliderTag = 203;
inline constexpr int kSliderPanelTag = 204;
inline constexpr int kCustomCellTag = 205;
/// A slider's value stands in a label whose tag is the slider's and this.
inline constexpr int kSliderValueTagOffset = 10;

inline constexpr CGFloat kCustomRowHeight = 130;
/// Where the column of the values begins in the row.
inline constexpr CGFloat kSliderValuesLeft = 136;

struct SliderPanelActions {
    std::function<void()> sliderAction;        ///< one has been moved
    std::function<void()> sliderDidEndSliding; ///< one has been let go
};
/// The three sliders of a mixed colour, each from 0 to 255, with their values at their left.
std::shared_ptr<UIView> MakeSliderPanel(const UIColor& color, const SliderPanelActions& actions);

/// Red, green and blue below the view; nothing when one of them is missing.
std::optional<std::array<UISlider*, 3>> ColorSliders(UIView& within);
/// Has the labels show what the sliders stand at.
void ShowSliderValues(UIView& within);

} // namespace tallyforge

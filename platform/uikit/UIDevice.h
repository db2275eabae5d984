#pragma once

#include "coregraphics/CGGeometry.h"

#include <optional>

namespace tallyforge {

enum class UIUserInterfaceIdiom { phone = 0, pad = 1 };
inline constexpr auto UIUserInterfaceIdiomPhone = UIUserInterfaceIdiom::phone;
inline constexpr auto UIUserInterfaceIdiomPad = UIUserInterfaceIdiom::pad;

/// The kind of device that the program runs as.
class UIDevice {
  public:
    static UIDevice& currentDevice();

    /// Devices older than the tablet do not answer the question.
    bool respondsToUserInterfaceIdiom() const { return idiom_.has_value(); }
    UIUserInterfaceIdiom userInterfaceIdiom() const { return idiom_.value_or(UIUserInterfaceIdiomPhone); }
    bool isPad() const { return idiom_ == UIUserInterfaceIdiomPad; }
    /// Said by the host before anything is built.
    void setUserInterfaceIdiom(std::optional<UIUserInterfaceIdiom> idiom) { idiom_ = idiom; }

  private:
    std::optional<UIUserInterfaceIdiom> idiom_ = UIUserInterfaceIdiomPhone;
};

/// The device's screen.
class UIScreen {
  public:
    static UIScreen& mainScreen();

    /// Pixels a point.
    CGFloat scale() const { return scale_; }
    void setScale(CGFloat scale) { scale_ = scale; }
    /// Points: 375 x 667 on a phone, 768 x 1024 on a tablet, unless another size was set.
    CGSize size() const;
    void setSize(std::optional<CGSize> size) { size_ = size; }

  private:
    CGFloat scale_ = 2;
    std::optional<CGSize> size_;
};

} // namespace tallyforge

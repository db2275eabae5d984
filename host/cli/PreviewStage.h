#pragma once

#include "cli/Command.h"
#include "coregraphics/CGImage.h"
#include "foundation/Clock.h"
#include "foundation/Result.h"
#include "preview/PreviewCell.h"

#include <memory>

namespace tallyforge {

/// The preview cell by itself, on a virtual clock: its marks are built at time 0.
class PreviewStage {
  public:
    /// `size` is the cell's size at its creation, 320 x 44 unless given. Then it is sized as a pane does it:
    /// 150 points high (or higher, if it was made so), and as wide as the screen unless its size was given.
    PreviewStage(const std::optional<CGSize>& size, double scale);
    ~PreviewStage();

    /// Lets the main queue run up to that time in seconds, never back.
    void runTo(double seconds);
    double time() const;
    const PreviewCell& cell() const { return *cell_; }
    /// The cell as it is on screen at that moment; an error when it is under one pixel or over 4096 in a
    /// direction.
    Result<std::shared_ptr<CGImage>> picture() const;

  private:
    VirtualClock clock_;
    double scale_;
    std::shared_ptr<PreviewCell> cell_;
};

} // namespace tallyforge

#pragma once

#include "uikit/UITableViewCell.h"

#include <string>

namespace tallyforge {

/// A row of the colour picker: a swatch, a name, and what is stored for it below. The custom row has its
/// sliders beside them, which the texts keep clear of.
class SwatchCell final : public UITableViewCell {
  public:
    explicit SwatchCell(std::string reuseIdentifier);
    /// As new: no texts, picture, border, mark, tag or sliders; enabled.
    void clear();
    void showColor(const UIColor& color, bool bordered);
    void setTitleEnabled(bool enabled);
    void layoutSubviews() override;
};

} // namespace tallyforge

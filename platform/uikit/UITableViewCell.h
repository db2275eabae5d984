#pragma once

#include "uikit/UIView.h"

#include <string>

namespace tallyforge {

/// One row of a table. It is created 320 x 44 points large; the table that shows it sizes it later.
class UITableViewCell : public UIView {
  public:
    UITableViewCell();

    const char* className() const override { return "UITableViewCell"; }
    int style() const { return style_; }
    const std::string& reuseIdentifier() const { return reuseIdentifier_; }

  protected:
    /// The second half of making a cell; true when it succeeded.
    bool initWithStyleReuseIdentifier(int style, std::string reuseIdentifier);

  private:
    int style_ = 0;
    std::string reuseIdentifier_;
};

} // namespace tallyforge

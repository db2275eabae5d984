#include "uikit/UITableViewCell.h"

namespace tallyforge {

UITableViewCell::UITableViewCell() : UIView(CGRectMake(0, 0, 320, 44)) {
    setBackgroundColor(UIColor::whiteColor());
}

bool UITableViewCell::initWithStyleReuseIdentifier(int style, std::string reuseIdentifier) {
    style_ = style;
    reuseIdentifier_ = std::move(reuseIdentifier);
    return true;
}

} // namespace tallyforge

#pragma once

#include "uikit/UIImage.h"
#include "uikit/UIView.h"

#include <memory>
#include <optional>
#include <string>

namespace tallyforge {

class UIImageView;
class UILabel;

/// The platform's numbers. The styles differ in where the detail text stands: nowhere, at the right, in the
/// middle, below the title.
enum UITableViewCellStyle {
    UITableViewCellStyleDefault = 0,
    UITableViewCellStyleValue1 = 1,
    UITableViewCellStyleValue2 = 2,
    UITableViewCellStyleSubtitle = 3
};
enum class UITableViewCellAccessoryType { none = 0, disclosureIndicator = 1, checkmark = 3 };
enum class UITableViewCellSelectionStyle { none = 0, gray = 2 };

/// One row of a table. It is created 320 x 44 points large; the table that shows it sizes it later.
class UITableViewCell : public UIView {
  public:
    UITableViewCell();
    UITableViewCell(int style, std::string reuseIdentifier);
    ~UITableViewCell() override;

    const char* className() const override { return "UITableViewCell"; }
    int style() const { return style_; }
    const std::string& reuseIdentifier() const { return reuseIdentifier_; }

    /// Made when they are first asked for; a cell that draws itself has none of them.
    const std::shared_ptr<UIView>& contentView();
    UILabel& textLabel();
    UILabel& detailTextLabel();
    UIImageView& imageView();
    /// The texts without making the labels.
    std::string titleText() const;
    virtual std::string detailText() const;
    bool hasImageView() const { return imageView_ != nullptr; }

    UITableViewCellAccessoryType accessoryType() const { return accessoryType_; }
    void setAccessoryType(UITableViewCellAccessoryType type);
    /// At the right end instead of the accessory type's mark; nullptr removes it.
    void setAccessoryView(std::shared_ptr<UIView> view);
    const std::shared_ptr<UIView>& accessoryView() const { return accessoryView_; }
    UITableViewCellSelectionStyle selectionStyle() const { return selectionStyle_; }
    void setSelectionStyle(UITableViewCellSelectionStyle style) { selectionStyle_ = style; }

    bool highlighted() const { return highlighted_; }
    /// Grey at once; back within 0.3 seconds where animated.
    void setHighlighted(bool highlighted, bool animated = false);
    virtual void prepareForReuse();
    void layoutSubviews() override;

    /// The lines above and below, one pixel thick; said by the table.
    enum class Edge { none, inset, full };
    void setSeparators(Edge top, Edge bottom);
    /// How far texts stand from the left.
    CGFloat textInset() const;

    std::string accessibilityLabel() const override { return titleText(); }
    /// The table makes rows that can be chosen reachable by the keyboard.
    bool selectable() const { return selectable_; }
    void setSelectable(bool selectable) { selectable_ = selectable; }

  protected:
    /// The second half of making a cell; true when it succeeded.
    bool initWithStyleReuseIdentifier(int style, std::string reuseIdentifier);
    /// For laying out: the title's label, without asking for another layout; nullptr before it is made.
    UILabel* titleLabel() const { return textLabel_.get(); }

  private:
    CGSize shownImageSize() const;
    void layoutContent(CGFloat right);
    void layoutTexts(const CGRect& room);
    CGFloat layoutAccessory();
    void showLine(std::shared_ptr<UIView>& line, Edge edge, CGFloat y);

    int style_ = 0;
    std::string reuseIdentifier_;
    std::shared_ptr<UIView> contentView_;
    std::shared_ptr<UILabel> textLabel_;
    std::shared_ptr<UILabel> detailLabel_;
    std::shared_ptr<UIImageView> imageView_;
    std::shared_ptr<UIView> accessoryView_;
    std::shared_ptr<UIView> accessoryMark_;
    std::shared_ptr<UIView> topLine_, bottomLine_;
    std::shared_ptr<UIView> fading_;  // the pressed look on its way out
    std::optional<UIColor> released_; // while it is pressed: the background otherwise
    UITableViewCellAccessoryType accessoryType_ = UITableViewCellAccessoryType::none;
    UITableViewCellSelectionStyle selectionStyle_ = UITableViewCellSelectionStyle::gray;
    Edge topEdge_ = Edge::none, bottomEdge_ = Edge::none;
    bool highlighted_ = false;
    bool selectable_ = false;
};

} // namespace tallyforge

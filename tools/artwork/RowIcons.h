// The small pictures before the rows of the first settings screen: a white drawing on a plate of one colour.
#pragma once

#include <QImage>
#include <QString>
#include <vector>

namespace tallyforge {

inline constexpr double rowIconSide = 29;

struct RowIcon {
    QString stem;
    QImage (*draw)(int scale);
};

const std::vector<RowIcon>& rowIcons();

} // namespace tallyforge

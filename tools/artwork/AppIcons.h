// Which app bears which icon.
#pragma once

#include <QList>
#include <QString>

namespace tallyforge {

class Canvas;

struct AppIcon {
    QString folder;    ///< the app's folder, from the device root
    QString phoneName; ///< stem of the icon of 60 points
    QString padName;   ///< stem of the icon of 76 points
    void (*draw)(Canvas&);
};

/// The icons of all apps of the stock device. Throws std::runtime_error when the table names an unknown
/// drawing.
QList<AppIcon> appIcons();

} // namespace tallyforge

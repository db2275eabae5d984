#include "AppIcons.h"

#include "AppTable.h"
#include "Icons.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <stdexcept>

namespace tallyforge {

QList<AppIcon> appIcons() {
    const QHash<QString, void (*)(Canvas&)> drawings = {
        {"market", drawMarket},   {"petals", drawPetals},       {"letter", drawLetter},
        {"sliders", drawSliders}, {"parcels", drawParcels},     {"ledger", drawLedger},
        {"quarry", drawQuarry},   {"beacon", drawBeacon},       {"trace", drawTrace},
        {"loom", drawLoom},       {"metronome", drawMetronome}, {"pear", drawPear},
        {"lantern", drawLantern}, {"eclair", drawEclair},       {"cubes", drawCubes},
        {"tide", drawTide},       {"road", drawRoad},           {"weather", drawWeather},
        {"stars", drawStars},
    };
    QJsonParseError error;
    const QJsonDocument table = QJsonDocument::fromJson(appTableText, &error);
    if (!table.isArray()) throw std::runtime_error("the app table: " + error.errorString().toStdString());

    QList<AppIcon> icons;
    for (const auto& entry : table.array()) {
        const QJsonObject app = entry.toObject();
        const QString drawing = app["drawing"].toString();
        if (!drawings.contains(drawing)) {
            throw std::runtime_error("the app table: unknown drawing " + drawing.toStdString());
        }
        icons.append({app["folder"].toString(), app["phoneIcon"].toString("AppIcon60x60"),
                      app["padIcon"].toString("AppIcon76x76"), drawings[drawing]});
    }
    return icons;
}

} // namespace tallyforge

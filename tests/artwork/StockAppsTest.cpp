#include "StockFolder.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>
#include <set>

namespace tallyforge::test {

namespace {

struct IconFile {
    QString file;
    int pixels;
};

QList<IconFile> iconFiles(const QString& phone, const QString& pad) {
    return {{phone + ".png", 60},
            {phone + "@2x.png", 120},
            {phone + "@3x.png", 180},
            {pad + ".png", 76},
            {pad + "@2x.png", 152}};
}

/// The folders of all apps, from the device's root.
QStringList appFolders() {
    QStringList folders;
    for (const QString& top : {QString("Applications"), QString("var/containers/Bundle/Application")}) {
        QDirIterator entries(stockPath(top), {"*.app"}, QDir::Dirs, QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            folders.append(QDir(stockPath("")).relativeFilePath(entries.next()));
        }
    }
    folders.sort();
    return folders;
}

bool isUserApp(const QString& folder) {
    return folder.startsWith("var/");
}

void expectIcons(const QString& folder, const QString& phone, const QString& pad) {
    for (const IconFile& icon : iconFiles(phone, pad)) {
        SCOPED_TRACE((folder + "/" + icon.file).toStdString());
        QImage image(stockPath(folder + "/" + icon.file));
        ASSERT_EQ(image.size(), QSize(icon.pixels, icon.pixels));
        std::set<QRgb> colours;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                ASSERT_EQ(alphaAt(image, x, y), 255);
                colours.insert(image.pixel(x, y));
            }
        }
        EXPECT_GT(colours.size(), 100U);
    }
}

/// Every property list of the given name, read by Python's own reader: a list of objects with "path" and
/// "list".
QJsonArray readPropertyLists(const char* name) {
    const QString program =
        "import json,pathlib,plistlib,sys;"
        "root=pathlib.Path(sys.argv[1]);"
        "print(json.dumps([{'path':str(p.relative_to(root)),"
        "'list':plistlib.loads(p.read_bytes())} for p in sorted(root.rglob(sys.argv[2]))],"
        "default=str))";
    const CommandResult run = runCommand("python3 -c \"" + program + "\" '" + stockPath("") + "' " + name);
    EXPECT_EQ(run.status, 0) << run.output;
    return QJsonDocument::fromJson(QByteArray::fromStdString(run.output)).array();
}

} // namespace

TEST(StockApps, ThePreviewsAppsHaveTheirIcons) {
    for (const char* app : {"AppStore", "MobileSMS", "MobileMail", "Preferences"}) {
        expectIcons(QString("Applications/%1.app").arg(app), "AppIcon60x60", "AppIcon76x76");
    }
    expectIcons("Applications/Cydia.app", "Icon-60", "Icon-76");
}

TEST(StockApps, AllOtherAppsHaveIconsToo) {
    QStringList others = appFolders();
    others.removeAll("Applications/Cydia.app");
    ASSERT_GE(others.size(), 4 + 12);
    for (const QString& folder : others) {
        expectIcons(folder, "AppIcon60x60", "AppIcon76x76");
    }
}

TEST(StockApps, NoTwoAppsShareAnIcon) {
    std::set<QByteArray> pictures;
    const QStringList folders = appFolders();
    for (const QString& folder : folders) {
        QFile file(stockPath(folder + (folder.endsWith("Cydia.app") ? "/Icon-60.png" : "/AppIcon60x60.png")));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        pictures.insert(file.readAll());
    }
    EXPECT_EQ(pictures.size(), static_cast<std::size_t>(folders.size()));
}

TEST(StockApps, EveryAppSaysWhoItIsUnderANameOfItsOwn) {
    const QJsonArray lists = readPropertyLists("Info.plist");
    QStringList described;
    std::set<QString> identifiers;
    for (const QJsonValue& entry : lists) {
        const QString path = entry["path"].toString();
        SCOPED_TRACE(path.toStdString());
        described.append(QFileInfo(path).path());
        const QJsonObject info = entry["list"].toObject();
        EXPECT_TRUE(identifiers.insert(info["CFBundleIdentifier"].toString()).second);
        for (const char* key : {"CFBundleIdentifier", "CFBundleDisplayName", "CFBundleName",
                                "CFBundleShortVersionString", "CFBundleVersion"}) {
            EXPECT_FALSE(info[key].toString().isEmpty()) << key;
        }
        EXPECT_EQ(info["UIDeviceFamily"].toArray(), QJsonArray({1, 2}));
        const QJsonArray files = info["CFBundleIcons"]["CFBundlePrimaryIcon"]["CFBundleIconFiles"].toArray();
        EXPECT_FALSE(files.isEmpty());
        for (const QJsonValue& file : files) {
            EXPECT_TRUE(QFile::exists(stockPath(QFileInfo(path).path() + "/" + file.toString() + ".png")));
        }
    }
    described.sort();
    EXPECT_EQ(described, appFolders());
}

TEST(StockApps, NamesTryTheScreens) {
    int longest = 0;
    bool accented = false, ideographs = false, digitsOnly = false;
    for (const QJsonValue& entry : readPropertyLists("Info.plist")) {
        const QString name = entry["list"]["CFBundleDisplayName"].toString();
        longest = qMax(longest, static_cast<int>(name.size()));
        bool digits = true;
        for (QChar c : name) {
            accented = accented || c == QChar(0xc9) || c == QChar(0xe0);
            ideographs = ideographs || (c.unicode() >= 0x4e00 && c.unicode() <= 0x9fff);
            digits = digits && c.isDigit();
        }
        digitsOnly = digitsOnly || digits;
    }
    EXPECT_GT(longest, 60);
    EXPECT_TRUE(accented);
    EXPECT_TRUE(ideographs);
    EXPECT_TRUE(digitsOnly);
}

TEST(StockApps, PropertyListsComeInBothForms) {
    int binary = 0, xml = 0;
    for (const QString& folder : appFolders()) {
        QFile file(stockPath(folder + "/Info.plist"));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray head = file.read(8);
        binary += head == "bplist00" ? 1 : 0;
        xml += head.startsWith("<?xml") ? 1 : 0;
    }
    EXPECT_GE(binary, 5);
    EXPECT_GE(xml, 5);
}

TEST(StockApps, UserAppsAndTheyAloneCarryStoreMetadata) {
    QStringList users;
    for (const QString& folder : appFolders()) {
        if (isUserApp(folder)) users.append(QFileInfo(folder).path());
    }
    EXPECT_GE(users.size(), 8);
    QStringList described;
    std::set<qint64> numbers;
    for (const QJsonValue& entry : readPropertyLists("iTunesMetadata.plist")) {
        described.append(QFileInfo(entry["path"].toString()).path());
        for (const char* key : {"itemName", "artistName", "genre"}) {
            EXPECT_FALSE(entry["list"][key].toString().isEmpty()) << key;
        }
        EXPECT_TRUE(numbers.insert(entry["list"]["itemId"].toInteger()).second);
    }
    described.sort();
    users.sort();
    EXPECT_EQ(described, users);
}

TEST(StockApps, OneSystemAppIsHidden) {
    QStringList hidden;
    for (const QJsonValue& entry : readPropertyLists("Info.plist")) {
        if (entry["list"]["SBAppTags"].toArray().contains("hidden")) hidden.append(entry["path"].toString());
    }
    EXPECT_EQ(hidden, QStringList("Applications/FieldTestBench.app/Info.plist"));
}

TEST(StockApps, TheWholeDeviceIsSmall) {
    qint64 bytes = 0;
    QDirIterator files(stockPath(""), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        bytes += files.fileInfo().size();
    }
    EXPECT_GT(bytes, 0);
    EXPECT_LT(bytes, 4 * 1024 * 1024);
}

} // namespace tallyforge::test

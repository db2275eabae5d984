#include "StockFolder.h"

#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace tallyforge::test {

namespace {

QString quoted(const QString& text) {
    return "'" + text + "'";
}

QString generator(const QString& arguments) {
    return quoted(TALLYFORGE_ARTWORK) + " " + arguments;
}

QString listMaker(const QString& arguments) {
    return "python3 " + quoted(QString(TALLYFORGE_ARTWORK_SOURCES) + "/make_info_plists.py") + " " +
           arguments;
}

/// The files of the given name pattern, from the root.
QStringList filesUnder(const QString& root, const QString& pattern) {
    QStringList files;
    QDirIterator entries(root, {pattern}, QDir::Files, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        files.append(QDir(root).relativeFilePath(entries.next()));
    }
    files.sort();
    return files;
}

QByteArray contents(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

bool sameBytes(const QString& a, const QString& b) {
    return contents(a) == contents(b);
}

int channelsApart(QRgb a, QRgb b) {
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                     std::abs(qBlue(a) - qBlue(b)), std::abs(qAlpha(a) - qAlpha(b))});
}

/// The toolkit draws by the widest instructions that a processor has, which round a little differently.
bool samePicture(const QString& a, const QString& b) {
    constexpr int kMostApart = 1;        // of 255
    constexpr double kMostPixels = 0.02; // of the picture's; all others are the very same
    const QImage first = QImage(a).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage second = QImage(b).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (first.isNull() || first.size() != second.size()) return false;
    int others = 0;
    for (int y = 0; y < first.height(); ++y) {
        for (int x = 0; x < first.width(); ++x) {
            const auto one = reinterpret_cast<const QRgb*>(first.constScanLine(y))[x];
            const auto other = reinterpret_cast<const QRgb*>(second.constScanLine(y))[x];
            if (channelsApart(one, other) > kMostApart) return false;
            others += one == other ? 0 : 1;
        }
    }
    return others <= kMostPixels * first.width() * first.height();
}

/// In the system's and the apps' folders there is nothing but what was drawn; the bundle holds more.
void expectSameFiles(const QString& drawn, const QString& pattern, int fewest,
                     bool (*same)(const QString& a, const QString& b)) {
    const QStringList files = filesUnder(drawn, pattern);
    EXPECT_GE(files.size(), fewest);
    for (const QString& file : files) {
        EXPECT_TRUE(same(drawn + "/" + file, stockPath(file))) << file.toStdString();
    }
    for (const char* folder : {"System", "Applications", "var/containers"}) {
        EXPECT_EQ(filesUnder(drawn + "/" + folder, pattern), filesUnder(stockPath(folder), pattern))
            << folder;
    }
}

} // namespace

TEST(Reproduction, TheGeneratorDrawsTheCommittedPictures) {
    QTemporaryDir folder;
    const CommandResult run = runCommand(generator(quoted(folder.path())));
    ASSERT_EQ(run.status, 0) << run.output;
    // 11 mark and glow pictures and 5 of rows at three scales; five icons for each of at least 17 apps.
    expectSameFiles(folder.path(), "*.png", 33 + 15 + 5 * 17, samePicture);
}

TEST(Reproduction, TheScriptWritesTheCommittedPropertyLists) {
    QTemporaryDir folder;
    const CommandResult run = runCommand(listMaker(quoted(folder.path())));
    ASSERT_EQ(run.status, 0) << run.output;
    expectSameFiles(folder.path(), "*.plist", 17 + 8, sameBytes);
}

TEST(Reproduction, TheProgramsWantOneFolder) {
    EXPECT_EQ(runCommand(generator("")).status, 2);
    EXPECT_EQ(runCommand(generator("a b")).status, 2);
    EXPECT_EQ(runCommand(listMaker("")).status, 2);
}

TEST(Reproduction, AFolderThatCannotBeMadeIsAnError) {
    QTemporaryDir folder;
    QFile file(folder.filePath("file"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const CommandResult run = runCommand(generator(quoted(folder.filePath("file/below"))));
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.output.find("IconBadgeAndCloseBox.png"), std::string::npos) << run.output;
}

} // namespace tallyforge::test

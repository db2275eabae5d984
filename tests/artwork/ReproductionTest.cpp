#include "StockFolder.h"

#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

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

/// In the system's and the apps' folders there is nothing but what was drawn; the bundle holds more.
void expectSameFiles(const QString& drawn, const QString& pattern, int fewest) {
    const QStringList files = filesUnder(drawn, pattern);
    EXPECT_GE(files.size(), fewest);
    for (const QString& file : files) {
        EXPECT_TRUE(contents(drawn + "/" + file) == contents(stockPath(file))) << file.toStdString();
    }
    for (const char* folder : {"System", "Applications", "var/containers"}) {
        EXPECT_EQ(filesUnder(drawn + "/" + folder, pattern), filesUnder(stockPath(folder), pattern))
            << folder;
    }
}

} // namespace

TEST(Reproduction, TheGeneratorDrawsTheCommittedPicturesByteForByte) {
    QTemporaryDir folder;
    const CommandResult run = runCommand(generator(quoted(folder.path())));
    ASSERT_EQ(run.status, 0) << run.output;
    // 11 mark and glow pictures and 5 of rows at three scales; five icons for each of at least 17 apps.
    expectSameFiles(folder.path(), "*.png", 33 + 15 + 5 * 17);
}

TEST(Reproduction, TheScriptWritesTheCommittedPropertyLists) {
    QTemporaryDir folder;
    const CommandResult run = runCommand(listMaker(quoted(folder.path())));
    ASSERT_EQ(run.status, 0) << run.output;
    expectSameFiles(folder.path(), "*.plist", 17 + 8);
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

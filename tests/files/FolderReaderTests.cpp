// Looking into many files of one folder: what a first read gives, and of what kinds of entries nothing is
// given.

#include "foundation/FolderReader.h"

#include "TemporaryDevice.h"

#include <cerrno>
#include <sys/stat.h>

namespace tallyforge {

namespace {

using FolderReaderTest = TemporaryDevice;

std::string Peeked(FolderReader& reader, const std::string& name) {
    for (const FolderReader::Entry& entry : reader.entries()) {
        if (entry.name != name) continue;
        const auto bytes = reader.peek(entry);
        return {bytes.begin(), bytes.end()};
    }
    return "no such entry";
}

TEST_F(FolderReaderTest, SmallPlainFilesAreGivenWhole) {
    put("/folder/b", "second");
    put("/folder/a", "first");
    put("/folder/.hidden", "third");
    auto reader = FolderReader::open("/folder/");
    ASSERT_TRUE(reader) << reader.reason();
    std::vector<std::string> names;
    for (const auto& entry : reader->entries())
        names.push_back(entry.name);
    EXPECT_EQ(names, (std::vector<std::string>{".hidden", "a", "b"}));
    EXPECT_EQ(Peeked(*reader, "a"), "first");
    EXPECT_EQ(Peeked(*reader, "b"), "second");
    EXPECT_EQ(Peeked(*reader, ".hidden"), "third");
    EXPECT_EQ(reader->takeNames(), names);
}

TEST_F(FolderReaderTest, OfAnythingElseNothingIsGiven) {
    put("/folder/file", "text");
    put("/folder/empty", "");
    put("/folder/large", std::string(16'384, 'x'));
    std::filesystem::create_directories(host("/folder/sub"));
    std::filesystem::create_symlink("file", host("/folder/link"));
    ASSERT_EQ(mkfifo(host("/folder/fifo").c_str(), 0600), 0);
    auto reader = FolderReader::open("/folder");
    ASSERT_TRUE(reader) << reader.reason();
    EXPECT_EQ(reader->entries().size(), 6U);
    for (const char* name : {"empty", "large", "sub", "link", "fifo"})
        EXPECT_EQ(Peeked(*reader, name), "") << name;
    EXPECT_EQ(Peeked(*reader, "file"), "text");
}

// What stood there when the folder was listed may be something else by now.
TEST_F(FolderReaderTest, AnEntryThatHasBecomeSomethingElseIsNotWaitedFor) {
    for (const char* name : {"gone", "fifo", "link"})
        put(std::string("/folder/") + name, "text");
    auto reader = FolderReader::open("/folder");
    ASSERT_TRUE(reader) << reader.reason();
    for (const char* name : {"gone", "fifo", "link"})
        std::filesystem::remove(host("/folder") + "/" + name);
    ASSERT_EQ(mkfifo(host("/folder/fifo").c_str(), 0600), 0);
    std::filesystem::create_symlink("/etc/passwd", host("/folder/link"));
    for (const char* name : {"gone", "fifo", "link"})
        EXPECT_EQ(Peeked(*reader, name), "") << name;
}

TEST_F(FolderReaderTest, AFolderThatIsNoneIsRefused) {
    put("/file", "text");
    EXPECT_FALSE(FolderReader::open("/missing"));
    const auto file = FolderReader::open("/file");
    ASSERT_FALSE(file);
    EXPECT_EQ(file.reason(), "not a folder");
}

} // namespace

} // namespace tallyforge

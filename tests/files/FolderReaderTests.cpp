// Looking into many files of one folder: what a first read gives, and of what kinds of entries nothing is
// given.

#include "foundation/FolderReader.h"

#include "TemporaryDevice.h"

#include <cerrno>
#include <sys/stat.h>

namespace tallyforge {

namespace {

using FolderReaderTest = TemporaryDevice;

std::string Peeked(const FolderReader& reader, const std::string& name) {
    std::vector<std::string> peeked(reader.entries().size());
    reader.peekAll([&](size_t place, std::span<const uint8_t> bytes) {
        peeked[place] = {bytes.begin(), bytes.end()};
    });
    for (size_t place = 0; place < peeked.size(); ++place)
        if (reader.entries()[place].name == name) return peeked[place];
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

std::vector<std::string> NamesIn(const std::string& folder) {
    auto reader = FolderReader::open(folder);
    return reader ? reader->takeNames() : std::vector<std::string>{reader.reason()};
}

TEST_F(FolderReaderTest, NamesAreSortedByTheirBytes) {
    std::filesystem::create_directories(host("/none"));
    EXPECT_EQ(NamesIn("/none"), std::vector<std::string>());
    put("/one/alone", "");
    EXPECT_EQ(NamesIn("/one"), std::vector<std::string>{"alone"});

    // What all of them begin with, one that is no more than that, one that goes on with the smallest byte,
    // and those that differ in the eighth byte after it and in the ninth; bytes above 127 come last.
    const std::vector<std::string> alike = {"name",          "name\x01",       "name\x01\x01",
                                            "name0123456",   "name01234567",   "name01234567\x01",
                                            "name012345678", "name0123456789", "name0123456\xFF",
                                            "nameA",         "namea",          "name\xC3\xA4",
                                            "name\xFF"};
    for (auto name = alike.rbegin(); name != alike.rend(); ++name)
        put("/alike/" + *name, "");
    EXPECT_EQ(NamesIn("/alike"), alike);

    // And with nothing in common.
    const std::vector<std::string> unlike = {"\x01", ".hidden", "A", "a", "name", "name 2", "\xFF"};
    for (auto name = unlike.rbegin(); name != unlike.rend(); ++name)
        put("/unlike/" + *name, "");
    EXPECT_EQ(NamesIn("/unlike"), unlike);
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

// More than one thread takes at once: each file is given once, at its own place.
TEST_F(FolderReaderTest, ManyFilesAreGivenEachAtItsPlace) {
    constexpr int kFiles = 1'000;
    for (int i = 0; i < kFiles; ++i)
        put("/folder/" + std::to_string(i), "text of " + std::to_string(i));
    const auto reader = FolderReader::open("/folder");
    ASSERT_TRUE(reader) << reader.reason();
    ASSERT_EQ(reader->entries().size(), size_t{kFiles});
    std::vector<std::string> peeked(kFiles);
    std::vector<int> times(kFiles);
    reader->peekAll([&](size_t place, std::span<const uint8_t> bytes) {
        peeked[place] = {bytes.begin(), bytes.end()};
        ++times[place];
    });
    for (size_t place = 0; place < kFiles; ++place) {
        EXPECT_EQ(peeked[place], "text of " + reader->entries()[place].name);
        EXPECT_EQ(times[place], 1);
    }
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

// Whatever lies in the themes' and the ties' folders: it is passed over within 50 ms and 64 MiB, and the rest
// is there.

#include "ThemesFixture.h"
#include "support/CpuTime.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace tallyforge::test {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr double kMostMilliseconds = 50;
constexpr long kMostKilobytes = 64 * 1024;

class HostileFilesTest : public ThemesTest {
  protected:
    HostileFilesTest() { put("zz good.tft", archive(theme("Good"))); }

    // Beside an empty folder, so that starting a program is not counted.
    void expectPassedOver(const char* what) const {
        SCOPED_TRACE(what);
        double quickest = 1e9;
        for (int round = 0; round < 3; ++round) {
            const double start = CpuMilliseconds();
            EXPECT_EQ(names(), std::vector<std::string>{"Good"});
            quickest = std::min(quickest, CpuMilliseconds() - start);
        }
#if !ADDRESS_SANITIZER
        EXPECT_LT(quickest, kMostMilliseconds);
#endif
        const Ended ended = tallyforge({"theme", "list"});
        EXPECT_EQ(ended.status, 0) << ended.errors;
        EXPECT_EQ(ended.output, "Good\tzz good.tft\n");
#if !ADDRESS_SANITIZER
        EXPECT_LT(ended.peakKilobytes, kMostKilobytes);
#endif
    }
    // As theme and as tie.
    void expectRefused(const char* what, const Bytes& bytes) const {
        put("bad.tft", bytes);
        expectPassedOver(what);
        const std::string tie = std::string(kTieFolder) + "com.example.app";
        device.write(tie, bytes);
        EXPECT_EQ(TieOf("com.example.app"), "0") << what;
        EXPECT_TRUE(ListTies()->ties.empty()) << what;
    }
    /// Python's plistlib writes what `expression` makes; U is its UID, D a class record of dictionaries.
    Bytes python(const std::string& expression) const {
        const auto file = device.root() / "made";
        const Ended ended =
            RunProgram({"python3", "-c",
                        "import plistlib, sys\nU = plistlib.UID\nD = {'$classname': 'NSDictionary', "
                        "'$classes': ['NSDictionary']}\n"
                        "def archive(objects, root=1, **more):\n"
                        "    a = {'$version': 100000, '$archiver': 'NSKeyedArchiver', '$top': {'root': "
                        "U(root)}, '$objects': objects}\n"
                        "    a.update(more)\n    return plistlib.dumps(a, fmt=plistlib.FMT_BINARY)\n"
                        "open(sys.argv[1], 'wb').write(" +
                            expression + ")",
                        file.string()});
        EXPECT_EQ(ended.status, 0) << ended.errors << expression;
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
};

TEST_F(HostileFilesTest, BrokenFilesArePassedOver) {
    const Bytes whole = archive(theme("Bad"));
    expectRefused("empty", {});
    expectRefused("only a header", {'b', 'p', 'l', 'i', 's', 't', '0', '0'});
    expectRefused("cut short", Bytes(whole.begin(), whole.end() - 40));
    expectRefused("without its trailer", Bytes(whole.begin(), whole.end() - 32));
    Bytes bytes = whole;
    for (int i = 0; i < 8; ++i)
        bytes[bytes.size() - 24 + static_cast<size_t>(i)] = 0xFF; // the count of objects
    expectRefused("too many objects", bytes);
    bytes = whole;
    bytes[bytes.size() - 1] = 0xFF; // the offset table's place
    bytes[bytes.size() - 2] = 0xFF;
    expectRefused("offset table outside", bytes);
    expectRefused("over four megabytes", Bytes((4U << 20) + 1, 'x'));
    expectRefused("a large file of nothing", Bytes(4U << 20, 0));
}

TEST_F(HostileFilesTest, ArchivesOfAnotherKindArePassedOver) {
    for (const char* expression : {
             "archive(['$null', {'NS.keys': [], 'NS.objects': [], '$class': U(2)}, D], **{'$archiver': "
             "'Other'})",
             "archive(['$null', {'NS.keys': [], 'NS.objects': [], '$class': U(2)}, D], **{'$version': 1})",
             "archive(['$null', {'NS.keys': [], 'NS.objects': [], '$class': U(2)}, D], **{'$top': {}})",
             "archive(['$null', {'NS.keys': [], 'NS.objects': [], '$class': U(9)}, D])",
             "archive(['$null', {'NS.keys': [U(99)], 'NS.objects': [U(1)], '$class': U(2)}, D])",
             "archive(['$null', {'NS.keys': [U(3)], 'NS.objects': [], '$class': U(2)}, D, 'a'])",
             "archive(['$null', {'NS.keys': [U(3)], 'NS.objects': [U(3)], '$class': U(2)}, D, 7])",
             "archive(['$null', {'NS.keys': [U(3)], 'NS.objects': [U(0)], '$class': U(2)}, D, 'a'])",
             "archive(['$null', {'NS.keys': [U(3)], 'NS.objects': [U(1)], '$class': U(2)}, D, 'a'])",
             "archive(['$null', {'$class': U(2)}, {'$classname': 'NSSet', '$classes': ['NSSet']}])",
             "archive(['$null', {'$class': U(2)}, D])",
             "archive(['$null', 5])",
             "archive(['$null', {'NS.keys': [U(3)], 'NS.objects': [U(3)], '$class': U(2)}, D, 'a'], "
             "root=200)",
             "plistlib.dumps({'themename': 'x'}, fmt=plistlib.FMT_BINARY)",
             "plistlib.dumps({'themename': 'x'})",
         })
        expectRefused(expression, python(expression));
}

TEST_F(HostileFilesTest, WhatWouldGrowWithoutEndIsPassedOver) {
    // Each list holds the one before it ten times over.
    expectRefused(
        "shared lists",
        python("archive(['$null', {'NS.keys': [U(3)], 'NS.objects': [U(5)], '$class': U(2)}, D, 'a', "
               "{'$classname': 'NSArray', '$classes': ['NSArray']}] + "
               "[{'NS.objects': [U(i + 6)] * 10, '$class': U(4)} for i in range(40)] + ['end'])"));
    expectRefused(
        "deep lists",
        python("archive(['$null', {'NS.keys': [U(3)], 'NS.objects': [U(5)], '$class': U(2)}, D, 'a', "
               "{'$classname': 'NSArray', '$classes': ['NSArray']}] + "
               "[{'NS.objects': [U(i + 6)], '$class': U(4)} for i in range(5000)] + ['end'])"));
    expectRefused("shared text", python("archive(['$null', {'NS.keys': [U(4 + i) for i in range(300)], "
                                        "'NS.objects': [U(3)] * 300, '$class': U(2)}, D, 'x' * 100000] + "
                                        "['k%d' % i for i in range(300)])"));
    std::string xml = "<?xml version=\"1.0\"?><plist version=\"1.0\">";
    for (int i = 0; i < 100'000; ++i)
        xml += "<array>";
    expectRefused("deep XML", Bytes(xml.begin(), xml.end()));
    xml = "<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]>"
          "<plist version=\"1.0\"><string>&b;</string></plist>";
    expectRefused("XML with entities", Bytes(xml.begin(), xml.end()));
}

TEST_F(HostileFilesTest, WhatIsNoFileIsPassedOver) {
    std::filesystem::create_directory(folder() / "folder.tft");
    ASSERT_EQ(mkfifo((folder() / "fifo.tft").c_str(), 0600), 0);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string place = (folder() / "socket.tft").string();
    ASSERT_LT(place.size(), sizeof address.sun_path);
    std::copy(place.begin(), place.end(), address.sun_path);
    ASSERT_EQ(bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    std::filesystem::create_symlink("loop.tft", folder() / "loop.tft");
    std::filesystem::create_symlink("nowhere", folder() / "nowhere.tft");
    std::filesystem::create_symlink("fifo.tft", folder() / "linked.tft");
    std::filesystem::create_symlink("/dev/zero", folder() / "zero.tft");
    expectPassedOver("what is no file");
    close(socket);

    std::filesystem::create_directories(device.file(std::string(kTieFolder)));
    ASSERT_EQ(mkfifo(device.file(std::string(kTieFolder) + "com.example.app").c_str(), 0600), 0);
    EXPECT_EQ(TieOf("com.example.app"), "0");
    EXPECT_TRUE(ListTies()->ties.empty());
}

// A link leads to where it leads on the device, never to a file of this machine.
TEST_F(HostileFilesTest, LinksStayOnTheDevice) {
    const auto outside =
        std::filesystem::temp_directory_path() / ("outside-" + device.root().filename().string());
    const Bytes bytes = archive(theme("Outside"));
    std::ofstream(outside, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    std::filesystem::create_symlink(outside, folder() / "absolute.tft");
    std::filesystem::create_symlink(std::string("../../../../../../../..") + outside.string(),
                                    folder() / "up.tft");
    EXPECT_EQ(names(), std::vector<std::string>{"Good"});
    std::filesystem::remove(outside);

    device.write("/elsewhere.tft", archive(theme("Elsewhere")));
    std::filesystem::create_symlink("/elsewhere.tft", folder() / "inside.tft");
    EXPECT_EQ(names(), (std::vector<std::string>{"Elsewhere", "Good"}));
}

TEST_F(HostileFilesTest, IdentifiersThatLeadOutHaveNoTie) {
    device.write(std::string(kThemeFolder) + "evil",
                 NSKeyedArchiver::archivedDataWithRootObject(PropertyList::string("read")));
    for (const std::string& app : {std::string(), std::string("."), std::string(".."), std::string("../evil"),
                                   std::string("/evil"), std::string("a\0b", 3), std::string(256, 'x')}) {
        EXPECT_EQ(TieOf(app), "0") << app;
        EXPECT_FALSE(SetTie(app, "x")) << app;
        EXPECT_FALSE(RemoveTie(app)) << app;
    }
    EXPECT_TRUE(std::filesystem::exists(folder() / "evil"));
    EXPECT_FALSE(std::filesystem::exists(device.file(std::string(kTieFolder))));
}

} // namespace
} // namespace tallyforge::test

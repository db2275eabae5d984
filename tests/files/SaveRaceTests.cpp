// What other processes see while a file is saved, and what is left of a process that is killed.

#include "TemporaryDevice.h"
#include "foundation/NSFileManager.h"

#include <csignal>
#include <fcntl.h>
#include <random>
#include <sys/file.h>

namespace tallyforge {

namespace {

class SaveRaceTests : public TemporaryDevice {
  protected:
    static constexpr size_t length = 256 * 1024;

    /// A process that saves the file over and over, full of one letter after the other.
    pid_t startWriter(int rounds) {
        const pid_t child = fork();
        if (child != 0) return child;
        for (int round = 0; round < rounds || rounds == 0; ++round) {
            const std::string whole(length, static_cast<char>('a' + round % 26));
            if (!files_.writeDataToFile("/f/a", Bytes(whole))) _exit(1);
        }
        _exit(0);
    }

    void expectWhole() {
        const auto seen = files_.contentsAtPath("/f/a");
        ASSERT_TRUE(seen) << seen.reason();
        ASSERT_EQ(seen->size(), length);
        ASSERT_EQ(std::count(seen->begin(), seen->end(), seen->front()), static_cast<ptrdiff_t>(length));
    }

    NSFileManager files_;
};

TEST_F(SaveRaceTests, ReadersNeverSeeAPart) {
    put("/f/a", std::string(length, 'z'));
    const pid_t writer = startWriter(200);
    int ended = 0;
    int reads = 0;
    while (waitpid(writer, &ended, WNOHANG) == 0) {
        expectWhole();
        ++reads;
    }
    EXPECT_EQ(ended, 0);
    EXPECT_GT(reads, 10);
}

TEST_F(SaveRaceTests, AKilledWriterLeavesAWholeFileAndNothingInTheWay) {
    put("/f/a", std::string(length, 'z'));
    std::mt19937 random(3);
    for (int round = 0; round < 40; ++round) {
        const pid_t writer = startWriter(0);
        usleep(1000 + random() % 8000);
        kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
        expectWhole();
    }
    const auto saved = files_.writeDataToFile("/f/a", Bytes("last"));
    EXPECT_TRUE(saved) << saved.reason();
    EXPECT_EQ(names("/f"), std::vector<std::string>{"a"});
}

TEST_F(SaveRaceTests, AWriterWaitsForTheLockOfItsFolder) {
    put("/f/a", "old");
    const int locked = ::open(host("/f").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(flock(locked, LOCK_EX), 0);
    const pid_t writer = fork();
    if (writer == 0) {
        close(locked); // the lock belongs to the parent's descriptor, which this would keep open
        _exit(files_.writeDataToFile("/f/a", Bytes("new")) ? 0 : 1);
    }
    usleep(150'000);
    int ended = 0;
    EXPECT_EQ(waitpid(writer, &ended, WNOHANG), 0);
    EXPECT_EQ(text("/f/a"), "old");
    flock(locked, LOCK_UN);
    EXPECT_EQ(waitpid(writer, &ended, 0), writer);
    EXPECT_EQ(ended, 0);
    EXPECT_EQ(text("/f/a"), "new");
    close(locked);
}

} // namespace

} // namespace tallyforge

// Many processes change one domain at the same time while others read it, and some of them are killed.

#include "PreferencesDevice.h"
#include "Subprocess.h"
#include "foundation/PropertyListFormat.h"

#include <array>
#include <atomic>
#include <random>
#include <sys/mman.h>

namespace tallyforge {

namespace {

constexpr const char* kDomain = "com.example.crowd";
const std::string kFolder = "/var/mobile/Library/Preferences";
const std::string kFileName = "com.example.crowd.plist";
const std::string kFile = kFolder + "/" + kFileName;
constexpr int kWriters = 8;
constexpr int kReaders = 2;
constexpr unsigned kBetweenReadings = 3'000; // microseconds

#if ADDRESS_SANITIZER
constexpr int kKeys = 100; // of each writer
constexpr int kKills = 100;
#else
constexpr int kKeys = 1'000;
constexpr int kKills = 2'000;
#endif

/// How many keys of each writer are saved: of writer 3 the keys "3.0", "3.1", ..., whose values are 0, 1, ...
using Saved = std::array<int, kWriters>;

/// What the processes acknowledge, in memory that they share: it is told whatever becomes of them next.
struct Acknowledged {
    std::array<std::atomic<int>, kWriters> saves{};
    std::array<std::atomic<int>, kReaders> readings{};
    std::atomic<bool> over = false;

    Saved saved() const {
        Saved saved{};
        std::copy(saves.begin(), saves.end(), saved.begin());
        return saved;
    }
};

/// What is wrong with a reading of the domain: of every writer the keys are there from the first one on
/// without a gap and with their values, no fewer than were saved before the reading began; and there are no
/// others.
std::string WhyNotWhole(const Dictionary& values, const Saved& saved) {
    size_t all = 0;
    for (int writer = 0; writer < kWriters; ++writer) {
        const std::string prefix = std::to_string(writer) + ".";
        int count = 0;
        while (const auto* value = values.objectForKey(prefix + std::to_string(count))) {
            if (!(*value == PropertyList::integer(count)))
                return prefix + std::to_string(count) + " is " + value->description();
            ++count;
        }
        const int least = saved[static_cast<size_t>(writer)];
        if (count < least)
            return std::to_string(least) + " keys of writer " + std::to_string(writer) + " were saved, and " +
                   std::to_string(count) + " are there";
        all += static_cast<size_t>(count);
    }
    if (all == values.count()) return {};
    return std::to_string(values.count()) + " keys, and " + std::to_string(all) + " of them without a gap";
}

[[noreturn]] void Fail(const std::string& why) {
    std::fprintf(stderr, "%s\n", why.c_str());
    _exit(1);
}

/// The body of a writer: sets those of its keys that were not acknowledged yet, and saves after each.
[[noreturn]] void Write(int writer, std::atomic<int>& saves, int keys) {
    CFPreferencesForgetAll();
    for (int i = saves; i < keys; saves = ++i) {
        CFPreferencesSetAppValue(std::to_string(writer) + "." + std::to_string(i), PropertyList::integer(i),
                                 kDomain);
        if (!CFPreferencesAppSynchronize(kDomain)) Fail(CFPreferencesSynchronizeFailure(kDomain));
    }
    _exit(0);
}

/// The body of a reader: reads the domain again and again, leaving the processor to the writers in between.
[[noreturn]] void Read(const Acknowledged& acknowledged, std::atomic<int>& readings) {
    CFPreferencesForgetAll();
    FileIdentity last;
    for (; !acknowledged.over; usleep(kBetweenReadings)) {
        const auto identity =
            NSFileManager::defaultManager().identityOfFileAtPath(CFPreferencesPath(kDomain));
        if (identity == last) continue;
        last = identity;
        const Saved saved = acknowledged.saved();
        const auto keys = CFPreferencesCopyKeyList(kDomain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
        if (const std::string why = CFPreferencesReadFailure(kDomain); !why.empty()) Fail(why);
        if (!keys) Fail("a domain that was there is gone");
        // From a version of its own, maybe a later one than the keys.
        const Dictionary values =
            CFPreferencesCopyMultiple(*keys, kDomain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
        if (values.count() != keys->size()) Fail("a key that was there is gone");
        if (const std::string why = WhyNotWhole(values, saved); !why.empty()) Fail(why);
        ++readings;
    }
    _exit(0);
}

/// Eight writers and two readers. A process that was killed is replaced by one that goes on in its place.
class Crowd {
  public:
    /// Each writer saves so many keys.
    explicit Crowd(int keys = kKeys) : keys_(keys) {
        void* shared =
            mmap(nullptr, sizeof(Acknowledged), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (shared != MAP_FAILED) acknowledged_ = new (shared) Acknowledged;
        members_.fill(kNobody);
    }
    ~Crowd() {
        for (size_t member = 0; member < members_.size(); ++member)
            killMember(member);
        if (acknowledged_) munmap(acknowledged_, sizeof(Acknowledged));
    }
    Crowd(const Crowd&) = delete;
    Crowd& operator=(const Crowd&) = delete;

    const Acknowledged& acknowledged() const { return *acknowledged_; }
    int writersKilled() const { return writersKilled_; }
    int readersKilled() const { return readersKilled_; }

    /// Starts everybody who is not there and not done.
    void start() {
        for (size_t member = 0; member < members_.size(); ++member) {
            if (members_[member] != kNobody) continue;
            members_[member] = fork();
            ASSERT_GE(members_[member], 0);
            if (members_[member] != 0) continue;
            if (member < kWriters) Write(static_cast<int>(member), acknowledged_->saves[member], keys_);
            Read(*acknowledged_, acknowledged_->readings[member - kWriters]);
        }
    }
    void killMember(size_t member) {
        if (members_[member] > 0) kill(members_[member], SIGKILL);
        hearOfEnd(member);
    }
    void killEverybody() {
        for (const pid_t member : members_)
            if (member > 0) kill(member, SIGKILL);
        for (size_t member = 0; member < members_.size(); ++member)
            hearOfEnd(member);
    }
    bool writersAreDone() {
        for (size_t writer = 0; writer < kWriters; ++writer)
            if (acknowledged_->saves[writer] < keys_) return false;
        return true;
    }
    /// Waits until all writers are done, and the readers with them.
    void waitForEnd() {
        for (size_t writer = 0; writer < kWriters; ++writer)
            hearOfEnd(writer);
        acknowledged_->over = true;
        for (size_t reader = kWriters; reader < members_.size(); ++reader)
            hearOfEnd(reader);
    }

  private:
    static constexpr pid_t kNobody = -1;
    static constexpr pid_t kDone = -2;

    // Whoever had ended already was not killed, and must have ended well.
    void hearOfEnd(size_t member) {
        if (members_[member] <= 0) return;
        const int ended = Ended(std::exchange(members_[member], kNobody));
        if (WIFSIGNALED(ended) && WTERMSIG(ended) == SIGKILL) {
            ++(member < kWriters ? writersKilled_ : readersKilled_);
            return;
        }
        EXPECT_EQ(ended, 0) << (member < kWriters ? "writer " : "reader ") << member % kWriters;
        members_[member] = kDone;
    }

    int keys_;
    Acknowledged* acknowledged_ = nullptr;
    std::array<pid_t, kWriters + kReaders> members_{};
    int writersKilled_ = 0;
    int readersKilled_ = 0;
};

/// Every save is synced: on a device in memory that takes no time.
class PreferencesCrowdTests : public PreferencesDevice {
  protected:
    std::filesystem::path place() const override {
        return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : TemporaryDevice::place();
    }
    /// Nothing that was acknowledged so far is lost, and nothing else is there.
    void expectWhole(const Crowd& crowd) const {
        const Saved saved = crowd.acknowledged().saved();
        const std::string bytes = text(kFile);
        if (bytes == "<no file>" && saved == Saved{}) return; // killed before the first save
        const auto parsed = DeserializePropertyList(Bytes(bytes));
        ASSERT_TRUE(parsed) << parsed.reason();
        ASSERT_TRUE(parsed->asDictionary());
        EXPECT_EQ(WhyNotWhole(*parsed->asDictionary(), saved), "");
    }
    /// What the whole crowd has to leave: every key with its value, and no other file.
    void expectAll(const Crowd& crowd) const {
        Saved all{};
        all.fill(kKeys);
        EXPECT_EQ(crowd.acknowledged().saved(), all);
        expectWhole(crowd);
        expectNoOtherFile();
    }
    void expectNoOtherFile() const { EXPECT_EQ(names(kFolder), std::vector<std::string>{kFileName}); }
    void startProgram() const {
        EXPECT_EQ(Output({std::string(TALLYFORGE_BIN) + "/tallyforge", "--root", root_, "get", "badgesize"})
                      .front(),
                  '0');
    }
};

TEST_F(PreferencesCrowdTests, WritersAtTheSameTimeLoseNoKeyAndNoReaderSeesAPart) {
    Crowd crowd;
    crowd.start();
    crowd.waitForEnd();
    expectAll(crowd);
    for (const auto& readings : crowd.acknowledged().readings)
        EXPECT_GT(readings, 10);
}

// A new device has no folder for domains yet: whoever saves first makes it, and the others find it made.
TEST_F(PreferencesCrowdTests, WritersWhoComeFirstTogetherLoseNothing) {
    constexpr int kTimes = 200;
    for (int time = 0; time < kTimes && !HasFailure(); ++time) {
        std::filesystem::remove_all(host("/var"));
        Crowd crowd(1);
        crowd.start();
        crowd.waitForEnd();
        Saved one{};
        one.fill(1);
        EXPECT_EQ(crowd.acknowledged().saved(), one);
        expectWhole(crowd);
    }
}

int FromEnvironment(const char* name, int otherwise) {
    const char* wanted = std::getenv(name);
    return wanted ? std::atoi(wanted) : otherwise;
}

// TALLYFORGE_KILLS sets how many processes are killed, TALLYFORGE_SEED which and when. A crowd that is done
// before that is followed by another one, on a domain of its own.
TEST_F(PreferencesCrowdTests, KilledWritersAndReadersLoseNothingThatWasSaved) {
    constexpr int kOneByOne = 24;            // then everybody is killed, and what is left behind is looked at
    constexpr unsigned kLongestLife = 8'000; // microseconds until the next one is killed
    const int wanted = FromEnvironment("TALLYFORGE_KILLS", kKills);
    const int seed = FromEnvironment("TALLYFORGE_SEED", 20261);
    std::printf("seed %d\n", seed);
    std::mt19937 random(static_cast<unsigned>(seed));

    int writersKilled = 0, readersKilled = 0, crowds = 0, saves = 0, readings = 0, starts = 0, unfinished = 0;
    while (writersKilled + readersKilled < wanted && !HasFailure()) {
        Crowd crowd;
        const auto toGo = [&] {
            return wanted - writersKilled - readersKilled - crowd.writersKilled() - crowd.readersKilled();
        };
        crowd.start();
        for (int turn = 1; toGo() > 0 && !crowd.writersAreDone() && !HasFailure(); ++turn) {
            usleep(random() % kLongestLife);
            if (turn % kOneByOne == 0 && toGo() >= kWriters + kReaders) {
                crowd.killEverybody();
                unfinished += std::filesystem::exists(host(kFolder)) && names(kFolder).size() > 1;
                startProgram();
                ++starts;
                if (std::filesystem::exists(host(kFolder))) expectNoOtherFile();
                // What was acknowledged is not set again: what is lost once stays lost, and is found here.
                expectWhole(crowd);
            } else {
                crowd.killMember(random() % (kWriters + kReaders));
            }
            crowd.start();
        }
        crowd.waitForEnd();
        startProgram();
        expectAll(crowd);
        writersKilled += crowd.writersKilled();
        readersKilled += crowd.readersKilled();
        for (const int saved : crowd.acknowledged().saved())
            saves += saved;
        for (const int read : crowd.acknowledged().readings)
            readings += read;
        ++crowds;
        std::filesystem::remove(host(kFile));
    }
    EXPECT_EQ(writersKilled + readersKilled, wanted);
    EXPECT_GT(readings, 0);
    std::printf("%d kills of writers, %d of readers, %d acknowledged saves, %d readings, %d crowds; "
                "%d of %d times when everybody was killed an unfinished file was left\n",
                writersKilled, readersKilled, saves, readings, crowds, unfinished, starts);
}

} // namespace

} // namespace tallyforge

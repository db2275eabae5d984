#include "PropertyListTesting.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <gtest/gtest.h>
#include <malloc.h>
#include <new>
#include <pugixml.hpp>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::atomic<size_t> held{0};
std::atomic<size_t> most{0};

void* Take(size_t size) {
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory) {
        const size_t now = held += malloc_usable_size(memory);
        if (now > most) most = now;
    }
    return memory;
}

void Give(void* memory) {
    if (memory) held -= malloc_usable_size(memory);
    std::free(memory);
}

} // namespace

void* operator new(size_t size) {
    if (void* memory = Take(size)) return memory;
    std::abort();
}
void operator delete(void* memory) noexcept {
    Give(memory);
}
void operator delete(void* memory, size_t) noexcept {
    Give(memory);
}

namespace tallyforge::testing {

#if ADDRESS_SANITIZER || THREAD_SANITIZER
constexpr double kSlowdown = 6; // what the checks built in may cost
#else
constexpr double kSlowdown = 1;
#endif

Bytes BytesOf(std::string_view text) {
    return Bytes(text.begin(), text.end());
}

Bytes Hex(std::string_view digits) {
    Bytes bytes;
    std::string byte;
    for (const char c : digits) {
        if (std::isxdigit(static_cast<unsigned char>(c))) byte.push_back(c);
        if (byte.size() == 2) {
            bytes.push_back(static_cast<uint8_t>(std::stoi(byte, nullptr, 16)));
            byte.clear();
        }
    }
    return bytes;
}

Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

Bytes BigEndian(uint64_t value, size_t size) {
    Bytes bytes(size);
    for (size_t i = size; i-- > 0; value >>= 8)
        bytes[i] = static_cast<uint8_t>(value);
    return bytes;
}

Bytes BinaryFile::bytes() const {
    Bytes file = BytesOf("bplist00");
    Bytes table;
    for (const Bytes& object : objects) {
        const Bytes place = BigEndian(file.size(), offsetSize);
        table.insert(table.end(), place.begin(), place.end());
        file.insert(file.end(), object.begin(), object.end());
    }
    const uint64_t tablePlace = file.size();
    return file + table + Bytes(6, 0) + BigEndian(offsetSize, 1) + BigEndian(referenceSize, 1) +
           BigEndian(objects.size(), 8) + BigEndian(top, 8) + BigEndian(tablePlace, 8);
}

Cost CostOf(const std::function<void()>& act) {
    pugi::set_memory_management_functions(Take, Give);
    const auto now = [] {
        timespec time;
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    };
    const size_t before = held;
    most = before;
    const double start = now();
    act();
    return {now() - start, most - before};
}

void ExpectRefused(const std::function<Result<PropertyList>()>& read, std::string_view reason) {
    std::string given = "(read)";
    const auto refuse = [&] {
        const Result<PropertyList> result = read();
        given = result ? "(read)" : result.reason();
    };
    Cost cost = CostOf(refuse);
    // What else runs on the processor's core slows this down; the quickest of a few is its own time.
    for (int again = 0; again < 10 && cost.milliseconds >= 50 * kSlowdown; ++again)
        cost.milliseconds = std::min(cost.milliseconds, CostOf(refuse).milliseconds);
    EXPECT_EQ(given, reason);
    EXPECT_EQ(given.find('\n'), std::string::npos);
    EXPECT_LT(cost.milliseconds, 50 * kSlowdown);
    EXPECT_LT(cost.peakBytes, 64u << 20);
}

ScratchFolder::ScratchFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "property-lists-XXXXXX").string();
    path_ = mkdtemp(name.data());
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

Bytes FileBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

void WriteFile(const std::filesystem::path& path, const Bytes& bytes) {
    std::ofstream file(path, std::ios::binary);
    for (const uint8_t byte : bytes)
        file.put(static_cast<char>(byte));
}

void RunOracle(const std::string& arguments) {
    const std::string command = "python3 '" TALLYFORGE_TEST_DATA "/plist_oracle.py' " + arguments + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::string output;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        output.push_back(static_cast<char>(c));
    const int status = pclose(pipe);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << output;
}

} // namespace tallyforge::testing

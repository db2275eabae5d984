#pragma once

#include <string>
#include <vector>

namespace tallyforge {

/// Lets system calls of this program fail on purpose. Reset by its destructor.
class Faults {
  public:
    Faults();
    ~Faults();
    Faults(const Faults&) = delete;
    Faults& operator=(const Faults&) = delete;

    /// The nth call (from 1) of that name fails with the error number; 0 means every call.
    void fail(const std::string& call, int nth, int number);
    /// No write takes more than this many bytes, and every other one is interrupted.
    void shortWrites(size_t bytes);
    /// Every call so far: its name, and for "renameat" and "linkat" the names from and to.
    const std::vector<std::string>& calls() const;
    int count(const std::string& call) const;
};

} // namespace tallyforge

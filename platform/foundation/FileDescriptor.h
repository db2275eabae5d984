#pragma once

#include "foundation/Result.h"

#include <cstddef>
#include <string>
#include <utility>

namespace tallyforge {

/// An open descriptor that closes itself; -1 is none.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    ~FileDescriptor() { reset(); }

    int get() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ >= 0; }
    /// Closes it; errno stays as it was.
    void reset();

  private:
    int descriptor_ = -1;
};

/// What went wrong, in words that fit a file: "no such file", "permission denied".
std::string ReasonOfErrno(int number);

/// The same as an error.
Error ErrorOfErrno(int number);

/// "larger than 4 MiB".
std::string LargerThan(size_t bytes);

} // namespace tallyforge

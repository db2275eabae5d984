#pragma once

#include "foundation/FileDescriptor.h"
#include "foundation/Result.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// A folder of the device and its many files, looked into one after the other with as few system calls as can
/// be.
class FolderReader {
  public:
    static Result<FolderReader> open(std::string_view devicePath);

    struct Entry {
        std::string name;
        bool plainFile; ///< a regular file, as far as the folder tells; false says nothing
    };
    /// Without "." and "..", sorted by the names' bytes.
    const std::vector<Entry>& entries() const { return entries_; }
    std::vector<std::string> takeNames();

    /// What a first read of each file gives; empty for anything that is no plain and small file. For whoever
    /// can tell from the bytes themselves whether they are the whole file, and otherwise reads it properly.
    /// `work` gets the place of the entry and the bytes, valid until it returns. It is run for several
    /// entries at once, on several threads.
    void peekAll(const std::function<void(size_t, std::span<const uint8_t>)>& work) const;

  private:
    FileDescriptor folder_;
    std::vector<Entry> entries_;
};

} // namespace tallyforge

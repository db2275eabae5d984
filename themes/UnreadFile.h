#pragma once

#include <string>

namespace tallyforge {

/// A file of the device that is there and could not be read: what it holds is unknown.
struct UnreadFile {
    std::string path;
    std::string reason;
};

} // namespace tallyforge

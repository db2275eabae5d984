#pragma once

#include "foundation/Result.h"

#include <string>

namespace tallyforge {

/// Writes down every effect of the system in the order in which it happens, one a line, as long as it lives:
/// values set, domains synchronised, notifications, reloaded rows, alerts, opened addresses, files. On
/// standard output they stand among what else is printed there; a file is written as a whole in the end.
class EffectTrace {
  public:
    EffectTrace() = default;
    ~EffectTrace();
    EffectTrace(const EffectTrace&) = delete;
    EffectTrace& operator=(const EffectTrace&) = delete;

    /// Begins to note, for the file, or for standard output with "-". An error, and nothing is noted, when it
    /// can be told already that the file cannot be written.
    Status open(const std::string& file);
    /// An error when the lines could not be written.
    Status close();

  private:
    void note(const std::string& line);
    bool open_ = false;
    std::string file_;
    std::string lines_; ///< for the file
};

} // namespace tallyforge

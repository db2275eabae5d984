#pragma once

#include "foundation/Result.h"

#include <cstdio>
#include <string>

namespace tallyforge {

/// Writes down every effect of the system in the order in which it happens, one a line, as long as it lives:
/// values set, domains synchronised, notifications, reloaded rows, alerts, opened addresses, files.
class EffectTrace {
  public:
    EffectTrace() = default;
    ~EffectTrace();
    EffectTrace(const EffectTrace&) = delete;
    EffectTrace& operator=(const EffectTrace&) = delete;

    /// Begins to write into the file, or to standard output for "-".
    Status open(const std::string& file);
    /// An error when a line could not be written.
    Status close();

  private:
    void note(const std::string& line);
    std::FILE* out_ = nullptr;
    bool failed_ = false;
};

} // namespace tallyforge

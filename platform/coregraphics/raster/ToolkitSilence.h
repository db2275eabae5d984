#pragma once

namespace tallyforge {

/// While one lives, the toolkit's remarks (about locales, fonts, damaged files) do not go to the standard
/// error stream. They would say nothing that the return values do not.
class ToolkitSilence {
  public:
    ToolkitSilence();
    ~ToolkitSilence();
    ToolkitSilence(const ToolkitSilence&) = delete;
    ToolkitSilence& operator=(const ToolkitSilence&) = delete;

  private:
    void (*previous_)();
};

} // namespace tallyforge

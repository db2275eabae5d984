#pragma once

#include <string>

namespace tallyforge {

/// While one lives, XDG_RUNTIME_DIR names a folder that suits the toolkit. Without one, the toolkit, when it
/// starts, asks the machine's name service for the user's name and leaves behind a folder of that name. Where
/// the user has set none, or somebody else's, this gives it an empty one; afterwards that is gone and the
/// variable as it was. Nobody else may look at the environment meanwhile.
class ToolkitRuntimeFolder {
  public:
    ToolkitRuntimeFolder();
    ~ToolkitRuntimeFolder();
    ToolkitRuntimeFolder(const ToolkitRuntimeFolder&) = delete;
    ToolkitRuntimeFolder& operator=(const ToolkitRuntimeFolder&) = delete;

  private:
    std::string former_; ///< what the variable was
    std::string folder_; ///< empty when that suits, or no folder could be made
};

} // namespace tallyforge

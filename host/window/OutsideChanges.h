#pragma once

#include "corefoundation/CFNotificationCenter.h"
#include "foundation/FileDescriptor.h"

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace tallyforge {

/// Hears when the settings may have been changed by another process: by the domain's file, and where there is
/// a session bus also by the notification. Wakes up for nothing else. Changes of this process are told too.
class OutsideChanges {
  public:
    explicit OutsideChanges(std::function<void()> changed);

  private:
    void watchFolder();
    void readFolderEvents();
    void listen();

    std::function<void()> changed_;
    FileDescriptor events_;
    int watch_ = -1;
    bool watchesDomain_ = false; // and not yet a folder above
    std::unique_ptr<DarwinNotificationListener> listener_;
    std::unique_ptr<QSocketNotifier> folderNotifier_;
    std::unique_ptr<QSocketNotifier> busNotifier_;
};

} // namespace tallyforge

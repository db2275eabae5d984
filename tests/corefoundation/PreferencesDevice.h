#pragma once

#include "TemporaryDevice.h"
#include "corefoundation/CFPreferences.h"

namespace tallyforge {

/// A device of its own, of whose domains this process knows nothing yet.
class PreferencesDevice : public TemporaryDevice {
  protected:
    void SetUp() override {
        TemporaryDevice::SetUp();
        CFPreferencesForgetAll();
    }
    void TearDown() override {
        CFPreferencesForgetAll();
        TemporaryDevice::TearDown();
    }
};

} // namespace tallyforge

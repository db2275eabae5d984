#pragma once

#include "settings/SettingsKeys.h"

#include <span>

namespace tallyforge {

/// What a command of the marks' panes knows of each mark's settings, in the order in which it writes them.
template <class Setting>
struct MarkSettings {
    std::span<const Setting> badge, closeBox, newDot;

    std::span<const Setting> of(MarkKind mark) const {
        switch (mark) {
        case MarkKind::badge:
            return badge;
        case MarkKind::closeBox:
            return closeBox;
        case MarkKind::newDot:
            break;
        }
        return newDot;
    }
};

} // namespace tallyforge

#pragma once

#include "preferences/PSTableCell.h"

namespace tallyforge {

/// The row that leads to QuillonAppSelect: a plain one with a class of its own.
class QuillonAppSelectLinkCell final : public PSTableCell {
  public:
    const char* className() const override { return "QuillonAppSelectLinkCell"; }
};

} // namespace tallyforge

#pragma once

#include "PreviewModel.h"

#include "uikit/UIView.h"

#include <string>

namespace tallyforge::test {

/// In what the view and all below it differ from what is expected, one difference a line; empty when in
/// nothing. Geometry is compared to 1e-5 of its size, codes, texts and structure exactly. Animations that
/// come later are expected to be there only when `later` is set.
std::string Differences(const ModelView& expected, const UIView& view, bool later);

} // namespace tallyforge::test

#include "colorpicker/RegisterColorPicker.h"

#include "colorpicker/QuillonColorPicker.h"
#include "colorpicker/QuillonColorPickerLinkCell.h"

namespace tallyforge {

void RegisterColorPicker() {
    RegisterClass("QuillonColorPicker", {[] { return std::make_shared<QuillonColorPicker>(); }});
    RegisterClass("QuillonColorPickerLinkCell",
                  {[] { return std::make_shared<QuillonColorPickerLinkCell>(); }});
}

} // namespace tallyforge

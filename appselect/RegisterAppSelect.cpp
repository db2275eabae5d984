#include "appselect/RegisterAppSelect.h"

#include "appselect/QuillonAppSelect.h"
#include "appselect/QuillonAppSelectLinkCell.h"

namespace tallyforge {

void RegisterAppSelect() {
    RegisterClass("QuillonAppSelect", {[] { return std::make_shared<QuillonAppSelect>(); }});
    RegisterClass("QuillonAppSelectLinkCell", {[] { return std::make_shared<QuillonAppSelectLinkCell>(); }});
}

} // namespace tallyforge

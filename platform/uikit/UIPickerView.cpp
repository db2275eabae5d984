#include "uikit/UIPickerView.h"

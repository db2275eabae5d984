#include "uikit/UITextField.h"

#include "uikit/UISwitch.h"

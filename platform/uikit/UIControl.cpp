#include "uikit/UIControl.h"

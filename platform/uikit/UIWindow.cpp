#include "uikit/UIWindow.h"

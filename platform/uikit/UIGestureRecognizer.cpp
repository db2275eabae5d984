#include "uikit/UIGestureRecognizer.h"

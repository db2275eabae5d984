#include "uikit/UISegmentedControl.h"

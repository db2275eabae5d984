#include "uikit/UISlider.h"

#include "uikit/UIScrollView.h"

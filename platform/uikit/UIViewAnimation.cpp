#include "uikit/UIViewAnimation.h"

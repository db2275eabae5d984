#include "uikit/UINavigationController.h"

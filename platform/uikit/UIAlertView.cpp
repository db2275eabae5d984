#include "uikit/UIAlertView.h"

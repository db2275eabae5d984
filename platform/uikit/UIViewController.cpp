#include "uikit/UIViewController.h"

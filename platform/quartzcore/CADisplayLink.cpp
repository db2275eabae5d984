#include "quartzcore/CADisplayLink.h"

#include "preferences/PSSpecifier.h"

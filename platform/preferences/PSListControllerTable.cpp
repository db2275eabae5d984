#include "preferences/PSListController.h"

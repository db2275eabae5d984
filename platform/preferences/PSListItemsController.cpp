#include "preferences/PSListItemsController.h"

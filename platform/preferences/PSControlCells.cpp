#include "preferences/PSControlCells.h"

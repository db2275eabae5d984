#include "uikit/UITableView.h"

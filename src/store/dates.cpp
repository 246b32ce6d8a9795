#include "store/dates.h"

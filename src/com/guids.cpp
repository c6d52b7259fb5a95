// Defines the identifiers the generated header only declares.
#include <initguid.h>

#include "com/ostrel_h.h"

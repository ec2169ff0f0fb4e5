// The counting operator new/delete of the hxrecord test executable, alone in their unit.
#include "tests/support/HxAllocationCounter.h"

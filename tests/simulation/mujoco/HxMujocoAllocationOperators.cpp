// The counting operator new/delete of this test executable, alone in their unit.
#include "bench/HxAllocationCounter.h"

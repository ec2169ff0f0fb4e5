// The counting operator new/delete of this test executable, alone in their unit so that no
// test code sees their definitions.
#include "bench/HxAllocationCounter.h"

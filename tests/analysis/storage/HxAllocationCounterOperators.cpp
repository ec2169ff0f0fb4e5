// The counting operator new/delete of the storage test executable, alone in their unit so
// that no test code sees their definitions.
#include "bench/HxAllocationCounter.h"

// The counting operator new/delete of this test executable, alone in their unit so that no
// test code sees their definitions (GCC would warn about new/free pairs it inlines).
#include "bench/HxAllocationCounter.h"

// Compiled with whatever flags hx::analysis hands its consumers.
#include "analysis/storage/HxSystemStoredData.h"

int main() {
  HxSystemStoredData recorder;
  return 0;
}

// NoLocksMain.cpp - PropertiesBenchmarkNoLocks: the SetValue child of
// SetValueChild.h, linked with the library built without file locks. The
// benchmark program starts it; it does nothing else.

#include "SetValueChild.h"

int main(int argc, char** argv) {
  int exitCode = 2;
  bench::RunSetValueChild(argc, argv, &exitCode);
  return exitCode;
}

// somd as a process: connection limits, deadlines, one instance per
// installation, signals and start-up modes.
#include <gtest/gtest.h>

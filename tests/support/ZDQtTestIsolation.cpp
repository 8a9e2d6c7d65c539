// Linked as an object file into every Qt Test program: isolates the user's directories before
// QTEST_MAIN creates the application.

#include "ZDTestSupport.h"

namespace {
const bool s_isolated = [] {
    ZDTestSupport::isolateUserDirectories();
    return true;
}();
}

/*
 * A module in C that uses the library.
 */
#include "VELKMachineCus.h"

int main(void) {
    notifyAnchorPointStartCus(1, 1);
    markCriticalTaskUserCus(1);
    return 0;
}

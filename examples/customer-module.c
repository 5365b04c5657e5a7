/*
 * A customer's module in C: a filter that runs in the camera service's process. The service has
 * initialised the library when it calls the module. Started alone, the module can only mark its
 * work as critical, which does not need init.
 */
#include <VELKMachineCus.h>
#include <stdio.h>

/* Task enums of the customer's tuning data start at 22; this one is the sample's. */
enum { FILTER_TASK = 25, FILTER_ANCHOR = 2 };

/* Filters one frame. The address of the filter distinguishes its tasks from those of others. */
static int filter_frame(const void* filter, unsigned int serial) {
    const VELKTaskExtraParams extra = {-1, 0, 0, {0, 0}};
    int failures = 0;

    failures += notifyAnchorPointStartCus(FILTER_ANCHOR, serial) != 0;
    failures += notifyTaskStartExtraCus(filter, FILTER_TASK, &extra) != 0;
    failures += notifySingleShotCriticalTaskStartCus(FILTER_TASK) != 0;
    /* ... the part of the work that others wait for ... */
    failures += notifySingleShotCriticalTaskEndCus(FILTER_TASK) != 0;
    failures += notifyTaskEndCus(filter, FILTER_TASK) != 0;
    failures += notifyAnchorPointEndCus(FILTER_ANCHOR, serial) != 0;
    return failures;
}

int main(void) {
    const int filter = 0;
    const int marked = markCriticalTaskCus();
    const int failures = filter_frame(&filter, 1);
    const int unmarked = unsetCriticalTaskCus();

    printf("markCriticalTaskCus: %d, calls on a frame that failed: %d, unsetCriticalTaskCus: %d\n",
           marked, failures, unmarked);
    printf("Without a camera service in this process the calls on a frame fail, all six.\n");
    if (unmarked != 0) {
        fputs("customer-module: there is no driver; on a desk, run it with velk-run\n", stderr);
    }
    return marked == 0 && unmarked == 0 ? 0 : 1;
}

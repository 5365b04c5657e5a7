/*
 * A customer's module in C: a filter that runs within the camera service's process. The service has
 * brought the library up when it calls the module; started alone, the module marks its work as
 * critical, which needs no service.
 */
#include <VELKMachineCus.h>
#include <stdio.h>

/* Enums of the customer's tuning data, from 22 on; the sample's has this one. */
enum { FILTER_TASK = 25, FILTER_ANCHOR = 2 };

/* Filters one frame. The address of the filter tells its tasks from those of others. */
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

/* A customer module in C: everything that VELKMachineCus.h offers links, and the driver answers. */
#include <VELKMachineCus.h>
#include <stdio.h>

static int failures = 0;

static void expect(int expected, int result, const char* call) {
    if (result != expected) {
        fprintf(stderr, "%s returned %d, expected %d\n", call, result, expected);
        ++failures;
    }
}

#define EXPECT(expected, call) expect(expected, call, #call)

int main(void) {
    const VELKTaskExtraParams extra = {-1, 0, 0, {0, 0}};
    /* A control cannot be made in C; before the library is up it is not looked at. */
    const VELKSingleShotControl* const control = (const VELKSingleShotControl*)(const void*)&extra;

    EXPECT(-1, notifyTaskStartExtraCus(&extra, 6, &extra));
    EXPECT(-1, notifyTaskEndCus(&extra, 6));
    EXPECT(-1, notifyTaskSceneChangeCus(6, VELK_SCENE_CHANGE_MODE_DEFAULT));
    EXPECT(-1, notifySingleShotControlUserCus(5));
    EXPECT(-1, notifySingleShotControlCus(control));
    EXPECT(-1, notifyResetSingleShotControlUserCus(5));
    EXPECT(-1, notifyResetSingleShotControlCus());
    EXPECT(-1, notifySingleShotCriticalTaskStartCus(6));
    EXPECT(-1, notifySingleShotCriticalTaskEndCus(6));
    EXPECT(-1, notifyAnchorPointStartCus(1, 0));
    EXPECT(-1, notifyAnchorPointEndCus(1, 0));

    /* These reach the driver on their own; without tuning data there is nothing to mark with. */
    EXPECT(0, markCriticalTaskCus());
    EXPECT(0, markCriticalTaskUserCus(4));
    EXPECT(0, unsetCriticalTaskCus());
    return failures;
}

#include "resource/GroupHeadTable.h"

#include "foundation/LogGate.h"

void GroupHeadTable::record(int task, unsigned uniqueTaskId, const VELKTaskExtraParams& extra) {
    if (extra.groupHead >= 0) {
        mHeads[{extra.groupHead, task}] = uniqueTaskId;
    }
}

unsigned GroupHeadTable::find(int task, const VELKTaskExtraParams& extra) const {
    if (extra.groupHead < 0 || task == 0) {
        return INVALID_UNIQUE_TASK_ID;
    }
    VELKJsonConvertor* const convertor = mStaticData.convertorOf(task);
    const int headTask = convertor != nullptr ? convertor->getGroupHeadTask(task, extra) : 0;
    if (headTask != 0) {
        const auto head = mHeads.find({extra.groupHead, headTask});
        if (head != mHeads.end()) {
            return head->second;
        }
    }
    VELK_LOGD("GroupHead %d is not recorded", headTask);
    return INVALID_UNIQUE_TASK_ID;
}

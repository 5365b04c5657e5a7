#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "driver/RecordDecoder.h"

namespace {

// Every 32-bit word holds its own place: 1, 2, 3, ...
std::array<uint32_t, 85> countingWords() {
    std::array<uint32_t, 85> words = {};
    for (uint32_t i = 0; i < words.size(); ++i) {
        words[i] = i + 1;
    }
    return words;
}

struct DecodeCase {
    uint32_t request;
    const char* expected;
};

constexpr DecodeCase kDecodeCases[] = {
        {VELK_IOC_INIT,
         "driverParam=1 clusterLevels=[2,3,4] maxEfficientFreqs=[5,6,7] tuningParam1=8 "
         "tuningParam2=9"},
        {VELK_IOC_TASK_INIT,
         "uniqueTaskId=1 reserved4=2 defaultUclamp=3 targetTime=4 taskSpecValue=5 reserved20=6 "
         "isVIPTask=7 extraFlag0=0 extraFlag1=0 taskName=\"\""},
        {VELK_IOC_TASK_START, "tid=1 uniqueTaskId=2 reserved8=3 sceneChangeMode=4"},
        {VELK_IOC_TASK_END, "tid=1 uniqueTaskId=2 reserved8=3 sceneChangeMode=4"},
        {VELK_IOC_SCENE_CHANGE, "tid=1 uniqueTaskId=2 reserved8=3 sceneChangeMode=4"},
        {VELK_IOC_UNINIT, "reserved0=1"},
        {VELK_IOC_VSYNC, "reserved0=1 reserved4=2"},
        {VELK_IOC_CAM_FPS, "reserved0=1 fps=2"},
        {VELK_IOC_SINGLE_SHOT,
         "tid=1 uclampLevels=[2,3,4,5,6,7,8,9] percentLevel=10 requestValue=11 auxValue=12 "
         "rangeLevels1=[13,14,15,16,17,18,19,20] rangeLevels2=[21,22,23,24,25,26,27,28] "
         "rangeLevels3=[29,30,31,32,33,34,35,36] isReset=37 auxFlag=0 "
         "criticalTaskIds=[38,39,40,41,42,43,44,45,46,47,48,49,50,51,52,53,54,55,56,57] "
         "criticalTaskUclamps=[58,59,60,61,62,63,64,65,66,67,68,69,70,71,72,73,74,75,76,77] "
         "limits=[78,79,80,81] passFlag=82 sharedFlag=0 extraValues=[83,84,85]"},
        {VELK_IOC_CRITICAL_START, "tid=1 criticalValue=2"},
        {VELK_IOC_CRITICAL_END, "tid=1 criticalValue=2"},
        {VELK_IOC_ANCHOR,
         "anchor=1 reserved4=2 phase=3 reserved12=4 serial=5 latencyTarget=6 jitterTarget=7"},
};

TEST(Decoder, NamesEveryFieldAtItsPlace) {
    for (const DecodeCase& c : kDecodeCases) {
        const VELKCommand* command = findVELKCommand(c.request);
        ASSERT_NE(command, nullptr) << c.expected;
        EXPECT_EQ(command->request, c.request);
        EXPECT_EQ(desk::describeRecord(*command, countingWords().data()), c.expected);
    }
}

TEST(DecoderFields, ShowSignsBytesTextsAndTheUsedPartOfArrays) {
    VELK_TASK_INIT_PARAM task = {};
    task.targetTime = -1;
    task.uniqueTaskId = 0xFFFFFFFF;
    task.extraFlag1 = 200;
    std::memcpy(task.taskName, "a\nb", 3);
    EXPECT_EQ(desk::describeRecord(*findVELKCommand(VELK_IOC_TASK_INIT), &task),
              "uniqueTaskId=4294967295 defaultUclamp=0 targetTime=-1 taskSpecValue=0 isVIPTask=0 "
              "extraFlag0=0 extraFlag1=200 taskName=\"a\\nb\"");
    std::memset(task.taskName, 'x', sizeof task.taskName);  // without an end

    VELK_INIT_PARAM init = {};
    init.clusterLevels[1] = 5;
    EXPECT_EQ(desk::describeRecord(*findVELKCommand(VELK_IOC_INIT), &init),
              "driverParam=0 clusterLevels=[0,5] maxEfficientFreqs=[] tuningParam1=0 "
              "tuningParam2=0");

    std::string names;
    desk::visitRecord(*findVELKCommand(VELK_IOC_TASK_INIT), &task,
                      [&names](const desk::FieldValue& field) {
                          names += field.isText() ? std::string(field.text()) : "-";
                      });
    EXPECT_EQ(names, "---------xxxxxxxxxx-");
}

TEST(DecoderRequests, KnowTheTableAlone) {
    constexpr uint32_t kUnknown[] = {0,
                                     VELK_IOC_INIT - 1,
                                     VELK_IOC_ANCHOR + 1,
                                     0xFFFFFFFF,
                                     _IOR('g', 27, VELK_INIT_PARAM),
                                     _IOW('h', 27, VELK_INIT_PARAM),
                                     _IOW('g', 27, VELK_TASK_PARAM)};
    for (const uint32_t request : kUnknown) {
        EXPECT_EQ(findVELKCommand(request), nullptr) << std::hex << request;
    }
}

}  // namespace

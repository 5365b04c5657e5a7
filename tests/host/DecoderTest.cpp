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
    uint32_t number;
    const char* expected;
};

class Decoder : public testing::TestWithParam<DecodeCase> {};

TEST_P(Decoder, NamesEveryFieldAtItsPlace) {
    const VELKCommand& command = VELK_COMMANDS[GetParam().number - VELK_COMMANDS.front().number];
    const desk::RecordLayout* layout = desk::findRecordLayout(command.request);
    ASSERT_NE(layout, nullptr);
    EXPECT_EQ(layout->command, &command);
    EXPECT_EQ(desk::describeRecord(*layout, countingWords().data()), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
        Commands, Decoder,
        testing::Values(DecodeCase{27,
                                   "driverParam=1 clusterLevels=[2,3,4] maxEfficientFreqs=[5,6,7] "
                                   "tuningParam1=8 tuningParam2=9"},
                        DecodeCase{28,
                                   "uniqueTaskId=1 reserved4=2 defaultUclamp=3 targetTime=4 "
                                   "taskSpecValue=5 reserved20=6 isVIPTask=7 extraFlag0=0 "
                                   "extraFlag1=0 taskName=\"\""},
                        DecodeCase{29, "tid=1 uniqueTaskId=2 reserved8=[3,4]"},
                        DecodeCase{30, "tid=1 uniqueTaskId=2 reserved8=[3,4]"},
                        DecodeCase{31, "tid=1 uniqueTaskId=2 reserved8=3 sceneChangeMode=4"},
                        DecodeCase{32, "reserved0=1"}, DecodeCase{33, "reserved0=1 reserved4=2"},
                        DecodeCase{34, "reserved0=1 fps=2"},
                        DecodeCase{35,
                                   "tid=1 uclampLevels=[2,3,4,5,6,7,8,9] percentLevel=10 "
                                   "requestValue=11 auxValue=12 "
                                   "rangeLevels1=[13,14,15,16,17,18,19,20] "
                                   "rangeLevels2=[21,22,23,24,25,26,27,28] "
                                   "rangeLevels3=[29,30,31,32,33,34,35,36] isReset=37 auxFlag=0 "
                                   "criticalTaskIds=[38,39,40,41,42,43,44,45,46,47,48,49,50,51,52,"
                                   "53,54,55,56,57] "
                                   "criticalTaskUclamps=[58,59,60,61,62,63,64,65,66,67,68,69,70,71,"
                                   "72,73,74,75,76,77] "
                                   "limits=[78,79,80,81] passFlag=82 sharedFlag=0 "
                                   "extraValues=[83,84,85]"},
                        DecodeCase{36, "tid=1 criticalValue=2"},
                        DecodeCase{37, "tid=1 criticalValue=2"},
                        DecodeCase{38,
                                   "anchor=1 reserved4=2 phase=3 reserved12=4 serial=5 "
                                   "latencyTarget=6 jitterTarget=7"}),
        [](const auto& test) { return std::string(VELK_COMMANDS[test.param.number - 27].name); });

TEST(DecoderFields, ShowSignsBytesTextsAndTheUsedPartOfArrays) {
    VELK_TASK_INIT_PARAM task = {};
    task.targetTime = -1;
    task.uniqueTaskId = 0xFFFFFFFF;
    task.extraFlag1 = 200;
    std::memcpy(task.taskName, "a\nb", 3);
    EXPECT_EQ(desk::describeRecord(*desk::findRecordLayout(VELK_IOC_TASK_INIT), &task),
              "uniqueTaskId=4294967295 defaultUclamp=0 targetTime=-1 taskSpecValue=0 isVIPTask=0 "
              "extraFlag0=0 extraFlag1=200 taskName=\"a\\nb\"");
    std::memset(task.taskName, 'x', sizeof task.taskName);  // without an end

    VELK_INIT_PARAM init = {};
    init.clusterLevels[1] = 5;
    EXPECT_EQ(desk::describeRecord(*desk::findRecordLayout(VELK_IOC_INIT), &init),
              "driverParam=0 clusterLevels=[0,5] maxEfficientFreqs=[] tuningParam1=0 "
              "tuningParam2=0");

    std::string names;
    desk::visitRecord(*desk::findRecordLayout(VELK_IOC_TASK_INIT), &task,
                      [&names](const desk::FieldValue& field) {
                          names += field.isText() ? std::string(field.text()) : "-";
                      });
    EXPECT_EQ(names, "---------xxxxxxxxxx-");
}

TEST(DecoderRequests, KnowTheTableAlone) {
    for (const uint32_t request : {0U, VELK_IOC_INIT - 1, VELK_IOC_ANCHOR + 1, 0xFFFFFFFFU,
                                   static_cast<uint32_t>(_IOR('g', 27, VELK_INIT_PARAM)),
                                   static_cast<uint32_t>(_IOW('h', 27, VELK_INIT_PARAM)),
                                   static_cast<uint32_t>(_IOW('g', 27, VELK_TASK_PARAM))}) {
        EXPECT_EQ(desk::findRecordLayout(request), nullptr) << std::hex << request;
    }
}

}  // namespace

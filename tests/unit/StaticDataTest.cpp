// What the library fetches from the tuning services, and what it does when there is none.
#include "resource/VELKRescManagement.h"
#include "support/LibraryTest.h"

namespace fake {
namespace {

using StaticDataTest = LibraryTest;

TEST_F(StaticDataTest, MissingConvertors) {
    const std::string noOwn = "E: mpJsonConvertor is nullptr @queryStaticData";
    const std::string noCustomer = "E: mpCustomJsonConvertor is nullptr @queryStaticData";
    for (const bool isOwn : {true, false}) {
        for (const bool isCustomer : {true, false}) {
            node().reset();
            platform().sources[0].isMissing = !isOwn;
            platform().sources[1].isMissing = !isCustomer;
            call([] {
                return VELKRescManagement::createInstance(
                               {.scenario = VELKScenario{-4},
                                .customization = VELKFeatureCustomization{9}}) != nullptr;
            });
            expectTranscript(R"(open node = 100 | D: queryStaticData
                fetch convertor 0 scenario -4 customization 9
                fetch convertor 1 scenario -4 customization 0
                )" + (isOwn ? "load convertor 0" : noOwn) +
                             " | " + (isCustomer ? "load convertor 1" : noCustomer) + R"(
                fetch anchors customization 9 | fetch customer anchors customization 9
                close 100 | )" +
                             (isCustomer ? "destroy convertor 1 | " : "") +
                             (isOwn ? "destroy convertor 0 | = 1" : "= 0"));
        }
    }
}

TEST_F(StaticDataTest, DefaultsStandInWhereNoConvertorAnswers) {
    const StaticData bare;
    EXPECT_EQ(1024U, bare.clusterLevel(2));
    EXPECT_EQ(0U, bare.clusterDefaultLevel(2));
    for (const int task : {5, 20, 21, 22}) {
        EXPECT_EQ(-1, bare.targetTimeOf(task));
        EXPECT_EQ(0, bare.defaultUclampOf(task));
        EXPECT_EQ(-1, bare.specValueOf(task));
        EXPECT_FALSE(bare.isVIPTask(task));
        EXPECT_EQ("", bare.nameOf(task));
    }
    expectTranscript("");
}

// The convertor of a query is chosen by the task enum alone, but for the name.
TEST_F(StaticDataTest, TaskEnumChoosesTheConvertor) {
    platform().sources[0].tasks[24].name = "OWN_NAME";
    StaticData data;
    data.load(kParams);
    takeTranscript();
    const struct {
        int task;
        const char* source;
        const char* nameSources;
        const char* name;
    } cases[] = {{20, "0", "0", "TASK_LAST_OWN"},
                 {-3, "0", "01", ""},
                 {21, "", "0", "TASK_NEITHER"},
                 {22, "1", "01", "TASK_CUSTOM_FIRST"},
                 {24, "1", "0", "OWN_NAME"}};
    for (const auto& c : cases) {
        const auto asked = [&](const std::string& sources, const std::string& query) {
            std::string lines;
            for (const char source : sources) {
                lines += source + ('.' + query) + '(' + std::to_string(c.task) + ")\n";
            }
            return lines;
        };
        data.targetTimeOf(c.task);
        data.defaultUclampOf(c.task);
        data.specValueOf(c.task);
        data.isVIPTask(c.task);
        EXPECT_EQ(c.name, data.nameOf(c.task));
        expectTranscript(asked(c.source, "getTaskTargetTime") +
                                 asked(c.source, "getTaskDefaultUclamp") +
                                 asked(c.source, "getTaskSpecValue") +
                                 asked(c.source, "isVIPTask") + asked(c.nameSources, "getTaskName"),
                         kQuery);
    }
    platform().sources[1].isMissing = true;
    data.load(kParams);
    EXPECT_EQ("", data.nameOf(22));
    EXPECT_EQ("TASK_LAST_OWN", data.nameOf(20));
}

}  // namespace
}  // namespace fake

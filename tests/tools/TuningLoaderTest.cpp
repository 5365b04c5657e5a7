/*
 * What the loader refuses, and how it says so.
 */
#include "tuning/TuningLoader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "TuningTexts.h"
#include "support/TemporaryFolder.h"

namespace desk {
namespace {

using nlohmann::json;

std::string errorOf(const TuningResult& result) {
    const auto* error = std::get_if<TuningError>(&result);
    return error != nullptr ? error->text() : "loaded";
}

// The small tuning data with one value set, or taken away.
struct FaultCase {
    const char* file;
    const char* place;
    const char* value;  // null: taken away
    const char* error;  // without the name of the file, and without the place if it is that one
};

constexpr const char* kPlatform = "platform.json";
constexpr const char* kCustomer = "customer.json";
constexpr const char* kSettings = "settings.json";

constexpr FaultCase kFaults[] = {
        {kPlatform, "/variants/0/tasks/0/targetTime", "5",
         "unknown key, expected one of task, name, targetTimeUs, defaultUclamp, specValue, "
         "vip, groupHead"},
        {kCustomer, "/variants/0/customization", "2",
         "unknown key, expected one of scenario, tasks"},
        {kSettings, "/a~1b", "5",
         "unknown key, expected one of maxEfficientFreqsKhz, singleShotControls"},
        {kSettings, "/singleShotControls/1/control/category", "5",
         "unknown key, expected one of uclampLevels, percentLevel, requestValue, auxValue, "
         "releaseRequest, auxFlag, rangeLevels1, rangeLevels2, rangeLevels3, "
         "criticalTaskUclamps, limits, passFlag, sharedFlag, extraValues"},
        {kPlatform, "/variants/0/tasks/1/name", nullptr,
         "missing, expected a text of 1 to 64 printable characters"},
        {kPlatform, "/variants/0/tasks/1/name", R"("")",
         R"(found "", expected a text of 1 to 64 printable characters)"},
        {kSettings, "", "[1, 2]", "found [1,2], expected an object"},
        {kPlatform, "/variants/0/tasks/0/targetTimeUs", R"("fast")",
         R"(found "fast", expected a whole number from 0 to 2147483647)"},
        {kPlatform, "/variants/0/tasks/0/specValue", "1.5",
         "found 1.5, expected a whole number from -2147483648 to 2147483647"},
        {kSettings, "/maxEfficientFreqsKhz/1", "18446744073709551615",
         "found 18446744073709551615, expected a whole number from 0 to 4294967295"},
        {kPlatform, "/variants/0/tasks/1/vip", "1", "found 1, expected true or false"},
        {kPlatform, "/variants",
         R"({"a": [true, null], "long": "0123456789012345678901234567890123456789"})",
         R"(found {"a":[true,null],"long":"01234567890123456789012345678901234..., expected an )"
         "array"},
        {kPlatform, "/variants/0/tasks/0/defaultUclamp", "1025",
         "found 1025, expected a whole number from 0 to 1024"},
        {kPlatform, "/variants/0/clusterLevels", "[10, 20]",
         "found [10,20], expected an array of 8 elements"},
        {kPlatform, "/variants/0/clusterDefaultLevels/2", "2000",
         "found 2000, expected a whole number from 0 to 1024"},
        {kPlatform, "/variants/0/tasks/0/task", "21",
         "found 21, expected a whole number from 0 to 20"},
        {kCustomer, "/variants/0/tasks/0/task", "21",
         "found 21, expected a whole number from 22 to 2147483647"},
        {kPlatform, "/variants/0/tasks/0/groupHead", "4",
         "found 4, expected 0 or a task of the same variant"},
        {kPlatform, "/anchorSpecs/0/anchors/1/jitterUs", "-1",
         "found -1, expected a whole number from 0 to 2147483647"},
        {kSettings, "/singleShotControls/1/control/percentLevel", "101",
         "found 101, expected a whole number from -1 to 100"},
        {kSettings, "/singleShotControls/1/control/rangeLevels2", "[1, 2, 3, 4, 5, 6, 7, 8, 9]",
         "found [1,2,3,4,5,6,7,8,9], expected an array of 0 to 8 elements"},
        {kSettings, "/singleShotControls/1/control/criticalTaskUclamps", "[[3]]",
         "/singleShotControls/1/control/criticalTaskUclamps/0: found [3], expected an array of "
         "2 elements"},
        {kSettings, "/singleShotControls/1/control/criticalTaskUclamps", "[[3, -1]]",
         "/singleShotControls/1/control/criticalTaskUclamps/0/1: found -1, expected a whole "
         "number from 0 to 1024"},
        {kPlatform, "/variants/0/tasks/1/task", "3",
         "a second entry for task 3, expected each task once in its variant"},
        {kPlatform, "/variants/3/customization", nullptr,
         "/variants/3: a second entry for scenario 1 and every customization, expected one "
         "entry for each"},
        {kPlatform, "/anchorSpecs/2/scenario", "1",
         "/anchorSpecs/2: a second entry for scenario 1 and every customization, expected one "
         "entry for each"},
        {kPlatform, "/anchorSpecs/0/anchors/1/anchor", "1",
         "a second entry for anchor 1, expected each anchor once in its list"},
        {kSettings, "/singleShotControls/1/scenario", "8",
         "/singleShotControls/1: a second entry for category 5 and scenario 8, expected one "
         "entry for each"},
};

TEST(TuningFaults, AreNamedWithPlaceFindingAndExpectation) {
    for (const FaultCase& c : kFaults) {
        TuningTexts texts = smallTuning();
        std::string& text = c.file == kPlatform   ? texts.platform
                            : c.file == kCustomer ? *texts.customer
                                                  : *texts.settings;
        json document = json::parse(text);
        const json::json_pointer place(c.place);
        if (c.value != nullptr) {
            document[place] = json::parse(c.value);
        } else {
            document.at(place.parent_pointer()).erase(place.back());
        }
        text = document.dump();
        const bool isElsewhere = *c.error == '/' || place.empty();
        EXPECT_EQ(errorOf(parseTuning(texts)),
                  std::string(c.file) + ": " + (isElsewhere ? "" : c.place + std::string(": ")) +
                          c.error);
    }
}

TEST(TuningLoader, NamesDuplicateKeysByTheirPath) {
    TuningTexts texts = smallTuning();
    texts.settings = R"({"singleShotControls": [{"category": 1, "scenario": 1, "control": {}},
        {"category": 5, "scenario": 8, "control": {"auxFlag": true, "auxFlag": false}}]})";
    EXPECT_EQ(errorOf(parseTuning(texts)),
              "settings.json: /singleShotControls/1/control/auxFlag: duplicate key, expected each "
              "key once in its object");
}

TEST(TuningLoader, NamesWhatCannotBeReadAtAll) {
    TuningTexts texts = smallTuning();
    texts.platform = "{\n  \"variants\": [\n    {,}\n  ]\n}";
    EXPECT_EQ(errorOf(parseTuning(texts)),
              "platform.json: no JSON at line 3, column 6, expected one JSON document");
    texts.platform = R"({"variants": 1e999})";
    EXPECT_EQ(errorOf(parseTuning(texts)),
              "platform.json: /variants: found a number that is too large, expected a number in "
              "the range of a double");
    const size_t depth = 200'000;
    texts.platform = R"({"variants": [5, )" + std::string(depth, '[') + "]}";
    EXPECT_TRUE(errorOf(parseTuning(texts)).starts_with("platform.json: /variants/1/0/0/0"));
    EXPECT_TRUE(errorOf(parseTuning(texts))
                        .ends_with("/0: nested too deeply, expected at most 100 levels"));
}

TEST(TuningLoader, NamesEveryFaultOfEveryFile) {
    TuningTexts texts = smallTuning();
    texts.platform = R"({"variants": [{"tasks": [
        {"task": 1, "name": "A", "targetTimeUs": 5}, {"task": "1", "vip": 3}]}]})";
    texts.settings = "{";
    const std::string tasks = "platform.json: /variants/0/tasks/";
    EXPECT_EQ(errorOf(parseTuning(texts)),
              "platform.json: /variants/0/clusterLevels: missing, expected an array of 8 elements\n"
              "platform.json: /variants/0/clusterDefaultLevels: missing, expected an array of 3 "
              "elements\n" +
                      tasks + "0/defaultUclamp: missing, expected a whole number from 0 to 1024\n" +
                      tasks + "1/task: found \"1\", expected a whole number from 0 to 20\n" +
                      tasks + "1/name: missing, expected a text of 1 to 64 printable characters\n" +
                      tasks +
                      "1/targetTimeUs: missing, expected a whole number from 0 to 2147483647\n" +
                      tasks + "1/defaultUclamp: missing, expected a whole number from 0 to 1024\n" +
                      tasks + "1/vip: found 3, expected true or false\n" +
                      "settings.json: no JSON at column 2, expected one JSON document");
}

TEST(TuningLoader, NeedsThePlatformsFileAloneAndNamesFilesWithTheirFolder) {
    const TemporaryFolder temporary;
    const std::filesystem::path& folder = temporary.path();
    EXPECT_EQ(errorOf(loadTuning(folder)),
              (folder / "platform.json").string() +
                      ": the file cannot be read (No such file or directory), expected a readable "
                      "JSON file");
    std::ofstream(folder / "platform.json") << kPlatformText;
    EXPECT_EQ(errorOf(loadTuning(folder)), "loaded");
    std::ofstream(folder / "customer.json") << "";
    EXPECT_EQ(errorOf(loadTuning(folder)),
              (folder / "customer.json").string() +
                      ": no JSON at column 1, expected one JSON document");
    std::filesystem::remove(folder / "customer.json");
    std::filesystem::create_symlink("gone.json", folder / "customer.json");
    EXPECT_NE(errorOf(loadTuning(folder)).find("customer.json: the file cannot be read (No such"),
              std::string::npos);
}

}  // namespace
}  // namespace desk

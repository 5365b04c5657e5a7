/*
 * What the loader refuses, and how it says so.
 */
#include "tuning/TuningLoader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "TuningTexts.h"

namespace desk {
namespace {

using nlohmann::json;

std::string errorOf(const TuningResult& result) {
    const auto* error = std::get_if<TuningError>(&result);
    return error != nullptr ? error->text() : "loaded";
}

// One change to the small tuning data, as a JSON patch operation.
struct FaultCase {
    const char* name;
    const char* file;
    const char* patch;
    const char* error;  // without the name of the file
};

void PrintTo(const FaultCase& fault, std::ostream* out) {
    *out << fault.name;
}

class TuningFaults : public testing::TestWithParam<FaultCase> {};

TEST_P(TuningFaults, AreNamedWithPlaceFindingAndExpectation) {
    const std::string file = GetParam().file;
    TuningTexts texts = smallTuning();
    std::string& text = file == "platform.json"   ? texts.platform
                        : file == "customer.json" ? *texts.customer
                                                  : *texts.settings;
    text = json::parse(text).patch(json::array({json::parse(GetParam().patch)})).dump();
    EXPECT_EQ(errorOf(parseTuning(texts)), file + ": " + GetParam().error);
}

constexpr const char* kPlatform = "platform.json";
constexpr const char* kCustomer = "customer.json";
constexpr const char* kSettings = "settings.json";
constexpr const char* kTaskKeys =
        "/variants/0/tasks/0/targetTime: unknown key, expected one of task, name, targetTimeUs, "
        "defaultUclamp, specValue, vip, groupHead";

const FaultCase kFaults[] = {
        {"unknownKey", kPlatform,
         R"({"op": "add", "path": "/variants/0/tasks/0/targetTime", "value": 5})", kTaskKeys},
        {"unknownKeyIsEscaped", kSettings, R"({"op": "add", "path": "/a~1b", "value": 5})",
         "/a~1b: unknown key, expected one of maxEfficientFreqsKhz, singleShotControls"},
        {"missingKey", kPlatform, R"({"op": "remove", "path": "/variants/0/tasks/1/name"})",
         "/variants/0/tasks/1/name: missing, expected all of task, name, targetTimeUs, "
         "defaultUclamp"},
        {"documentIsNoObject", kSettings, R"({"op": "replace", "path": "", "value": [1, 2]})",
         "found [1,2], expected an object with the keys maxEfficientFreqsKhz, singleShotControls"},
        {"textForNumber", kPlatform,
         R"({"op": "replace", "path": "/variants/0/tasks/0/targetTimeUs", "value": "fast"})",
         "/variants/0/tasks/0/targetTimeUs: found \"fast\", expected a whole number from 0 to "
         "2147483647"},
        {"fractionForNumber", kPlatform,
         R"({"op": "add", "path": "/variants/0/tasks/0/specValue", "value": 1.5})",
         "/variants/0/tasks/0/specValue: found 1.5, expected a whole number from -2147483648 to "
         "2147483647"},
        {"numberBeyondSignedRange", kSettings,
         R"({"op": "replace", "path": "/maxEfficientFreqsKhz/1", "value": 18446744073709551615})",
         "/maxEfficientFreqsKhz/1: found 18446744073709551615, expected a whole number from 0 to "
         "4294967295"},
        {"numberForFlag", kPlatform,
         R"({"op": "replace", "path": "/variants/0/tasks/1/vip", "value": 1})",
         "/variants/0/tasks/1/vip: found 1, expected true or false"},
        {"emptyName", kPlatform,
         R"({"op": "replace", "path": "/variants/0/tasks/1/name", "value": ""})",
         "/variants/0/tasks/1/name: found \"\", expected a text of 1 to 64 characters"},
        {"longFindingIsShortened", kPlatform,
         R"({"op": "replace", "path": "/variants", "value": "0123456789012345678901234567890123456789012345678901234567890123456789"})",
         "/variants: found \"01234567890123456789012345678901234567890123456789012345678..., "
         "expected an array"},
        {"uclampTooLarge", kPlatform,
         R"({"op": "replace", "path": "/variants/0/tasks/0/defaultUclamp", "value": 1025})",
         "/variants/0/tasks/0/defaultUclamp: found 1025, expected a whole number from 0 to 1024"},
        {"platformTaskInNobodysPlace", kPlatform,
         R"({"op": "replace", "path": "/variants/0/tasks/0/task", "value": 21})",
         "/variants/0/tasks/0/task: found 21, expected a whole number from 0 to 20"},
        {"customerTaskInNobodysPlace", kCustomer,
         R"({"op": "replace", "path": "/variants/0/tasks/0/task", "value": 21})",
         "/variants/0/tasks/0/task: found 21, expected a whole number from 22 to 2147483647"},
        {"duplicateTask", kPlatform,
         R"({"op": "replace", "path": "/variants/0/tasks/1/task", "value": 3})",
         "/variants/0/tasks/1/task: a second entry for task 3, expected each task once in its "
         "variant"},
        {"groupHeadOutsideVariant", kPlatform,
         R"({"op": "replace", "path": "/variants/0/tasks/0/groupHead", "value": 4})",
         "/variants/0/tasks/0/groupHead: found 4, expected 0 or a task of the same variant"},
        {"duplicateVariant", kPlatform, R"({"op": "remove", "path": "/variants/3/customization"})",
         "/variants/3: a second entry for scenario 1 and every customization, expected one entry "
         "for each"},
        {"tooFewLevels", kPlatform, R"({"op": "remove", "path": "/variants/0/clusterLevels/7"})",
         "/variants/0/clusterLevels: found [10,20,30,40,50,60,70], expected an array of 8 "
         "elements"},
        {"levelTooLarge", kPlatform,
         R"({"op": "replace", "path": "/variants/0/clusterDefaultLevels/2", "value": 2000})",
         "/variants/0/clusterDefaultLevels/2: found 2000, expected a whole number from 0 to 1024"},
        {"customerVariantWithCustomization", kCustomer,
         R"({"op": "add", "path": "/variants/0/customization", "value": 2})",
         "/variants/0/customization: unknown key, expected one of tasks, scenario"},
        {"duplicateAnchorSpecs", kPlatform,
         R"({"op": "replace", "path": "/anchorSpecs/2/scenario", "value": 1})",
         "/anchorSpecs/2: a second entry for scenario 1 and every customization, expected one "
         "entry for each"},
        {"duplicateAnchor", kPlatform,
         R"({"op": "replace", "path": "/anchorSpecs/0/anchors/1/anchor", "value": 1})",
         "/anchorSpecs/0/anchors/1/anchor: a second entry for anchor 1, expected each anchor once "
         "in its list"},
        {"negativeTarget", kPlatform,
         R"({"op": "replace", "path": "/anchorSpecs/0/anchors/1/jitterUs", "value": -1})",
         "/anchorSpecs/0/anchors/1/jitterUs: found -1, expected a whole number from 0 to "
         "2147483647"},
        {"duplicateControl", kSettings,
         R"({"op": "replace", "path": "/singleShotControls/1/scenario", "value": 8})",
         "/singleShotControls/1: a second entry for category 5 and scenario 8, expected one entry "
         "for each"},
        {"controlWithCategory", kSettings,
         R"({"op": "add", "path": "/singleShotControls/1/control/category", "value": 5})",
         "/singleShotControls/1/control/category: unknown key, expected one of uclampLevels, "
         "percentLevel, requestValue, auxValue, releaseRequest, auxFlag, rangeLevels1, "
         "rangeLevels2, rangeLevels3, criticalTaskUclamps, limits, passFlag, sharedFlag, "
         "extraValues"},
        {"percentTooLarge", kSettings,
         R"({"op": "add", "path": "/singleShotControls/1/control/percentLevel", "value": 101})",
         "/singleShotControls/1/control/percentLevel: found 101, expected a whole number from -1 "
         "to 100"},
        {"nineLevels", kSettings,
         R"({"op": "add", "path": "/singleShotControls/1/control/rangeLevels2",
             "value": [1, 2, 3, 4, 5, 6, 7, 8, 9]})",
         "/singleShotControls/1/control/rangeLevels2: found [1,2,3,4,5,6,7,8,9], expected an "
         "array of 0 to 8 elements"},
        {"criticalTaskWithoutUclamp", kSettings,
         R"({"op": "add", "path": "/singleShotControls/1/control/criticalTaskUclamps",
             "value": [[3]]})",
         "/singleShotControls/1/control/criticalTaskUclamps/0: found [3], expected an array of 2 "
         "elements"},
        {"criticalUclampNegative", kSettings,
         R"({"op": "add", "path": "/singleShotControls/1/control/criticalTaskUclamps",
             "value": [[3, -1]]})",
         "/singleShotControls/1/control/criticalTaskUclamps/0/1: found -1, expected a whole "
         "number from 0 to 1024"},
};

INSTANTIATE_TEST_SUITE_P(All, TuningFaults, testing::ValuesIn(kFaults),
                         [](const auto& each) { return each.param.name; });

TEST(TuningLoader, NamesDuplicateKeysByTheirPath) {
    TuningTexts texts = smallTuning();
    texts.settings = R"({"singleShotControls": [{"category": 1, "scenario": 1, "control": {}},
        {"category": 5, "scenario": 8, "control": {"auxFlag": true, "auxFlag": false}}]})";
    EXPECT_EQ(errorOf(parseTuning(texts)),
              "settings.json: /singleShotControls/1/control/auxFlag: duplicate key, expected each "
              "key once in its object");
}

TEST(TuningLoader, NamesLineAndColumnOfASyntaxError) {
    TuningTexts texts = smallTuning();
    texts.platform = "{\n  \"variants\": [\n    {,}\n  ]\n}";
    EXPECT_EQ(errorOf(parseTuning(texts)),
              "platform.json: no JSON at line 3, column 6, expected one JSON document");
    texts.platform = "";
    EXPECT_EQ(errorOf(parseTuning(texts)),
              "platform.json: no JSON at line 1, column 1, expected one JSON document");
    texts.platform = R"({"variants": 1e999})";
    EXPECT_EQ(errorOf(parseTuning(texts)),
              "platform.json: a number is too large to be read, expected numbers of at most 64 "
              "bits");
}

class TuningFolder : public testing::Test {
  protected:
    TuningFolder() { std::filesystem::create_directory(mPath); }
    ~TuningFolder() override { std::filesystem::remove_all(mPath); }

    void write(const char* file, const char* text) const { std::ofstream(mPath / file) << text; }

    const std::filesystem::path mPath =
            std::filesystem::path(testing::TempDir()) /
            ("tuning-" + std::to_string(getpid()) + "-" +
             testing::UnitTest::GetInstance()->current_test_info()->name());
};

TEST_F(TuningFolder, NeedsThePlatformsFileAlone) {
    EXPECT_EQ(errorOf(loadTuning(mPath)),
              (mPath / "platform.json").string() +
                      ": the file cannot be read, expected a readable JSON file");
    write("platform.json", kPlatformText);
    const TuningResult loaded = loadTuning(mPath);
    ASSERT_EQ(errorOf(loaded), "loaded");
    EXPECT_FALSE(std::get<std::shared_ptr<const TuningData>>(loaded)->customer);
}

TEST_F(TuningFolder, NamesTheFileWithItsPath) {
    write("platform.json", kPlatformText);
    write("customer.json", "[]");
    EXPECT_EQ(errorOf(loadTuning(mPath)),
              (mPath / "customer.json").string() +
                      ": found [], expected an object with the keys variants, anchorSpecs");
}

}  // namespace
}  // namespace desk

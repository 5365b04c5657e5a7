/*
 * What the tuning services answer from the data that is installed.
 */
#include "tuning/TuningPlatform.h"

#include <gtest/gtest.h>

#include <tuple>

#include "ControlMembers.h"
#include "TuningTexts.h"
#include "VELKJsonConvertor.h"
#include "VELKSettingsProvider.h"

namespace desk {
namespace {

constexpr auto kScenario = static_cast<VELKScenario>(1);
constexpr auto kOtherScenario = static_cast<VELKScenario>(6);
constexpr auto kCustomization = static_cast<VELKFeatureCustomization>(2);
constexpr auto kOtherCustomization = static_cast<VELKFeatureCustomization>(9);

class TuningPlatform : public testing::Test {
  protected:
    TuningPlatform() { install(smallTuning()); }
    ~TuningPlatform() override { installTuning(nullptr); }

    static void install(const TuningTexts& texts) {
        installTuning(std::get<std::shared_ptr<const TuningData>>(parseTuning(texts)));
    }

    static std::unique_ptr<VELKJsonConvertor> convertor(ENUM_VELK_JSON_SOURCE source,
                                                        VELKScenario scenario,
                                                        VELKFeatureCustomization customization) {
        auto made = VELKJsonConvertor::createInstance(source, scenario, customization);
        if (made != nullptr) {
            made->load();
        }
        return made;
    }
};

TEST_F(TuningPlatform, TheBestVariantServesAlone) {
    const auto levelFor = [](VELKScenario scenario, VELKFeatureCustomization customization) {
        return convertor(VELK_JSON_SOURCE_PLATFORM, scenario, customization)->getClusterLevel(0);
    };
    EXPECT_EQ(levelFor(kScenario, kCustomization), 3U);
    EXPECT_EQ(levelFor(kScenario, kOtherCustomization), 1U);
    EXPECT_EQ(levelFor(kOtherScenario, kCustomization), 2U);
    EXPECT_EQ(levelFor(kOtherScenario, kOtherCustomization), 10U);
    // It has no tasks, and those of other variants do not stand in.
    EXPECT_EQ(convertor(VELK_JSON_SOURCE_PLATFORM, kScenario, kCustomization)->getTaskName(5), "");
}

TEST_F(TuningPlatform, ConvertorAnswersPerTaskAndPerLevel) {
    const auto platform = convertor(VELK_JSON_SOURCE_PLATFORM, kOtherScenario, kOtherCustomization);
    const auto answersFor = [&platform](int task) {
        return std::tuple(platform->getTaskName(task), platform->getTaskTargetTime(task),
                          platform->getTaskDefaultUclamp(task), platform->getTaskSpecValue(task),
                          platform->isVIPTask(task), platform->getGroupHeadTask(task, {}));
    };
    EXPECT_EQ(answersFor(3), std::tuple("TASK_SCALE", 900, 320, -1, false, 5));
    EXPECT_EQ(answersFor(5), std::tuple("TASK_RENDER", 3, 400, 7, true, 0));
    EXPECT_EQ(answersFor(4), std::tuple("", -2, 0, -1, false, 0));
    EXPECT_EQ(platform->getClusterLevel(7), 80U);
    EXPECT_EQ(platform->getClusterLevel(8), 0U);
    EXPECT_EQ(platform->getClusterLevel(-1), 0U);
    EXPECT_EQ(platform->getClusterDefaultLevel(2), 31U);
    EXPECT_EQ(platform->getClusterDefaultLevel(3), 0U);
}

TEST_F(TuningPlatform, ConvertorKnowsNothingUntilItIsLoaded) {
    const auto platform = VELKJsonConvertor::createInstance(VELK_JSON_SOURCE_PLATFORM,
                                                            kOtherScenario, kOtherCustomization);
    EXPECT_EQ(platform->getTaskTargetTime(3), -2);
    EXPECT_EQ(platform->getClusterLevel(0), 0U);
    platform->load();
    EXPECT_EQ(platform->getTaskTargetTime(3), 900);
    EXPECT_EQ(platform->getClusterLevel(0), 10U);
}

TEST_F(TuningPlatform, CustomerDataMayBeAbsentForAScenarioOrAltogether) {
    const auto customer = convertor(VELK_JSON_SOURCE_CUSTOMER, kScenario, VELK_CUSTOMIZATION_NONE);
    EXPECT_EQ(customer->getTaskName(24), "TASK_CUSTOM_JPEG");
    EXPECT_EQ(convertor(VELK_JSON_SOURCE_CUSTOMER, kOtherScenario, VELK_CUSTOMIZATION_NONE),
              nullptr);
    TuningTexts platformAlone = smallTuning();
    platformAlone.customer = std::nullopt;
    install(platformAlone);
    EXPECT_EQ(convertor(VELK_JSON_SOURCE_CUSTOMER, kScenario, VELK_CUSTOMIZATION_NONE), nullptr);
    EXPECT_TRUE(VELKSettingsProvider::getCustAnchorSpecMapProvider(kCustomization).empty());
}

TEST_F(TuningPlatform, AnchorSpecsOfACustomizationReplaceTheGeneralOnes) {
    using Anchors = std::unordered_map<int, std::array<int, 2>>;
    const auto general = VELKSettingsProvider::getAnchorSpecMapProvider(kOtherCustomization);
    EXPECT_EQ(general, (VELKAnchorSpecMap{{kScenario, Anchors{{1, {100, 10}}, {2, {0, 20}}}},
                                          {static_cast<VELKScenario>(4), Anchors{}}}));
    const auto special = VELKSettingsProvider::getAnchorSpecMapProvider(kCustomization);
    EXPECT_EQ(special, (VELKAnchorSpecMap{{kScenario, Anchors{{1, {200, 0}}}},
                                          {static_cast<VELKScenario>(4), Anchors{}}}));
    EXPECT_EQ(VELKSettingsProvider::getCustAnchorSpecMapProvider(kCustomization),
              (VELKAnchorSpecMap{{kScenario, Anchors{{7, {5, 0}}}}}));
}

TEST_F(TuningPlatform, SettingsHoldFrequenciesAndWholeControls) {
    EXPECT_EQ(VELKSettingsProvider::getMaxEfficientCPUFreqProvider(2), 2600000U);
    EXPECT_EQ(VELKSettingsProvider::getMaxEfficientCPUFreqProvider(3), 0U);
    const auto controls = VELKSettingsProvider::getSingleShotControlProvider();
    ASSERT_EQ(controls.size(), 1U);
    using Levels = std::vector<uint32_t>;
    const auto expected = std::tuple(
            5, Levels{1, 2}, 80, false, 3, 4, true, true, Levels{5}, Levels{6}, Levels{7},
            std::multimap<int32_t, int32_t>{{3, 300}, {3, 100}, {24, 900}},
            std::array<uint32_t, 4>{8, 9, 10, 11}, true, true, std::array<int32_t, 3>{12, -13, 14});
    EXPECT_EQ(membersOf(controls.at(5).at(VELK_SCENARIO_FALLBACK)), expected);
    VELKSingleShotControl plain;
    plain.category = 5;
    EXPECT_EQ(membersOf(controls.at(5).at(kScenario)), membersOf(plain));
}

TEST_F(TuningPlatform, AConvertorKeepsTheDataThatItWasMadeWith) {
    const auto platform = convertor(VELK_JSON_SOURCE_PLATFORM, kOtherScenario, kOtherCustomization);
    installTuning(nullptr);
    EXPECT_EQ(platform->getTaskName(5), "TASK_RENDER");
    EXPECT_EQ(convertor(VELK_JSON_SOURCE_PLATFORM, kOtherScenario, kOtherCustomization), nullptr);
    EXPECT_TRUE(VELKSettingsProvider::getAnchorSpecMapProvider(kCustomization).empty());
    EXPECT_TRUE(VELKSettingsProvider::getSingleShotControlProvider().empty());
    EXPECT_EQ(VELKSettingsProvider::getMaxEfficientCPUFreqProvider(0), 0U);
}

}  // namespace
}  // namespace desk

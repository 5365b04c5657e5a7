#include <cutils/properties.h>
#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <string>
#include <thread>

namespace {

constexpr const char* kKey = "test.desk.value";

struct CoercionCase {
    const char* value;
    int8_t flag;     // 7: the default
    int32_t number;  // 7: the default
};

TEST(Properties, CoerceAsOnADevice) {
    for (const CoercionCase& c : {
                 CoercionCase{"1", 1, 1},
                 {"y", 1, 7},
                 {"yes", 1, 7},
                 {"on", 1, 7},
                 {"true", 1, 7},
                 {"0", 0, 0},
                 {"n", 0, 7},
                 {"no", 0, 7},
                 {"off", 0, 7},
                 {"false", 0, 7},
                 {"", 7, 7},
                 {"TRUE", 7, 7},
                 {" on", 7, 7},
                 {"2", 7, 2},
                 {"-201500", 7, -201500},
                 {"  12 rest", 7, 12},
                 {"0x10", 7, 16},
                 {"010", 7, 8},
                 {"2147483647", 7, INT32_MAX},
                 {"2147483648", 7, 7},
                 {"-2147483648", 7, INT32_MIN},
                 {"-2147483649", 7, 7},
                 {"99999999999999999999", 7, 7},
                 {"x1", 7, 7},
         }) {
        ASSERT_EQ(property_set(kKey, c.value), 0);
        errno = EXDEV;
        EXPECT_EQ(property_get_bool(kKey, 7), c.flag) << '"' << c.value << '"';
        EXPECT_EQ(property_get_int32(kKey, 7), c.number) << '"' << c.value << '"';
        EXPECT_EQ(errno, EXDEV);
    }
}

TEST(Properties, GiveTheDefaultWhenUnset) {
    std::array<char, PROPERTY_VALUE_MAX> value = {};
    EXPECT_EQ(property_get("test.desk.unset", value.data(), "fallback"), 8);
    EXPECT_STREQ(value.data(), "fallback");
    EXPECT_EQ(property_get("test.desk.unset", value.data(), nullptr), 0);
    EXPECT_STREQ(value.data(), "");
    EXPECT_EQ(property_get_bool("test.desk.unset", -3), -3);
    EXPECT_EQ(property_get_int32("test.desk.unset", -3), -3);
    EXPECT_EQ(property_get_bool(nullptr, 1), 1);
    EXPECT_EQ(property_get_int32(nullptr, 5), 5);
}

TEST(Properties, HoldTheLongestValueAndRefuseALongerOne) {
    const std::string longest(PROPERTY_VALUE_MAX - 1, 'v');
    ASSERT_EQ(property_set(kKey, longest.c_str()), 0);
    EXPECT_EQ(property_set(kKey, (longest + 'v').c_str()), -1);
    EXPECT_EQ(property_set("", "v"), -1);
    EXPECT_EQ(property_set(nullptr, "v"), -1);
    std::array<char, PROPERTY_VALUE_MAX> value = {};
    EXPECT_EQ(property_get(kKey, value.data(), "unused"), PROPERTY_VALUE_MAX - 1);
    EXPECT_EQ(value.data(), longest);

    ASSERT_EQ(property_set(kKey, nullptr), 0);
    EXPECT_EQ(property_get(kKey, value.data(), "empty"), 5);
}

TEST(Properties, MayChangeWhileOthersRead) {
    ASSERT_EQ(property_set(kKey, "1"), 0);
    std::thread writer([] {
        for (int i = 0; i < 2000; ++i) {
            property_set(kKey, i % 2 == 0 ? "1" : "2");
            property_set(("test.desk." + std::to_string(i % 50)).c_str(), "x");
        }
    });
    int strange = 0;
    for (int i = 0; i < 2000; ++i) {
        const int32_t value = property_get_int32(kKey, 0);
        strange += value == 1 || value == 2 ? 0 : 1;
    }
    writer.join();
    EXPECT_EQ(strange, 0);
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>

#include "driver/InjectedFaults.h"

namespace {

using desk::InjectedFaults;
using testing::AllOf;
using testing::HasSubstr;

constexpr size_t placeOf(uint32_t number) {
    return number - VELK_COMMANDS.front().number;
}

TEST(InjectedFaultsText, TakesEveryItem) {
    const InjectedFaults result = InjectedFaults::parse(
            "28=EINVAL*3 ,taskStart = EIO, open=EACCES * "
            "2,anchor=EAGAIN,37=EINTR,36=ENOTSUP,"
            "slow=7ms,slow=29:50us,slow = vsync : 2s");
    EXPECT_EQ(result.open.error, EACCES);
    EXPECT_EQ(result.open.times, 2);
    EXPECT_EQ(result.commands[placeOf(28)].error, EINVAL);
    EXPECT_EQ(result.commands[placeOf(28)].times, 3);
    EXPECT_EQ(result.commands[placeOf(29)].error, EIO);
    EXPECT_EQ(result.commands[placeOf(29)].times, InjectedFaults::kAlways);
    EXPECT_EQ(result.commands[placeOf(37)].error, EINTR);
    EXPECT_EQ(result.commands[placeOf(36)].error, ENOTSUP);
    EXPECT_EQ(result.commands[placeOf(27)].error, 0);
    EXPECT_EQ(result.delays[placeOf(27)], std::chrono::milliseconds(7));
    EXPECT_EQ(result.delays[placeOf(29)], std::chrono::microseconds(50));
    EXPECT_EQ(result.delays[placeOf(33)], std::chrono::seconds(2));

    const InjectedFaults absent = InjectedFaults::parse("absent");
    EXPECT_EQ(absent.open.error, ENOENT);
    EXPECT_EQ(absent.open.times, InjectedFaults::kAlways);
}

struct BadText {
    const char* text;
    const char* item;
    const char* expected;
};

TEST(InjectedFaultsText, SaysWhatIsWrongAndWhatWasExpected) {
    for (const BadText& bad : {
                 BadText{"nonsense", "\"nonsense\": there is no =", "absent, open=ERRNO"},
                 BadText{"28=EINVAL,,29=EIO", "\"\": it is empty", "an item between two commas"},
                 BadText{"28=EINVAL,", "\"\": it is empty", "an item between two commas"},
                 BadText{"26=EIO", "\"26\" is no command", "a number from 27 to "},
                 BadText{"99=EIO", "\"99\" is no command", "one of init taskInit taskStart"},
                 BadText{"taskstart=EIO", "\"taskstart\" is no command", "taskStart"},
                 BadText{"28=EFOO", "\"EFOO\" is no errno", "a name such as EINVAL"},
                 BadText{"open=", "\"\" is no errno", "a name such as EINVAL"},
                 BadText{"open=13", "\"13\" is no errno", "a name such as EINVAL"},
                 BadText{"28=EIO*", "\"\" is no count", "1 or more after the *"},
                 BadText{"28=EIO*0", "\"0\" is no count", "1 or more after the *"},
                 BadText{"28=EIO*-1", "\"-1\" is no count", "1 or more after the *"},
                 BadText{"slow=50", "\"50\" is no duration", "us, ms or s, at most 10s"},
                 BadText{"slow=11s", "\"11s\" is no duration", "at most 10s"},
                 BadText{"slow=99999999999999999999us", "is no duration", "at most 10s"},
                 BadText{"slow=29:", "\"\" is no duration", "us, ms or s"},
                 BadText{"absent,open=EIO", "\"open=EIO\": an earlier item says otherwise",
                         "one item"},
                 BadText{"28=EIO,taskInit=EIO", "\"taskInit=EIO\": an earlier item", "one item"},
                 BadText{"slow=28:1us,slow=1us", "\"slow=1us\": an earlier item", "one item"},
                 BadText{"slow=28:1us,slow=28:2us", "\"slow=28:2us\": an earlier", "one item"},
                 BadText{"slow=x:1us", "\"x\" is no command", "a number from 27 to "},
         }) {
        try {
            InjectedFaults::parse(bad.text);
            ADD_FAILURE() << bad.text << " was taken";
        } catch (const std::invalid_argument& error) {
            EXPECT_THAT(error.what(), AllOf(HasSubstr("driver item \""), HasSubstr(bad.item),
                                            HasSubstr(bad.expected)));
        }
    }
}

}  // namespace

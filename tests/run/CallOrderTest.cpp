/*
 * The order of calls that arrive out of order.
 */
#include <gtest/gtest.h>

#include "run/CallOrder.h"

namespace desk {
namespace {

LiveCall callOf(const char* name, const std::vector<uint64_t>& sequences) {
    LiveCall call;
    call.threadName = name;
    for (const uint64_t sequence : sequences) {
        call.commands.emplace_back().sequence = sequence;
    }
    return call;
}

std::string takeAll(CallOrder& order) {
    std::string names;
    while (const std::optional<LiveCall> call = order.next()) {
        names += call->threadName;
    }
    return names;
}

TEST(CallOrder, IsThatOfTheFirstCommands) {
    CallOrder order;
    order.add(callOf("b", {3}));
    order.add(callOf("c", {}));
    order.add(callOf("e", {6, 7}));
    EXPECT_EQ(takeAll(order), "");
    order.add(callOf("a", {1, 2, 4}));
    EXPECT_EQ(takeAll(order), "abc");
    order.add(callOf("d", {5}));
    EXPECT_EQ(takeAll(order), "de");
}

TEST(CallOrder, GoesOnWithoutWhatDoesNotArrive) {
    CallOrder order;
    order.add(callOf("b", {2}));
    order.add(callOf("c", {3}));
    EXPECT_EQ(takeAll(order), "");
    EXPECT_EQ(order.nextArrived()->threadName, "b");
    EXPECT_EQ(takeAll(order), "c");
    order.add(callOf("a", {1}));
    EXPECT_EQ(takeAll(order), "a");
    EXPECT_TRUE(order.isEmpty());
}

}  // namespace
}  // namespace desk

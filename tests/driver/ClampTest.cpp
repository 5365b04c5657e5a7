// The clamps that a thread gets, as sched_getattr reports them.
#include <fmt/format.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "KernelNode.h"

namespace kernel {
namespace {

constexpr uint64_t kKeepAll = 0x18;
constexpr uint64_t kClampMin = 0x20;
constexpr uint64_t kClampMax = 0x40;

// The C library has no declaration of the kernel's struct sched_attr.
struct SchedAttributes {
    uint32_t size;
    uint32_t policy;
    uint64_t flags;
    int32_t nice;
    uint32_t priority;
    uint64_t runtime;
    uint64_t deadline;
    uint64_t period;
    uint32_t utilMin;
    uint32_t utilMax;
};

class Clamp : public testing::Test {
  protected:
    void SetUp() override {
        if (!kernelHasClamps()) {
            GTEST_SKIP() << "this kernel has no utilisation clamps";
        }
        ASSERT_EQ(mActor.init(), 0);
        ASSERT_EQ(mActor.registerTask(1, 300), 0);
        ASSERT_EQ(mActor.registerTask(2, 500), 0);
    }

    static SchedAttributes attributesOf(const Actor& actor) {
        SchedAttributes attributes = {};
        EXPECT_EQ(syscall(SYS_sched_getattr, actor.tid(), &attributes, sizeof attributes, 0), 0);
        return attributes;
    }

    static uint32_t utilMin(const Actor& actor) { return attributesOf(actor).utilMin; }

    static void setClamps(const Actor& actor, uint64_t which, uint32_t least, uint32_t most = 0) {
        SchedAttributes attributes = {};
        attributes.size = sizeof attributes;
        attributes.flags = kKeepAll | which;
        attributes.utilMin = least;
        attributes.utilMax = most;
        EXPECT_EQ(syscall(SYS_sched_setattr, actor.tid(), &attributes, 0), 0) << strerror(errno);
    }

    static void setPolicy(const Actor& actor, int policy, int priority) {
        const sched_param parameters = {priority};
        EXPECT_EQ(sched_setscheduler(static_cast<pid_t>(actor.tid()), policy, &parameters), 0);
    }

    NodeFile mFile;
    Actor mActor{mFile};
    Actor mOther{mFile};
};

TEST_F(Clamp, IsTheLargestOfTasksSpanAndControl) {
    EXPECT_EQ(utilMin(mActor), 0U);
    mActor.start(1);
    EXPECT_EQ(utilMin(mActor), 300U);
    mActor.spanStart(800);
    EXPECT_EQ(utilMin(mActor), 800U);
    mActor.start(2);
    EXPECT_EQ(utilMin(mActor), 800U);
    mActor.spanEnd();
    EXPECT_EQ(utilMin(mActor), 500U);
    mOther.control(1, 700);
    EXPECT_EQ(utilMin(mActor), 700U);
    mOther.control(1, 300);
    EXPECT_EQ(utilMin(mActor), 500U);
    mActor.end(2);
    EXPECT_EQ(utilMin(mActor), 300U);
    EXPECT_EQ(utilMin(mOther), 0U);
    EXPECT_TRUE(stateHas(fmt::format("  thread {} boost=300 applied=300 own=0", mActor.tid())));
    mOther.end(1);  // ends it on all others
    EXPECT_EQ(utilMin(mActor), 0U);
}

TEST_F(Clamp, LeavesPolicyNiceAndTheRestAlone) {
    mActor.run([] { EXPECT_EQ(nice(7), 7); });
    setPolicy(mActor, SCHED_BATCH | SCHED_RESET_ON_FORK, 0);
    setClamps(mActor, kClampMax, 0, 900);
    const SchedAttributes before = attributesOf(mActor);
    mActor.start(1);
    SchedAttributes during = attributesOf(mActor);
    EXPECT_EQ(during.utilMin, 300U);
    during.utilMin = before.utilMin;
    EXPECT_EQ(std::memcmp(&during, &before, sizeof before), 0);
    mActor.end(1);
    const SchedAttributes after = attributesOf(mActor);
    EXPECT_EQ(std::memcmp(&after, &before, sizeof before), 0);
}

TEST_F(Clamp, HasTheThreadsOwnValueAsItsFloorAndGivesItBack) {
    setClamps(mActor, kClampMin, 400);
    mActor.start(1);
    EXPECT_EQ(utilMin(mActor), 400U);
    mActor.start(2);
    EXPECT_EQ(utilMin(mActor), 500U);
    setClamps(mActor, kClampMin, 450);  // another program changes it during the boost
    mActor.spanStart(600);
    EXPECT_EQ(utilMin(mActor), 600U);
    mActor.end(2);
    mActor.end(1);
    mActor.spanEnd();
    EXPECT_EQ(utilMin(mActor), 450U);
}

TEST_F(Clamp, StaysBelowTheThreadsUtilMax) {
    setClamps(mActor, kClampMax, 0, 200);
    mActor.start(1);
    EXPECT_EQ(utilMin(mActor), 200U);
    mActor.end(1);
    EXPECT_EQ(utilMin(mActor), 0U);
}

TEST_F(Clamp, NeverLowersARealtimeThread) {
    setPolicy(mActor, SCHED_FIFO, 30);
    EXPECT_EQ(utilMin(mActor), 1024U);
    mActor.start(1);
    EXPECT_EQ(utilMin(mActor), 1024U);
    mActor.end(1);
    EXPECT_EQ(utilMin(mActor), 1024U);

    mOther.start(1);
    setPolicy(mOther, SCHED_RR, 3);  // during the boost: noticed at the next command
    mOther.spanStart(100);
    EXPECT_EQ(utilMin(mOther), 1024U);
    setClamps(mOther, kClampMin, 200);  // a realtime thread that asks for less gets the boost
    mOther.start(2);
    EXPECT_EQ(utilMin(mOther), 500U);
    mOther.end(2);
    mOther.end(1);
    mOther.spanEnd();
    EXPECT_EQ(utilMin(mOther), 200U);
    EXPECT_EQ(attributesOf(mOther).priority, 3U);
}

TEST_F(Clamp, EndsWithTheSession) {
    mActor.start(1);
    mOther.spanStart(900);
    mActor.uninit();
    EXPECT_EQ(utilMin(mActor) + utilMin(mOther), 0U);
    mActor.start(2);  // was running at the uninit
    EXPECT_EQ(utilMin(mActor), 0U);

    mActor.init();
    mActor.registerTask(1, 300);
    mActor.start(1);
    mOther.spanStart(900);
    EXPECT_EQ(utilMin(mActor) + utilMin(mOther), 1200U);
    mActor.init();
    EXPECT_EQ(utilMin(mActor) + utilMin(mOther), 0U);
}

TEST_F(Clamp, EndsWithTheLastFile) {
    NodeFile second;
    mActor.start(1);
    mFile.close();
    EXPECT_EQ(utilMin(mActor), 300U);
    second.close();
    EXPECT_EQ(utilMin(mActor), 0U);
}

// The kernel copies util_min to new threads, and the driver does not hear of them.
TEST_F(Clamp, IsInheritedByThreadsThatAreCreatedInsideATask) {
    mActor.start(1);
    mActor.run([&] {
        const Actor child(mFile);
        EXPECT_EQ(utilMin(child), 300U);
    });
}

TEST_F(Clamp, EndsWhenTheModuleIsUnloaded) {
    mActor.start(1);
    EXPECT_EQ(utilMin(mActor), 300U);
    ASSERT_EQ(system("rmmod velk"), 0);
    EXPECT_EQ(utilMin(mActor), 0U);
    EXPECT_EQ(mActor.end(1), ENOTTY);
    ASSERT_EQ(system("insmod /velk.ko"), 0);
    EXPECT_EQ(mActor.end(1), ENOTTY);
}

}  // namespace
}  // namespace kernel

// What tables take back when memory runs out half-way, at each allocation in turn.
#include <cerrno>
#include <stdexcept>

#include "resource/ActiveValues.h"
#include "resource/ErrorHandle.h"
#include "resource/VELKRescManagement.h"
#include "support/AllocationFaults.h"
#include "support/LibraryTest.h"

namespace fake {
namespace {

class RollbackTest : public LibraryTest {
  protected:
    // Makes every allocation of the operation fail in turn until it gets through.
    static void failEach(const std::function<void()>& operation,
                         const std::function<void()>& checkFailed) {
        int failures = 0;
        const auto fails = [&] {
            takeTranscript();
            failAllocation(failures + 1);
            const int result = call([&] { return operation(), 0; });
            failAllocation(0);
            return result == kThrew;
        };
        for (; fails(); ++failures) {
            checkFailed();
        }
        EXPECT_GT(failures, 0);
    }
};

TEST_F(RollbackTest, ErrorListKeepsNothingThatItCannotWarnOf) {
    ErrorHandle<int, int> list;
    for (int key = 1; key <= 9; ++key) {
        list.addToErrorList(key, key);
    }
    failEach([&] { list.addToErrorList(10, 1); }, [&] { EXPECT_FALSE(list.isInErrorList(10)); });
    expectTranscript("W: too many Error, error number: 10 | = 0");
    failEach([&] { list.addToErrorList(10, 7); }, [&] { EXPECT_TRUE(list.isInErrorList(10)); });
}

TEST_F(RollbackTest, ValuesAreOnlyPutBackWhereTheirRoomIsFree) {
    ActiveValues values;
    values.makeRoom(3);
    values.insert(5);
    failAllocation(1);
    values.insertCopies(7, 9);
    values.insertCopies(7, 1);
    failAllocation(0);
    EXPECT_EQ(2U, values.eraseAll(7));
    values.insertCopies(4, 1);
    EXPECT_EQ(5, values.largest());
}

TEST_F(RollbackTest, PairThatCannotBeDumpedIsForgotten) {
    const auto manager = VELKRescManagement::createInstance(kParams);
    platform().set(kDumpTaskTable, 1);
    unsigned id = 0;
    bool isNew = false;
    failEach(
            [&] {
                isNew = false;
                id = manager->getUniqueTaskId(keyOf(1), 5, isNew);
            },
            [] {});
    EXPECT_EQ(1U, id) << "an id that nobody got is not spent";
    EXPECT_TRUE(isNew);
    EXPECT_NE(std::string::npos,
              takeTranscript(kNode).find("=> VELKMonitorTask\n1 => TASK_SCALE\nclose"));
}

TEST_F(RollbackTest, CallThatCannotWaitForTheGlobalMutexThrows) {
    up();
    tWaitError = EAGAIN;
    EXPECT_EQ(kThrew, start(1, 5));
    EXPECT_EQ(-1, sceneChange(5, 1));
    EXPECT_EQ(0, start(1, 5));
}

TEST_F(RollbackTest, LastUninitGoesDownThoughEveryMessageFails) {
    up();
    node().fail(32, EINVAL);
    recorder().hook = [](const Event& event) {
        if (event.isULogger) {
            throw std::runtime_error("logger");
        }
    };
    EXPECT_EQ(kThrew, uninit());
    recorder().hook = nullptr;
    EXPECT_EQ(1U, recorder().count("ioctl 32"));
    EXPECT_EQ(std::vector<int>(), node().openDescriptors());
    EXPECT_EQ(-1, uninit());
}

}  // namespace
}  // namespace fake

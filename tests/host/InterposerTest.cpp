#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <set>
#include <string>
#include <vector>

#include "DriverScript.h"
#include "clock/DeskClock.h"

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the C library's.
extern "C" int __open_2(const char* path, int flags);
extern "C" int __open64_2(const char* path, int flags);
// NOLINTEND(bugprone-reserved-identifier)

namespace desk {
namespace {

class Interposer : public testing::Test {
  protected:
    Interposer() { controlNode().reset(); }
    ~Interposer() override { controlNode().reset(); }

    static int sendInit(int descriptor) {
        const VELK_INIT_PARAM record = initRecord();
        return ioctl(descriptor, VELK_IOC_INIT, &record);
    }
};

TEST_F(Interposer, AnswersOnRealDescriptorsOfTheNode) {
    errno = EXDEV;
    const int first = open(VELK_NODE_PATH, O_RDONLY);
    const int second = open64(VELK_NODE_PATH, O_RDONLY);
    const int third = __open_2(VELK_NODE_PATH, O_RDONLY);
    const int fourth = __open64_2(VELK_NODE_PATH, O_RDONLY);
    EXPECT_EQ(controlNode().snapshot().openDescriptors, 4U);
    EXPECT_EQ(sendInit(first), 0);
    EXPECT_EQ(errno, EXDEV);

    EXPECT_EQ(ioctl(first, VELK_IOC_VSYNC, nullptr), -1);
    EXPECT_EQ(errno, EFAULT);
    const VELK_TASK_PARAM start = {currentTid(), 1, 0, 0};
    EXPECT_EQ(ioctl(second, VELK_IOC_TASK_START, &start), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(fcntl(first, F_GETFD), FD_CLOEXEC);

    for (const int descriptor : {first, second, third, fourth}) {
        EXPECT_EQ(close(descriptor), 0);
        EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
    }
    EXPECT_EQ(controlNode().snapshot().openDescriptors, 0U);
}

TEST_F(Interposer, NoticesADoubleCloseAndAUseAfterClose) {
    const int descriptor = open(VELK_NODE_PATH, O_RDONLY);
    ASSERT_EQ(close(descriptor), 0);
    const int next = open(VELK_NODE_PATH, O_RDONLY);
    EXPECT_NE(next, descriptor);

    EXPECT_EQ(close(descriptor), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(sendInit(descriptor), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(close(next), 0);

    const DriverSnapshot snapshot = controlNode().snapshot();
    ASSERT_EQ(snapshot.findings.size(), 2U);
    EXPECT_EQ(snapshot.findings[0].finding, "a close of a descriptor that is not open");
    EXPECT_EQ(snapshot.findings[1].finding, "a command on a descriptor that is not open");
}

TEST_F(Interposer, LeavesANumberToWhoeverHasItNow) {
    const int descriptor = open(VELK_NODE_PATH, O_RDONLY);
    ASSERT_EQ(close(descriptor), 0);
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(dup2(ends[0], descriptor), descriptor);
    ASSERT_EQ(write(ends[1], "abc", 3), 3);

    int waiting = 0;
    EXPECT_EQ(ioctl(descriptor, FIONREAD, &waiting), 0);
    EXPECT_EQ(waiting, 3);
    EXPECT_EQ(close(descriptor), 0);
    EXPECT_EQ(close(ends[0]), 0);
    EXPECT_EQ(close(ends[1]), 0);
    EXPECT_TRUE(controlNode().snapshot().findings.empty());
}

TEST_F(Interposer, LeavesEveryOtherPathToTheCLibrary) {
    const std::string path = testing::TempDir() + "interposer_test.txt";
    unlink(path.c_str());
    const int file = open(path.c_str(), O_CREAT | O_WRONLY | O_EXCL, 0640);
    ASSERT_GE(file, 0);
    struct stat status = {};
    ASSERT_EQ(fstat(file, &status), 0);
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(status.st_mode & 0777U, 0640U & ~mask);
    EXPECT_EQ(ioctl(file, VELK_IOC_VSYNC, nullptr), -1);
    // An emulator of another machine does not hand on requests that it does not know.
    EXPECT_TRUE(errno == ENOTTY || errno == ENOSYS) << errno;
    EXPECT_EQ(close(file), 0);
    EXPECT_EQ(close(file), -1);
    EXPECT_EQ(errno, EBADF);
    unlink(path.c_str());

    for (const char* other : {"/proc/velk/velk_ioctl2", "/proc/velk/velk_ioct", "/proc/velk", ""}) {
        EXPECT_EQ(open(other, O_RDONLY), -1) << other;
        EXPECT_EQ(errno, ENOENT) << other;
    }
    const DriverSnapshot snapshot = controlNode().snapshot();
    EXPECT_EQ(snapshot.opens.accepted + snapshot.opens.refusedInjected, 0U);
    EXPECT_EQ(snapshot.closes.refused, 0U);
}

TEST_F(Interposer, RefusesAsToldWithoutLeakingADescriptor) {
    const int before = open("/dev/null", O_RDONLY);
    ASSERT_EQ(close(before), 0);
    controlNode().injectFaults(InjectedFaults::parse("open=EACCES*1, init=EIO"));
    EXPECT_EQ(open(VELK_NODE_PATH, O_RDONLY), -1);
    EXPECT_EQ(errno, EACCES);
    const int after = open("/dev/null", O_RDONLY);
    EXPECT_EQ(after, before);
    EXPECT_EQ(close(after), 0);

    const int descriptor = open(VELK_NODE_PATH, O_RDONLY);
    EXPECT_EQ(sendInit(descriptor), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(close(descriptor), 0);
}

TEST_F(Interposer, HandsOutEveryNumberBeforeOneComesUpAgain) {
    rlimit usual = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    const rlimit narrow = {280, usual.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &narrow), 0);
    std::vector<int> numbers;
    for (int i = 0; i < 100; ++i) {
        numbers.push_back(open(VELK_NODE_PATH, O_RDONLY));
        EXPECT_EQ(close(numbers.back()), 0);
    }
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
    EXPECT_EQ(std::set<int>(numbers.end() - 24, numbers.end()).size(), 24U);
    EXPECT_EQ(numbers[70], numbers[94]);
}

}  // namespace
}  // namespace desk

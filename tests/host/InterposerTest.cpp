#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "DriverScript.h"
#include "clock/DeskClock.h"
#include "support/TemporaryFolder.h"

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the C library's.
extern "C" int __open_2(const char* path, int flags);
extern "C" int __open64_2(const char* path, int flags);
extern "C" int __openat_2(int folder, const char* path, int flags);
extern "C" int __openat64_2(int folder, const char* path, int flags);
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
    for (const int descriptor : {first, second, third, fourth}) {
        EXPECT_EQ(close(descriptor), 0);
        EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
    }
    EXPECT_EQ(controlNode().snapshot().openDescriptors, 0U);
}

// Every call that opens the node, with O_CLOEXEC or without it.
TEST_F(Interposer, TakesEveryWayToOpenTheNode) {
    const auto descriptorOf = [](FILE* stream) {
        const int copy = dup(fileno(stream));
        EXPECT_EQ(fclose(stream), 0);
        return copy;
    };
    struct {
        int descriptor;
        int flags;
    } const cases[] = {
            {open(VELK_NODE_PATH, O_RDONLY | O_CLOEXEC), FD_CLOEXEC},
            {openat(AT_FDCWD, VELK_NODE_PATH, O_RDWR), 0},
            {openat64(-1, VELK_NODE_PATH, O_RDONLY | O_CLOEXEC), FD_CLOEXEC},
            {__openat_2(0, VELK_NODE_PATH, O_RDONLY), 0},
            {__openat64_2(0, VELK_NODE_PATH, O_RDONLY), 0},
            {descriptorOf(fopen(VELK_NODE_PATH, "re")), 0},
            {descriptorOf(fopen64(VELK_NODE_PATH, "w+")), 0},
            {descriptorOf(freopen(VELK_NODE_PATH, "r", fopen("/dev/zero", "r"))), 0},
            {descriptorOf(freopen64(nullptr, "r", fopen(VELK_NODE_PATH, "r"))), 0},
    };
    EXPECT_EQ(controlNode().snapshot().openDescriptors, std::size(cases));
    for (const auto& [descriptor, flags] : cases) {
        EXPECT_EQ(sendInit(descriptor), 0);
        EXPECT_EQ(fcntl(descriptor, F_GETFD), flags);
        EXPECT_EQ(close(descriptor), 0);
    }
    EXPECT_EQ(fopen(VELK_NODE_PATH, "x"), nullptr);
    EXPECT_EQ(errno, EINVAL);
    FILE* const other = freopen("/dev/zero", "r", fopen(VELK_NODE_PATH, "r"));
    EXPECT_EQ(sendInit(fileno(other)), -1);
    EXPECT_EQ(fclose(other), 0);
    EXPECT_EQ(open(VELK_NODE_PATH, O_RDONLY | O_DIRECTORY), -1);
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_EQ(controlNode().snapshot().closes.accepted, std::size(cases) + 1);
}

// Growing the table of descriptors while there are threads would hold the first open up.
TEST_F(Interposer, GrowsTheDescriptorTableAtTheStart) {
    rlimit limit = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word && word != "FDSize:";) {
    }
    rlim_t size = 0;
    status >> size;
    EXPECT_GE(size, std::min<rlim_t>(limit.rlim_cur, 1024));
}

TEST_F(Interposer, AnswersBadPointersAsAKernelDoes) {
    // Found by name, because the header promises that nobody passes null.
    auto* const openAnywhere =
            reinterpret_cast<int (*)(const char*, int, ...)>(dlsym(RTLD_DEFAULT, "open"));
    EXPECT_EQ(openAnywhere(nullptr, O_RDONLY), -1);
    EXPECT_EQ(errno, EFAULT);

    char byte = 0;
    const iovec own = {&byte, 1};
    if (process_vm_readv(getpid(), &own, 1, &own, 1, 0) < 0) {
        GTEST_SKIP() << "a record's pointer has to be trusted here: no process_vm_readv";
    }
    const int descriptor = open(VELK_NODE_PATH, O_RDONLY);
    const long page = sysconf(_SC_PAGESIZE);
    auto* const pages = static_cast<char*>(mmap(nullptr, static_cast<size_t>(2 * page), PROT_READ,
                                                MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    ASSERT_EQ(munmap(pages + page, static_cast<size_t>(page)), 0);
    for (const uintptr_t place : {uintptr_t{1}, reinterpret_cast<uintptr_t>(pages + page - 4),
                                  std::numeric_limits<uintptr_t>::max() - 7}) {
        EXPECT_EQ(openAnywhere(reinterpret_cast<const char*>(place), O_RDONLY), -1) << place;
        EXPECT_EQ(ioctl(descriptor, VELK_IOC_VSYNC, place), -1);
        EXPECT_EQ(errno, EFAULT) << place;
    }
    EXPECT_EQ(ioctl(descriptor, VELK_IOC_VSYNC, pages + page - 8), 0);
    munmap(pages, static_cast<size_t>(page));
    EXPECT_EQ(close(descriptor), 0);
}

// The file is closed with its last descriptor.
TEST_F(Interposer, FollowsEveryWayToDuplicateADescriptor) {
    const int unused = open("/dev/null", O_RDONLY);
    struct {
        int (*duplicate)(int descriptor, int target);
        int flags;
    } const cases[] = {
            {[](int node, int) { return dup(node); }, 0},
            {[](int node, int target) { return dup2(node, target); }, 0},
            {[](int node, int target) { return dup3(node, target, O_CLOEXEC); }, FD_CLOEXEC},
            {[](int node, int target) { return fcntl(node, F_DUPFD, target); }, 0},
            {[](int node, int target) { return fcntl64(node, F_DUPFD_CLOEXEC, target); },
             FD_CLOEXEC},
    };
    for (const auto& [duplicate, flags] : cases) {
        controlNode().reset();
        const int node = open(VELK_NODE_PATH, O_RDONLY);
        const int copy = duplicate(node, unused);
        EXPECT_EQ(fcntl(copy, F_GETFD), flags);
        EXPECT_EQ(dup2(copy, copy), copy);
        EXPECT_EQ(close(node), 0);
        EXPECT_EQ(sendInit(node), -1);
        EXPECT_EQ(sendInit(copy), 0);
        EXPECT_EQ(controlNode().snapshot().closes.accepted, 0U);
        EXPECT_EQ(close(copy), 0);
        EXPECT_EQ(controlNode().snapshot().closes.accepted, 1U);
        EXPECT_EQ(controlNode().snapshot().openDescriptors, 0U);
    }
    close(unused);
}

TEST_F(Interposer, NoticesWhatTakesTheNumberOfTheNode) {
    const int file = open("/dev/zero", O_RDONLY);
    struct {
        int (*replace)(int file, int node);
        unsigned stillOpen;
    } const cases[] = {
            {[](int from, int node) { return dup2(from, node); }, 0},
            {[](int from, int node) { return static_cast<int>(syscall(SYS_dup3, from, node, 0)); },
             1},
            {[](int, int node) {
                 syscall(SYS_close, node);
                 return eventfd(0, 0);
             },
             1},
            {[](int, int node) {
                 return close_range(static_cast<unsigned>(node), static_cast<unsigned>(node), 0) +
                        node;
             },
             0},
    };
    for (const auto& [replace, stillOpen] : cases) {
        const int node = open(VELK_NODE_PATH, O_RDONLY);
        const int copy = dup(node);
        ASSERT_EQ(close(node), 0);
        ASSERT_EQ(sendInit(copy), 0);
        const size_t before = controlNode().snapshot().openDescriptors;
        EXPECT_EQ(replace(file, copy), copy);
        EXPECT_EQ(controlNode().snapshot().openDescriptors, before - 1 + stillOpen);
        EXPECT_EQ(sendInit(copy), -1);
        EXPECT_EQ(controlNode().snapshot().openDescriptors, before - 1);
        close(copy);
    }
    close(file);
}

TEST_F(Interposer, GivesTheChildOfAForkADriverOfItsOwn) {
    const int node = open(VELK_NODE_PATH, O_RDONLY);
    ASSERT_EQ(sendInit(node), 0);
    const pid_t child = fork();
    if (child == 0) {
        const bool isNew = !controlNode().snapshot().isInitialised;
        const bool isTaken = sendInit(node) == 0 && controlNode().snapshot().isInitialised;
        closefrom(3);
        _exit(isNew && isTaken && controlNode().snapshot().openDescriptors == 0 ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(sendInit(node), 0);
    EXPECT_EQ(close(node), 0);
    EXPECT_EQ(controlNode().snapshot().commands[0].accepted, 2U);
}

// What a child does to its descriptors between vfork and exec.
TEST_F(Interposer, LeavesTheParentOfAVforkAlone) {
    const int node = open(VELK_NODE_PATH, O_RDONLY);
    // NOLINTBEGIN(clang-analyzer-*, bugprone-unsafe-functions): a child is allowed nothing but exec
    // there; programs do more.
    const pid_t child = vfork();
    if (child == 0) {
        dup2(0, node);
        close(node);
        close_range(3, ~0U, 0);
        _exit(fcntl(node, F_GETFD) == -1 ? 0 : 1);
    }
    // NOLINTEND(clang-analyzer-*, bugprone-unsafe-functions)
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(sendInit(node), 0);
    EXPECT_EQ(close(node), 0);
    EXPECT_TRUE(controlNode().snapshot().findings.empty());
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
    const TemporaryFolder folder;
    const std::string path = folder.file("file");
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

    for (const char* other : {"/proc/velk/velk_ioctl2", "/proc/velk/velk_ioct", "/proc/velk", ""}) {
        EXPECT_EQ(open(other, O_RDONLY), -1) << other;
        EXPECT_EQ(errno, ENOENT) << other;
    }
    const DriverSnapshot snapshot = controlNode().snapshot();
    EXPECT_EQ(snapshot.opens.accepted + snapshot.opens.refusedInjected, 0U);
    EXPECT_EQ(snapshot.closes.refused, 0U);
}

TEST_F(Interposer, InjectsRefusalsWithoutLeakingADescriptor) {
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

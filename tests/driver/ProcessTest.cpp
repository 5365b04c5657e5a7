// Which process's state a command changes, how long the state lives, and which calls are refused.
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <memory>
#include <vector>

#include "KernelNode.h"

namespace kernel {
namespace {

// A child that closes nothing, and ends with what `work` returns.
template <typename Work>
pid_t forkChild(Work&& work) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(work());
    }
    return child;
}

int exitStatusOf(pid_t child) {
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Process, SharesItsStateAmongItsFilesUntilTheLastIsClosed) {
    NodeFile first;
    NodeFile second;
    Actor onFirst(first);
    Actor onSecond(second);
    EXPECT_EQ(onFirst.init(), 0);
    EXPECT_EQ(onFirst.registerTask(1, 300), 0);
    EXPECT_EQ(onFirst.start(1), 0);
    EXPECT_EQ(onSecond.start(1), 0);
    EXPECT_TRUE(stateHas(fmt::format("  run {} task=1", onSecond.tid())));
    EXPECT_TRUE(
            stateHas("  task 1 registered=1 uclamp=300 control=0 starts=2 ends=0 name=ren\\nder"));

    first.close();
    EXPECT_TRUE(stateHas(fmt::format("  run {} task=1", onFirst.tid())));
    second.close();
    EXPECT_EQ(stateLines(), std::vector<std::string>());
}

TEST(Process, IsForgottenWhenItDiesThoughAChildKeepsItsFile) {
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    const pid_t parent = forkChild([&] {
        const NodeFile file;
        const auto tid = static_cast<uint32_t>(gettid());
        const VELK_CRITICAL_TASK_PARAM span = {static_cast<int32_t>(tid), 500};
        file.send(VELK_IOC_CRITICAL_START, &span);
        const pid_t child = forkChild([] { return execl("/bin/sleep", "sleep", "100", nullptr); });
        EXPECT_EQ(write(pipe[1], &child, sizeof child), ssize_t{sizeof child});
        pause();
        return 0;
    });
    ASSERT_GT(parent, 0);
    pid_t child = 0;
    ASSERT_EQ(read(pipe[0], &child, sizeof child), ssize_t{sizeof child});
    ASSERT_GT(child, 0);
    EXPECT_NE(stateLines(parent), std::vector<std::string>());
    kill(parent, SIGKILL);
    exitStatusOf(parent);
    EXPECT_EQ(stateLines(parent), std::vector<std::string>());
    EXPECT_EQ(kill(child, SIGKILL), 0);
    close(pipe[0]);
    close(pipe[1]);
}

TEST(Process, HasNoPartInTheStateOfTheProcessThatOpenedItsFile) {
    const NodeFile file;
    const VELK_VSYNC_PARAM vsync = {};
    EXPECT_EQ(file.send(VELK_IOC_VSYNC, &vsync), 0);
    EXPECT_EQ(exitStatusOf(forkChild([&] { return file.send(VELK_IOC_VSYNC, &vsync); })), EPERM);
    EXPECT_EQ(exitStatusOf(forkChild([&] { return NodeFile().send(VELK_IOC_VSYNC, &vsync); })), 0);
}

TEST(Process, SpeaksForTheCallingThreadAlone) {
    const NodeFile file;
    Actor actor(file);
    Actor other(file);
    ASSERT_EQ(actor.init(), 0);
    ASSERT_EQ(actor.registerTask(1, 300), 0);
    for (const uint32_t tid : {other.tid(), uint32_t{1}, uint32_t{0}, UINT32_MAX}) {
        const VELK_TASK_PARAM start = {tid, 1, 0, 0};
        EXPECT_EQ(actor.send(VELK_IOC_TASK_START, &start), EINVAL) << tid;
    }
}

TEST(Process, ForgetsThreadsThatDied) {
    const NodeFile file;
    Actor actor(file);
    ASSERT_EQ(actor.init(), 0);
    ASSERT_EQ(actor.registerTask(1, 300), 0);
    for (int i = 0; i < 200; ++i) {
        Actor mortal(file);
        ASSERT_EQ(mortal.start(1), 0);
        ASSERT_EQ(mortal.spanStart(700), 0);
    }
    ASSERT_EQ(actor.start(1), 0);
    const auto lines = stateLines();
    EXPECT_NE(lines.at(0).find(" threads=1 "), std::string::npos) << lines.at(0);
    EXPECT_TRUE(stateHas(fmt::format("  run {} task=1", actor.tid())));
}

TEST(Process, CannotMakeTheDriverKeepMoreThanItsLimits) {
    const NodeFile file;
    Actor actor(file);
    ASSERT_EQ(actor.init(), 0);
    actor.run([&] {
        for (uint32_t id = 1; id <= 32768; ++id) {
            const VELK_TASK_INIT_PARAM task = {id, 0, 300, 33, -1, 0, 1, 0, 0, "many", {}};
            ASSERT_EQ(file.send(VELK_IOC_TASK_INIT, &task), 0);
        }
        for (uint32_t id = 1; id <= 4096; ++id) {
            const VELK_TASK_PARAM start = {static_cast<uint32_t>(gettid()), id, 0, 0};
            ASSERT_EQ(file.send(VELK_IOC_TASK_START, &start), 0);
        }
    });
    EXPECT_EQ(actor.registerTask(32769, 300), ENOSPC);
    EXPECT_EQ(actor.registerTask(7, 300), 0);
    EXPECT_EQ(actor.start(4097), ENOSPC);
    EXPECT_EQ(actor.spanStart(300), ENOSPC);
    EXPECT_EQ(actor.end(9), 0);
    EXPECT_EQ(actor.spanStart(300), 0);
}

TEST(Node, RefusesPointersThatLeadNowhere) {
    const NodeFile file;
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    void* const pages =
            mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    auto* const gap = static_cast<char*>(pages) + page;
    ASSERT_EQ(munmap(gap, page), 0);
    void* const wild[] = {nullptr, gap, gap - 1, reinterpret_cast<void*>(0xFFFF888000000000),
                          reinterpret_cast<void*>(UINTPTR_MAX)};
    for (const void* pointer : wild) {
        EXPECT_EQ(file.send(VELK_IOC_VSYNC, pointer), EFAULT) << pointer;
        EXPECT_EQ(file.send(VELK_IOC_SINGLE_SHOT, pointer), EFAULT) << pointer;
    }
    EXPECT_EQ(file.send(VELK_IOC_VSYNC, gap - sizeof(VELK_VSYNC_PARAM)), 0);
    munmap(pages, page);
}

TEST(Node, KnowsNoOtherRequests) {
    const NodeFile file;
    const std::array<char, 512> record = {};
    for (const uint32_t request :
         {0U, _IO('g', 33), static_cast<uint32_t>(_IOR('g', 33, VELK_VSYNC_PARAM)),
          static_cast<uint32_t>(_IOW('h', 33, VELK_VSYNC_PARAM)),
          static_cast<uint32_t>(_IOW('g', 33, uint32_t)),
          static_cast<uint32_t>(_IOW('g', 26, VELK_INIT_PARAM)),
          static_cast<uint32_t>(_IOW('g', 39, VELK_ANCHOR_PARAM))}) {
        EXPECT_EQ(file.send(request, record.data()), ENOTTY) << std::hex << request;
    }
}

}  // namespace
}  // namespace kernel

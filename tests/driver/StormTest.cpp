// Random commands and wild pointers from threads that die, in processes that are killed while their
// children keep the files. Run it under a kernel that reports faults.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <random>
#include <thread>

#include "KernelNode.h"
#include "RandomRecords.h"

namespace kernel {
namespace {

constexpr int kProcesses = 40;
constexpr int kThreads = 4;
constexpr size_t kLives = 8;  // threads per process before it is killed, at most

// If the kernel supports it, small allocations of this thread fail now and then.
void letAllocationsFail() {
    std::ofstream("/proc/thread-self/make-it-fail") << "1";
}

const void* someAddress(RandomRecords& random, const RandomRecord& record) {
    const uintptr_t wild[] = {0, 1, 0xFFFF888000000000, UINTPTR_MAX - 3, 0x0000800000000000};
    return random.number(10) != 0 ? record.data()
                                  : reinterpret_cast<const void*>(wild[random.number(5)]);
}

void readState() {
    char text[512];
    const int state = open("/proc/velk/state", O_RDONLY);
    while (read(state, text, sizeof text) > 0) {
    }
    close(state);
}

// The work of one thread, which ends at any point of it.
void live(unsigned seed) {
    RandomRecords random(seed);
    const auto tid = static_cast<uint32_t>(gettid());
    letAllocationsFail();
    int file = open(VELK_NODE_PATH, O_RDONLY);
    for (size_t i = random.number(400); i > 0; --i) {
        const uint32_t request = random.request();
        const RandomRecord record = random.record(request, tid);
        ioctl(file, request, someAddress(random, record));
        if (random.number(50) == 0) {
            close(file);
            file = open(VELK_NODE_PATH, O_RDONLY);
        }
        if (random.number(100) == 0) {
            readState();
        }
    }
    if (random.number(2) != 0) {
        close(file);
    }
}

void startProgram() {
    if (fork() == 0) {
        execl("/bin/sleep", "sleep", "0.05", nullptr);
        _exit(1);
    }
}

// Runs until it is killed. Writes a byte for each thread that has ended.
[[noreturn]] void liveAsProcess(unsigned seed, int ended) {
    for (;; seed += kThreads) {
        std::vector<std::thread> threads;
        threads.reserve(kThreads);
        for (unsigned i = 0; i < kThreads; ++i) {
            threads.emplace_back([=] {
                live(seed + i);
                EXPECT_EQ(write(ended, "", 1), 1);
            });
        }
        startProgram();
        for (std::thread& thread : threads) {
            thread.join();
        }
        while (waitpid(-1, nullptr, WNOHANG) > 0) {
        }
    }
}

TEST(Storm, LeavesNothingBehind) {
    std::mt19937 random(1);
    for (int i = 0; i < kProcesses; ++i) {
        const auto seed = static_cast<unsigned>(random());
        int ended[2];
        ASSERT_EQ(pipe(ended), 0);
        const pid_t process = fork();
        if (process == 0) {
            liveAsProcess(seed, ended[1]);
        }
        ASSERT_GT(process, 0) << "no process to be killed";
        close(ended[1]);  // so that a child that dies by itself ends the reading
        char life = 0;
        for (size_t lives = random() % kLives; lives > 0; --lives) {
            ASSERT_EQ(read(ended[0], &life, 1), 1);
        }
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
        close(ended[0]);
        EXPECT_EQ(stateLines(process), std::vector<std::string>());
    }
}

}  // namespace
}  // namespace kernel

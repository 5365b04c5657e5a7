/*
 * A program that is recorded, and what can befall it: RecordedProgram WHAT. It exits with 0 when it
 * could do all that it meant to, whatever becomes of the recording.
 */
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <latch>
#include <string_view>
#include <thread>
#include <vector>

#include "VELKInfoNotifier.h"
#include "VELKMachine.h"
#include "VELKMachineCus.h"
#include "foundation/CommandRecords.h"

namespace {

constexpr unsigned kAnchors = 20000;  // more than the first step of the file holds

void passAnchors() {
    for (unsigned serial = 0; serial < kAnchors; ++serial) {
        VELKMachine::notifyAnchorPointStart(1, serial);
    }
}

void killSelf() {
    passAnchors();
    kill(getpid(), SIGKILL);
}

void forkChild() {
    VELKMachine::notifyAnchorPointStart(1, 1);
    const pid_t child = fork();
    if (child == 0) {
        VELKMachine::notifyAnchorPointStart(1, 2);
        std::exit(0);
    }
    waitpid(child, nullptr, 0);
    _exit(0);  // what the child wrote would be cut off at a regular end
}

void callFromC() {
    notifyAnchorPointStartCus(1, 1);
    const VELKTaskExtraParams extra;
    notifyTaskStartExtraCus(nullptr, 5, &extra);
    markCriticalTaskCus();
}

void closeAllDescriptors() {
    VELKMachine::notifyAnchorPointStart(1, 0);
    close_range(3, ~0U, 0);
    passAnchors();
}

void limitFileSize() {
    const rlimit limit = {100000, 100000};
    setrlimit(RLIMIT_FSIZE, &limit);
    passAnchors();
}

void runThreads(int count) {
    std::latch all(count);
    std::vector<std::thread> threads;
    threads.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&all] {
            VELKInfoNotifier::notifyVSync();
            all.arrive_and_wait();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void useThreadsTwice() {
    runThreads(3);
    runThreads(2);
}

void commandPastTheLibrary() {
    VELKInfoNotifier::notifyVSync();
    ioctl(-1, VELK_IOC_VSYNC, nullptr);
    ioctl(-1, VELK_IOC_VSYNC, nullptr);
}

}  // namespace

int main(int, char** argv) {
    const std::string_view what = argv[1];
    if (what == "anchors") {
        passAnchors();
    } else if (what == "killed") {
        killSelf();
    } else if (what == "fork") {
        forkChild();
    } else if (what == "c") {
        callFromC();
    } else if (what == "closed") {
        closeAllDescriptors();
    } else if (what == "limit") {
        limitFileSize();
    } else if (what == "threads") {
        useThreadsTwice();
    } else if (what == "crowd") {
        runThreads(258);
    } else if (what == "nan") {
        VELKInfoNotifier::notifyCamFps(NAN);
    } else if (what == "foreign") {
        commandPastTheLibrary();
    } else {
        return 2;
    }
    return 0;
}

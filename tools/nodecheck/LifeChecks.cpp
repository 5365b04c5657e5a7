// Files, threads and processes that come and go.
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <system_error>

#include "nodecheck/Checks.h"
#include "nodecheck/ChildProcess.h"
#include "nodecheck/Threads.h"

namespace nodecheck {

namespace {

constexpr size_t kThreadsAtOnce = 8;
constexpr int kThreadRounds = 20;
constexpr int kProcesses = 20;

int sendOne(const NodeFile& file, uint32_t request) {
    return file.send(request, validRecord(request, ownTid()).data());
}

// What the child's work returns, an errno or 0. Throws std::system_error.
int answerOfChild(int (*work)(const NodeFile&), const NodeFile& inherited) {
    const pid_t child = fork();
    if (child < 0) {
        throw std::system_error(errno, std::generic_category(), "no process");
    }
    if (child == 0) {
        _exit(work(inherited));
    }
    int status = 0;
    const bool hasExited = waitpid(child, &status, 0) == child && WIFEXITED(status);
    return hasExited ? WEXITSTATUS(status) : EIO;
}

int sendOnInheritedFile(const NodeFile& inherited) {
    return sendOne(inherited, VELK_IOC_VSYNC);
}

int sendOnOwnFile(const NodeFile&) {
    const NodeFile own;
    return own.error() != 0 ? own.error() : sendOne(own, VELK_IOC_VSYNC);
}

int startTaskOfClosedFile(const NodeFile&) {
    NodeFile first;
    if (first.error() != 0) {
        return first.error();
    }
    sendOne(first, VELK_IOC_INIT);
    sendOne(first, VELK_IOC_TASK_INIT);
    first.close();
    const NodeFile second;
    return second.error() != 0 ? second.error() : sendOne(second, VELK_IOC_TASK_START);
}

// Begins a task and a span, and ends neither.
void beginWork(Trial& trial) {
    trial.mustTakeOne(VELK_IOC_TASK_START);
    trial.mustTakeOne(VELK_IOC_CRITICAL_START);
    trial.mustTakeOne(VELK_IOC_SINGLE_SHOT);
}

void expectForgotten(Trial& trial, uint32_t tid) {
    for (const std::string& line : stateLines(getpid())) {
        for (const char* const kind : {"thread", "run", "span"}) {
            trial.expect(!line.starts_with(fmt::format("  {} {} ", kind, tid)),
                         fmt::format("the state lists a thread that has died:{}", line));
        }
    }
}

// Of a process that works until it is killed. A child of it keeps its file.
void workUntilKilled(const ChildProcess::Ready& ready, const std::array<int, 2>& holder,
                     NodeFile& inherited) {
    inherited.close();  // the one that is not its own would outlive the check in its child
    const NodeFile file;
    sendOne(file, VELK_IOC_INIT);
    sendOne(file, VELK_IOC_TASK_INIT);
    if (fork() == 0) {
        ready();  // as the parent, so that nobody waits for this process
        close(holder[1]);
        char nothing = 0;
        _exit(static_cast<int>(read(holder[0], &nothing, 1)));
    }
    sendOne(file, VELK_IOC_TASK_START);
    sendOne(file, VELK_IOC_CRITICAL_START);
    ready();
    while (true) {
        sendOne(file, VELK_IOC_SINGLE_SHOT);
    }
}

}  // namespace

void checkFiles(Trial& trial, const Settings&) {
    const NodeFile inherited;
    if (inherited.error() != 0) {
        trial.expectAnswer(inherited.error(), 0, "a second open");
        return;
    }
    for (const VELKCommand& command : VELK_COMMANDS) {
        const bool isOfTask = command.request == VELK_IOC_TASK_START ||
                              command.request == VELK_IOC_TASK_END ||
                              command.request == VELK_IOC_SCENE_CHANGE;
        if (!isOfTask) {  // before the first init
            trial.mustTakeOne(command.request);
        }
    }
    trial.mustTakeOne(VELK_IOC_INIT);
    trial.mustTakeOne(VELK_IOC_TASK_INIT);
    trial.expect(sendOne(inherited, VELK_IOC_TASK_START) == 0,
                 "a task that was registered through another file of the process is not known");
    trial.expectAnswer(answerOfChild(sendOnOwnFile, inherited), 0, "a command of a child");
    trial.expectEither(answerOfChild(sendOnInheritedFile, inherited), EPERM,
                       "a command on a file that a child has inherited");
    trial.expectEither(answerOfChild(startTaskOfClosedFile, inherited), EINVAL,
                       "start of a task that was registered before the last file was closed");
}

void checkDyingThreads(Trial& trial, const Settings&) {
    trial.mustTakeOne(VELK_IOC_INIT);
    trial.mustTakeOne(VELK_IOC_TASK_INIT);
    for (int round = 0; round < kThreadRounds; ++round) {
        std::array<std::unique_ptr<Trial>, kThreadsAtOnce> trials;
        Threads threads;
        for (std::unique_ptr<Trial>& mine : trials) {
            threads.start([&trial, &mine] {
                mine = std::make_unique<Trial>(trial.file());
                beginWork(*mine);
            });
        }
        threads.join();
        for (const auto& each : trials) {
            trial.add(each->findings());
            expectForgotten(trial, each->tid());
        }
    }
    beginWork(trial);
    trial.mustTakeOne(VELK_IOC_CRITICAL_END);
    trial.mustTakeOne(VELK_IOC_TASK_END);
}

void checkDyingProcesses(Trial& trial, const Settings&) {
    for (int i = 0; i < kProcesses; ++i) {
        std::array<int, 2> holder = {};
        if (pipe2(holder.data(), O_CLOEXEC) != 0) {
            throw std::system_error(errno, std::generic_category(), "no pipe to a process");
        }
        ChildProcess process([&](const ChildProcess::Ready& ready) {
            workUntilKilled(ready, holder, trial.file());
        });
        process.kill();
        trial.expect(stateLines(process.id()).empty(),
                     fmt::format("the state lists a process that was killed, {}", process.id()));
        close(holder[0]);
        close(holder[1]);  // and the child that kept the file ends
        trial.mustTakeOne(VELK_IOC_INIT);
    }
}

}  // namespace nodecheck

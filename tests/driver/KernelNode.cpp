#include "KernelNode.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <utility>

namespace kernel {

Actor::Actor(const NodeFile& file) : mFile(file) {
    mThread = std::thread([this] {
        std::unique_lock lock(mMutex);
        while (!mIsDone) {
            mChange.wait(lock, [this] { return mIsDone || mWork; });
            if (mWork) {
                mWork();
                mWork = nullptr;
                mChange.notify_all();
            }
        }
    });
    run([this] { mTid = static_cast<uint32_t>(gettid()); });
}

Actor::~Actor() {
    {
        const std::lock_guard lock(mMutex);
        mIsDone = true;
    }
    mChange.notify_all();
    mThread.join();
}

void Actor::run(std::function<void()> work) {
    std::unique_lock lock(mMutex);
    mWork = std::move(work);
    mChange.notify_all();
    mChange.wait(lock, [this] { return !mWork; });
}

int Actor::send(uint32_t request, const void* record) {
    int answer = 0;
    run([&] { answer = mFile.send(request, record); });
    return answer;
}

int Actor::sendTask(uint32_t request, uint32_t task) {
    const VELK_TASK_PARAM record = {mTid, task, 0, 0};
    return send(request, &record);
}

int Actor::sendSpan(uint32_t request, int32_t value) {
    const VELK_CRITICAL_TASK_PARAM record = {static_cast<int32_t>(mTid), value};
    return send(request, &record);
}

int Actor::control(uint32_t task, uint32_t uclamp) {
    VELK_SINGLE_SHOT_PARAM record = {};
    record.tid = static_cast<int32_t>(mTid);
    record.criticalTaskIds[0] = task;
    record.criticalTaskUclamps[0] = uclamp;
    return send(VELK_IOC_SINGLE_SHOT, &record);
}

int Actor::init() {
    const VELK_INIT_PARAM record = {1, {1024, 800, 512}, {}, 10, 65};
    return send(VELK_IOC_INIT, &record);
}

int Actor::uninit() {
    const VELK_UNINIT_PARAM record = {};
    return send(VELK_IOC_UNINIT, &record);
}

int Actor::registerTask(uint32_t task, int32_t uclamp) {
    const VELK_TASK_INIT_PARAM record = {task, 0, uclamp, 33, -1, 0, 1, 7, 8, "ren\nder", {}};
    return send(VELK_IOC_TASK_INIT, &record);
}

std::vector<std::string> stateLines(int pid) {
    static const std::regex times(" since_us=[0-9]+");
    std::vector<std::string> lines = nodecheck::stateLines(pid != 0 ? pid : getpid());
    for (std::string& line : lines) {
        line = std::regex_replace(line, times, "");
    }
    return lines;
}

bool stateHas(const std::string& line) {
    return std::ranges::count(stateLines(), line) == 1;
}

bool kernelHasClamps() {
    std::string head;
    std::getline(std::ifstream(nodecheck::kStatePath), head);
    return head.ends_with("clamps=1");
}

}  // namespace kernel

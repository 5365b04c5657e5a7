/*
 * The runs of tasks. Keeps the distribution of each task and the runs that have not ended.
 */
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <unordered_map>
#include <vector>

#include "analysis/IntervalListener.h"
#include "analysis/SessionFigures.h"
#include "analysis/ThreadTable.h"
#include "play/PlayedCall.h"

namespace desk {

class TaskAnalysis {
  public:
    void tell(IntervalListener* listener) { mListener = listener; }
    // To be called for each command of a call, in the order in which the driver received them.
    void takeCommand(const PlayedCall& played, const ReceivedCommand& command);

    std::vector<TaskFigures> figures(const ThreadTable& threads) const;
    // Calls `use(task, runs)` for each task, with the distribution of its ended runs.
    template <typename Use>
    void forEachTask(Use&& use) const {
        for (const auto& [number, task] : mTasks) {
            use(number, task.runs);
        }
    }
    std::vector<ActiveRun> activeRuns(const ThreadTable& threads) const;

  private:
    struct Task {
        TaskFigures figures;
        Distribution runs;
        std::set<uint32_t> threads;  // numbers in the session
    };
    struct Run {
        uint32_t tid = 0;
        uint32_t thread = 0;  // number in the session
        int64_t sinceUs = 0;
    };
    // A unique task id of the driver's current session.
    struct RegisteredTask {
        Task* task = nullptr;
        std::vector<Run> runs;  // at most one per thread
    };

    void registerTask(const PlayedCall& played, const VELK_TASK_INIT_PARAM& record);
    void start(const PlayedCall& played, const VELK_TASK_PARAM& record);
    void end(const PlayedCall& played, const VELK_TASK_PARAM& record);

    std::map<int, Task> mTasks;
    std::unordered_map<uint32_t, RegisteredTask> mRegistered;  // by unique task id
    IntervalListener* mListener = nullptr;
};

}  // namespace desk

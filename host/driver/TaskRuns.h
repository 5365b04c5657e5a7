/*
 * Which runs of a task a taskEnd ends.
 */
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace desk {

/*
 * A taskEnd ends the runs of the thread that sends it; when it has none, those of all other
 * threads, because the library then counts the task as ended on all threads. `runs` are those of
 * one task, each with the `tid` of its thread. Calls `use(run)` for each that ends, and removes it.
 */
template <typename Run, typename Use>
void endRuns(std::vector<Run>& runs, uint32_t tid, Use&& use) {
    const bool isOwn = std::ranges::find(runs, tid, &Run::tid) != runs.end();
    std::erase_if(runs, [&](const Run& run) {
        const bool isEnded = !isOwn || run.tid == tid;
        if (isEnded) {
            use(run);
        }
        return isEnded;
    });
}

}  // namespace desk

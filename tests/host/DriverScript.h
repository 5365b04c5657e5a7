/*
 * Valid records, and a driver model that is driven by a line of words.
 */
#pragma once

#include <fmt/format.h>

#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "driver/DriverModel.h"

namespace desk {

inline constexpr int kNode = 300;
inline constexpr uint32_t kTid = 10;

inline VELK_INIT_PARAM initRecord() {
    return {1, {1024, 800, 512}, {}, 10, 65};
}

inline VELK_TASK_INIT_PARAM taskInitRecord(uint32_t id) {
    return {id, 0, 300, 33, -1, 0, 1, 7, 8, "render", {}};
}

inline VELK_SINGLE_SHOT_PARAM singleShotRecord(uint32_t tid, uint32_t criticalTaskId = 0) {
    VELK_SINGLE_SHOT_PARAM record = {};
    record.tid = static_cast<int32_t>(tid);
    record.percentLevel = 60;
    record.requestValue = -1;
    record.criticalTaskIds[0] = criticalTaskId;
    return record;
}

class EventRecorder : public DriverObserver {
  public:
    void onDriverEvent(const DriverEvent& event) noexcept override { events.push_back(event); }
    std::vector<DriverEvent> events;
};

// "ok", "injected", "note: ..." or "fault: ..."
inline std::string describeVerdict(const DriverEvent& event) {
    switch (event.verdict) {
        case Verdict::Accepted:
            return "ok";
        case Verdict::InjectedRefusal:
            return "injected";
        case Verdict::Noted:
            return fmt::format("note: {}", event.finding);
        case Verdict::Refused:
            return fmt::format("fault: {}", event.finding);
    }
    return "?";
}

class ScriptedDriver {
  public:
    ScriptedDriver() {
        model.open(kNode, kTid);
        model.setObserver(recorder);
    }

    template <typename Record>
    int send(uint32_t request, const Record& record, uint32_t tid = kTid) {
        return model.command(kNode, request, &record, tid);
    }

    // Steps with commas between them, each "VERB [ID] [@TID]". Returns the verdicts, a line each.
    std::string play(const std::string& script) {
        recorder->events.clear();
        std::istringstream steps(script);
        for (std::string step; std::getline(steps, step, ',');) {
            playStep(step);
        }
        std::string verdicts;
        for (const DriverEvent& event : recorder->events) {
            verdicts += describeVerdict(event) + "\n";
        }
        return verdicts;
    }

    DriverModel model;
    std::shared_ptr<EventRecorder> recorder = std::make_shared<EventRecorder>();

  private:
    void playStep(const std::string& step) {
        std::istringstream words(step);
        std::string verb;
        uint32_t id = 0;
        uint32_t tid = kTid;
        words >> verb;
        for (std::string word; words >> word;) {
            const bool isTid = word.front() == '@';
            (isTid ? tid : id) = static_cast<uint32_t>(std::stoul(isTid ? word.substr(1) : word));
        }
        const auto signedTid = static_cast<int32_t>(tid);
        if (verb == "init") {
            send(VELK_IOC_INIT, initRecord(), tid);
        } else if (verb == "reg") {
            send(VELK_IOC_TASK_INIT, taskInitRecord(id), tid);
        } else if (verb == "start") {
            send(VELK_IOC_TASK_START, VELK_TASK_PARAM{tid, id, 0, 0}, tid);
        } else if (verb == "end") {
            send(VELK_IOC_TASK_END, VELK_TASK_PARAM{tid, id, 0, 0}, tid);
        } else if (verb == "scene") {
            send(VELK_IOC_SCENE_CHANGE, VELK_TASK_PARAM{tid, id, 0, 4}, tid);
        } else if (verb == "uninit") {
            send(VELK_IOC_UNINIT, VELK_UNINIT_PARAM{}, tid);
        } else if (verb == "vsync") {
            send(VELK_IOC_VSYNC, VELK_VSYNC_PARAM{}, tid);
        } else if (verb == "fps") {
            send(VELK_IOC_CAM_FPS, VELK_CAM_FPS_PARAM{0, id}, tid);
        } else if (verb == "control") {
            send(VELK_IOC_SINGLE_SHOT, singleShotRecord(tid, id), tid);
        } else if (verb == "open-span") {
            send(VELK_IOC_CRITICAL_START, VELK_CRITICAL_TASK_PARAM{signedTid, 500}, tid);
        } else if (verb == "close-span") {
            send(VELK_IOC_CRITICAL_END, VELK_CRITICAL_TASK_PARAM{signedTid, 0}, tid);
        } else if (verb == "anchor") {
            send(VELK_IOC_ANCHOR,
                 VELK_ANCHOR_PARAM{1, 0, VELK_ANCHOR_START, 0, 5, static_cast<int32_t>(id), 0},
                 tid);
        } else {
            model.command(kNode, 0, nullptr, tid);  // shows up as a fault
        }
    }
};

}  // namespace desk

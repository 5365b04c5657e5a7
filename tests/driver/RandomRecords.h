/*
 * Random commands, most of them with the values that a sender uses.
 */
#pragma once

#include <array>
#include <cstring>
#include <iterator>
#include <random>

#include "foundation/CommandTable.h"

namespace kernel {

using RandomRecord = std::array<uint32_t, 96>;  // with room for the largest

class RandomRecords {
  public:
    explicit RandomRecords(unsigned seed) : mEngine(seed) {}

    // Few commands begin or end a session, so that sessions have content.
    uint32_t request() {
        if (!pick(50)) {
            return static_cast<uint32_t>(_IOW('g', number(64), uint32_t[10]));
        }
        const uint32_t request = VELK_COMMANDS[number(VELK_COMMANDS.size())].request;
        const bool isBorder = request == VELK_IOC_INIT || request == VELK_IOC_UNINIT;
        return isBorder && pick(10) ? VELK_IOC_TASK_START : request;
    }

    RandomRecord record(uint32_t request, uint32_t tid) {
        RandomRecord words = {};
        switch (request) {
            case VELK_IOC_INIT:
                put(words, VELK_INIT_PARAM{1, {level(), level(), level()}, {}, 10, 65});
                break;
            case VELK_IOC_TASK_INIT:
                put(words, registration());
                break;
            case VELK_IOC_SCENE_CHANGE:
            case VELK_IOC_TASK_START:
            case VELK_IOC_TASK_END:
                put(words, VELK_TASK_PARAM{tid, id(), 0, 0});
                break;
            case VELK_IOC_SINGLE_SHOT:
                put(words, control(tid));
                break;
            case VELK_IOC_CRITICAL_START:
                put(words, VELK_CRITICAL_TASK_PARAM{static_cast<int32_t>(tid), value()});
                break;
            case VELK_IOC_CRITICAL_END:
                put(words, VELK_CRITICAL_TASK_PARAM{static_cast<int32_t>(tid), 0});
                break;
            case VELK_IOC_ANCHOR:
                put(words, VELK_ANCHOR_PARAM{1, 0, VELK_ANCHOR_END, 0, 7, 0, 0});
                break;
            default:
                break;
        }
        if (!pick(8)) {
            words[number(_IOC_SIZE(request) / sizeof words[0])] = oddValue();
        }
        return words;
    }

    size_t number(size_t count) { return mEngine() % count; }

  private:
    // False once in `times`, on average.
    bool pick(size_t times) { return number(times) != 0; }
    uint32_t id() { return static_cast<uint32_t>(1 + number(30)); }
    uint32_t level() { return static_cast<uint32_t>(number(VELK_MAX_UCLAMP + 1)); }
    int32_t value() { return static_cast<int32_t>(1 + number(VELK_MAX_UCLAMP)); }

    uint32_t oddValue() {
        const uint32_t values[] = {0,
                                   1,
                                   2,
                                   id(),
                                   VELK_MAX_UCLAMP,
                                   VELK_MAX_UCLAMP + 1,
                                   0x100,
                                   0x80000000,
                                   0xFFFFFFFF,
                                   0xFFFFFFFE,
                                   VELK_LIMIT_NONE_ACTIVE};
        return values[number(std::size(values))];
    }

    VELK_TASK_INIT_PARAM registration() {
        VELK_TASK_INIT_PARAM record = {id(), 0, value(), 33, -1, 0, 1, 2, 3, "task", {}};
        if (!pick(8)) {  // not terminated, or with bytes after its end
            std::memcpy(record.taskName, pick(2) ? "abcdefghij" : "abc\0efghi", 10);
        }
        return record;
    }

    VELK_SINGLE_SHOT_PARAM control(uint32_t tid) {
        VELK_SINGLE_SHOT_PARAM record = {};
        record.tid = static_cast<int32_t>(tid);
        record.uclampLevels[number(8)] = level();
        record.percentLevel = static_cast<int32_t>(number(105)) - 3;
        record.requestValue = static_cast<int32_t>(number(5)) - 2;
        record.isReset = number(2) != 0;
        record.limits[0] = pick(2) ? VELK_LIMIT_NONE_ACTIVE : level();
        record.sharedFlag = number(2) != 0;
        for (size_t i = 0; i < number(21); ++i) {
            record.criticalTaskIds[i] = id();
            record.criticalTaskUclamps[i] = level();
        }
        return record;
    }

    template <typename Record>
    static void put(RandomRecord& words, const Record& record) {
        static_assert(sizeof record <= sizeof words);
        std::memcpy(words.data(), &record, sizeof record);
    }

    std::mt19937 mEngine;
};

}  // namespace kernel

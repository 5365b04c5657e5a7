// Random commands, most of them as a sender means them, each held to its documented answer.
#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <random>
#include <set>

#include "nodecheck/Checks.h"

namespace nodecheck {

namespace {

constexpr uint32_t kTasks = 40;

// What the documents say about a record.
enum class Standing : uint8_t { Valid, HarmlesslyWrong, Wrong };

Standing standingOf(const VELKField& field, int64_t value, uint32_t tid) {
    if (isThreadId(field) ? static_cast<uint32_t>(value) == tid : isValid(field, value)) {
        return Standing::Valid;
    }
    return field.smallest == 0 && field.largest <= 1 ? Standing::HarmlesslyWrong : Standing::Wrong;
}

Standing standingOf(const Record& record, uint32_t tid) {
    Standing worst = fitsTogether(record) ? Standing::Valid : Standing::HarmlesslyWrong;
    for (const VELKField& field : record.command->fields) {
        for (size_t i = 0; i < elementsOf(field); ++i) {
            worst = std::max(worst, standingOf(field, valueOf(record, field, i), tid));
        }
    }
    return worst;
}

class RandomSender {
  public:
    RandomSender(Trial& trial, uint32_t seed) : mTrial(trial), mEngine(seed) {}

    void send() {
        ++mSent;
        const Record record = randomRecord();
        const VELKField* const id = findField(*record.command, "uniqueTaskId");
        const int64_t task = id != nullptr ? valueOf(record, *id) : 0;
        const Standing standing = standingOf(record, mTrial.tid());
        const auto what = [&] {
            return fmt::format("random command {}, {}", mSent, record.command->name);
        };
        const bool isOfTask = id != nullptr && record.command->request != VELK_IOC_TASK_INIT;
        if (standing == Standing::Wrong) {
            mTrial.mustRefuse(EINVAL, record.command->request, record.data(), what);
        } else if (standing == Standing::HarmlesslyWrong ||
                   (isOfTask && !mSentTasks.contains(task))) {
            mTrial.mayTake(EINVAL, record.command->request, record.data(), what);
        } else if (isOfTask && !mTakenTasks.contains(task)) {
            mTrial.mayRefuse(EINVAL, record, what);
        } else {
            mTrial.mustTake(record, what);
        }
        followTasks(record, task, standing == Standing::Valid);
    }

  private:
    void followTasks(const Record& record, int64_t task, bool isValidRecord) {
        if (record.command->request == VELK_IOC_INIT) {
            mSentTasks.clear();
            mTakenTasks.clear();
        } else if (record.command->request == VELK_IOC_TASK_INIT) {
            mSentTasks.insert(task);
            if (isValidRecord) {
                mTakenTasks.insert(task);
            }
        }
    }

    Record randomRecord() {
        Record record = validRecord(randomCommand(), mTrial.tid());
        for (const VELKField& field : record.command->fields) {
            for (size_t i = 0; !isThreadId(field) && i < elementsOf(field); ++i) {
                setValue(record, field, i, randomValid(field));
            }
        }
        if (number(10) != 0) {
            fitTogether(record);
        }
        if (number(8) == 0) {
            const auto& fields = record.command->fields;
            const VELKField& field = fields[number(fields.size())];
            setValue(record, field, number(elementsOf(field)),
                     between(smallestOfType(field), largestOfType(field)));
        }
        return record;
    }

    // Few begin or end a session, so that there is something in it.
    const VELKCommand& randomCommand() {
        const VELKCommand& command = VELK_COMMANDS[number(VELK_COMMANDS.size())];
        const bool isBorder =
                command.request == VELK_IOC_INIT || command.request == VELK_IOC_UNINIT;
        return isBorder && number(20) != 0 ? *findVELKCommand(VELK_IOC_TASK_INIT) : command;
    }

    int64_t randomValid(const VELKField& field) {
        const std::string_view name = field.name;
        if (name == "uniqueTaskId" || name == "criticalTaskIds") {
            return between(1, kTasks);
        }
        switch (number(4)) {
            case 0:
                return field.smallest;
            case 1:
                return field.largest;
            default:
                return between(field.smallest, field.largest);
        }
    }

    size_t number(size_t count) { return mEngine() % count; }
    int64_t between(int64_t smallest, int64_t largest) {
        const auto width = static_cast<uint64_t>(largest - smallest) + 1;
        return smallest + static_cast<int64_t>(mEngine() % width);
    }

    Trial& mTrial;
    std::mt19937_64 mEngine;  // the same numbers everywhere
    uint64_t mSent = 0;
    std::set<int64_t> mSentTasks;  // for registration, in this session
    std::set<int64_t> mTakenTasks;
};

}  // namespace

void checkRandomCommands(Trial& trial, const Settings& settings) {
    trial.mustTakeOne(VELK_IOC_INIT);
    RandomSender sender(trial, settings.seed);
    for (uint64_t i = 0; i < settings.randomCommands; ++i) {
        sender.send();
    }
}

}  // namespace nodecheck

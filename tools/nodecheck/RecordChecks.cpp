// What a single record may hold, and what not.
#include <fmt/format.h>

#include <cerrno>

#include "nodecheck/Checks.h"

namespace nodecheck {

namespace {

// Does something for every element of every field but the thread ids.
template <typename Work>
void forEachElement(Work&& work) {
    for (const VELKCommand& command : VELK_COMMANDS) {
        for (const VELKField& field : command.fields) {
            for (size_t i = 0; !isThreadId(field) && i < elementsOf(field); ++i) {
                work(command, field, i);
            }
        }
    }
}

// A driver need not look at a byte that says nothing, or only yes or no.
bool isHarmless(const VELKField& field) {
    return field.smallest == 0 && field.largest <= 1;
}

// Sends a record in which one element is outside of its range.
template <typename Send>
void sendInvalid(Trial& trial, const VELKCommand& command, const VELKField& field, size_t element,
                 Send&& send) {
    for (const int64_t value : {field.smallest - 1, field.largest + 1}) {
        if (value < smallestOfType(field) || value > largestOfType(field)) {
            continue;
        }
        Record record = validRecord(command, trial.tid());
        setValue(record, field, element, value);
        trial.prepareFor(record);
        send(record, [&] { return describe(command, field, element, value); });
    }
}

struct Relation {
    const char* rule;
    uint32_t request;
    const char* field;
    size_t element;
    int64_t value;
};

// Valid field by field, but not together. Element 0 of the ids is a free place in each control.
constexpr Relation kBrokenRelations[] = {
        {"a critical task behind a free place", VELK_IOC_SINGLE_SHOT, "criticalTaskIds", 1, 7},
        {"a critical uclamp in a free place", VELK_IOC_SINGLE_SHOT, "criticalTaskUclamps", 0, 512},
        {"a critical uclamp in the last place, free", VELK_IOC_SINGLE_SHOT, "criticalTaskUclamps",
         19, 1},
        {"a latency target at the end of an anchor", VELK_IOC_ANCHOR, "latencyTarget", 0, 1},
};

Record brokenRecord(const Relation& relation, uint32_t tid) {
    Record record = validRecord(relation.request, tid);
    if (const VELKField* ids = findField(*record.command, "criticalTaskIds")) {
        setValue(record, *ids, 0, 0);
    }
    if (const VELKField* phase = findField(*record.command, "phase")) {
        setValue(record, *phase, 0, VELK_ANCHOR_END);
    }
    fitTogether(record);
    setValue(record, *findField(*record.command, relation.field), relation.element, relation.value);
    return record;
}

}  // namespace

void checkValidValues(Trial& trial, const Settings&) {
    forEachElement([&](const VELKCommand& command, const VELKField& field, size_t element) {
        for (const int64_t value : {field.smallest, field.largest}) {
            Record record = validRecord(command, trial.tid());
            setValue(record, field, element, value);
            fitTogether(record);
            trial.prepareFor(record);
            trial.mustTake(record, [&] { return describe(command, field, element, value); });
        }
    });
}

void checkInvalidValues(Trial& trial, const Settings&) {
    forEachElement([&](const VELKCommand& command, const VELKField& field, size_t element) {
        if (!isHarmless(field)) {
            sendInvalid(trial, command, field, element, [&](const Record& record, auto&& what) {
                trial.mustRefuse(EINVAL, command.request, record.data(), what);
            });
        }
    });
}

void checkZeros(Trial& trial, const Settings&) {
    forEachElement([&](const VELKCommand& command, const VELKField& field, size_t element) {
        if (isHarmless(field)) {
            sendInvalid(trial, command, field, element, [&](const Record& record, auto&& what) {
                trial.mayTake(EINVAL, command.request, record.data(), what);
            });
        }
    });
}

void checkRelations(Trial& trial, const Settings&) {
    trial.mustTakeOne(VELK_IOC_INIT);
    for (const Relation& relation : kBrokenRelations) {
        const Record record = brokenRecord(relation, trial.tid());
        trial.mayTake(EINVAL, relation.request, record.data(),
                      [&] { return std::string(relation.rule); });
    }
    Record record = validRecord(VELK_IOC_TASK_INIT, trial.tid());
    const VELKField& name = *findField(*record.command, "taskName");
    record.bytes[name.offset + name.count - 1] = std::byte{'x'};
    trial.mayTake(EINVAL, VELK_IOC_TASK_INIT, record.data(),
                  [] { return std::string("bytes behind the end of a name"); });
}

}  // namespace nodecheck

#include "nodecheck/Trial.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace nodecheck {

void Details::add(std::string detail) {
    ++count;
    if (first.size() < kKept && std::ranges::find(first, detail) == first.end()) {
        first.push_back(std::move(detail));
    }
}

void Details::add(const Details& others) {
    const uint64_t sum = count + others.count;
    for (const std::string& detail : others.first) {
        add(detail);
    }
    count = sum;
}

void Findings::add(const Findings& others) {
    commands += others.commands;
    failures.add(others.failures);
    lenient.add(others.lenient);
}

int Trial::send(uint32_t request, const void* record) {
    ++mFindings.commands;
    return mFile.send(request, record);
}

void Trial::fail(const std::string& what, int answer, int expected) {
    mFindings.failures.add(
            fmt::format("{}: {}, expected {}", what, nameOfAnswer(answer), nameOfAnswer(expected)));
}

void Trial::expect(bool isTrue, const std::string& failure) {
    if (!isTrue) {
        mFindings.failures.add(failure);
    }
}

void Trial::expectAnswer(int answer, int expected, const std::string& what) {
    if (answer != expected) {
        fail(what, answer, expected);
    }
}

void Trial::expectEither(int answer, int error, const std::string& what) {
    if (answer == 0) {
        mFindings.lenient.add(what);
    } else {
        expectAnswer(answer, error, what);
    }
}

void Trial::mustTakeOne(uint32_t request) {
    const Record record = validRecord(request, mTid);
    mustTake(record, [&] { return std::string(record.command->name); });
}

void Trial::prepareFor(const Record& record) {
    mustTakeOne(VELK_IOC_INIT);
    const VELKField* const id = findField(*record.command, "uniqueTaskId");
    if (id == nullptr || record.command->request == VELK_IOC_TASK_INIT) {
        return;
    }
    Record registration = validRecord(VELK_IOC_TASK_INIT, mTid);
    const int64_t wanted = valueOf(record, *id);
    setValue(registration, *findField(*registration.command, "uniqueTaskId"), 0,
             wanted != 0 ? wanted : 1);
    mustTake(registration, [&] { return fmt::format("taskInit of task {}", wanted); });
}

}  // namespace nodecheck

// What is refused before a driver can look at a record, and whose thread a record may name.
#include <fmt/format.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <future>
#include <stdexcept>
#include <utility>

#include "nodecheck/Checks.h"
#include "nodecheck/ChildProcess.h"
#include "nodecheck/Threads.h"

namespace nodecheck {

namespace {

constexpr unsigned kLargestSize = (1U << _IOC_SIZEBITS) - 1;

void mustBeUnknown(Trial& trial, unsigned direction, unsigned type, unsigned number, size_t size) {
    static const std::array<std::byte, kLargestSize> kZeros = {};
    const auto request =
            static_cast<uint32_t>(_IOC(direction, type, number, static_cast<unsigned>(size)));
    if (findVELKCommand(request) == nullptr) {
        trial.mustRefuse(ENOTTY, request, kZeros.data(),
                         [=] { return fmt::format("request {:#010x}", request); });
    }
}

// Two pages: one that can be read, and behind it one that cannot.
class PageBeforeGap {
  public:
    PageBeforeGap() : mSize(static_cast<size_t>(sysconf(_SC_PAGESIZE))) {
        mPages = mmap(nullptr, 2 * mSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1,
                      0);
        if (mPages == MAP_FAILED || mprotect(gap(), mSize, PROT_NONE) != 0) {
            throw std::runtime_error("no memory for a page");
        }
    }
    ~PageBeforeGap() { munmap(mPages, 2 * mSize); }
    PageBeforeGap(const PageBeforeGap&) = delete;
    PageBeforeGap& operator=(const PageBeforeGap&) = delete;

    char* begin() const { return static_cast<char*>(mPages); }
    char* gap() const { return begin() + mSize; }
    void makeReadOnly() const { mprotect(mPages, mSize, PROT_READ); }
    void makeWritable() const { mprotect(mPages, mSize, PROT_READ | PROT_WRITE); }

  private:
    size_t mSize;
    void* mPages = nullptr;
};

void checkWildPointers(Trial& trial, const VELKCommand& command, const PageBeforeGap& page) {
    const void* const wild[] = {nullptr,
                                reinterpret_cast<const void*>(uintptr_t{1}),
                                page.gap(),
                                page.gap() - 1,
                                page.gap() - command.recordSize + 1,
                                reinterpret_cast<const void*>(UINTPTR_MAX / 2 + 1),
                                reinterpret_cast<const void*>(UINTPTR_MAX - 3)};
    for (const void* pointer : wild) {
        trial.mustRefuse(EFAULT, command.request, pointer,
                         [&] { return fmt::format("{} at {}", command.name, pointer); });
    }
}

// Every readable address has to be accepted: at odd addresses, up to the last byte of a page,
// read-only.
void checkReadablePlaces(Trial& trial, const Record& record, const PageBeforeGap& page) {
    const size_t size = record.command->recordSize;
    for (char* const place : {page.begin() + 1, page.gap() - size}) {
        std::memcpy(place, record.data(), size);
        page.makeReadOnly();
        trial.mustRefuse(0, record.command->request, place, [&] {
            return fmt::format("{} in read-only memory at {}", record.command->name,
                               static_cast<const void*>(place));
        });
        page.makeWritable();
    }
}

template <typename Work>
void forEachThreadId(Trial& trial, Work&& work) {
    for (const VELKCommand& command : VELK_COMMANDS) {
        if (const VELKField* const tid = findField(command, "tid")) {
            const Record record = validRecord(command, trial.tid());
            trial.prepareFor(record);
            work(record, *tid);
        }
    }
}

}  // namespace

void checkRequests(Trial& trial, const Settings&) {
    trial.mustTakeOne(VELK_IOC_INIT);
    for (unsigned number = 0; number < 1U << _IOC_NRBITS; ++number) {
        mustBeUnknown(trial, _IOC_WRITE, 'g', number, sizeof(VELK_VSYNC_PARAM));
    }
    for (const VELKCommand& command : VELK_COMMANDS) {
        const size_t size = command.recordSize;
        for (const unsigned direction : {_IOC_NONE, _IOC_READ, _IOC_READ | _IOC_WRITE}) {
            mustBeUnknown(trial, direction, 'g', command.number, size);
        }
        for (const size_t other : {size_t{0}, size - 1, size + 1, 2 * size, size_t{kLargestSize}}) {
            mustBeUnknown(trial, _IOC_WRITE, 'g', command.number, other);
        }
        for (const unsigned type : {unsigned{'G'}, unsigned{'h'}}) {
            mustBeUnknown(trial, _IOC_WRITE, type, command.number, size);
        }
    }
}

void checkPointers(Trial& trial, const Settings&) {
    const PageBeforeGap page;
    for (const VELKCommand& command : VELK_COMMANDS) {
        const Record record = validRecord(command, trial.tid());
        trial.prepareFor(record);
        checkWildPointers(trial, command, page);
        checkReadablePlaces(trial, record, page);
    }
}

void checkThreadIds(Trial& trial, const Settings&) {
    const ChildProcess child([](const ChildProcess::Ready& ready) {
        ready();
        pause();
    });
    const int64_t foreign[] = {0, 1, -1, getppid(), child.id()};
    forEachThreadId(trial, [&](const Record& valid, const VELKField& field) {
        for (const int64_t tid : foreign) {
            if (tid == trial.tid()) {
                continue;  // the first process of a namespace is 1 itself
            }
            Record record = valid;
            setValue(record, field, 0, tid);
            trial.mustRefuse(EINVAL, record.command->request, record.data(), [&] {
                return fmt::format("{} of a foreign thread, tid={}", record.command->name, tid);
            });
        }
    });

    Threads thread;
    std::promise<uint32_t> other;
    std::promise<void> isDone;  // destroyed first, which ends the thread as well
    thread.start([&other, done = isDone.get_future()] {
        other.set_value(ownTid());
        done.wait();
    });
    const uint32_t otherTid = other.get_future().get();
    forEachThreadId(trial, [&](const Record& valid, const VELKField& field) {
        Record record = valid;
        setValue(record, field, 0, otherTid);
        trial.mayTake(EINVAL, record.command->request, record.data(), [&] {
            return fmt::format("{} of another thread of the process", record.command->name);
        });
    });
    isDone.set_value();
    thread.join();
}

}  // namespace nodecheck

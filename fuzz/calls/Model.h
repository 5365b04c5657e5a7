/*
 * A second, plain implementation of the library's rules: no locks, no logs, no indices, every merge
 * by brute force over a flat list of what is active. Asked right after a call of the library, each
 * operation compares what the library sent with what it had to send, takes the driver's answers as
 * they were, and returns the result that the call had to give. A difference aborts.
 */
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>
#include <vector>

#include "VELKTypes.h"
#include "support/Platform.h"

namespace fuzz {

[[noreturn]] void fail(const char* format, ...) __attribute__((format(printf, 1, 2)));

// What gettid() returns to the library.
extern int32_t gThread;

// A command as the driver gets it, built by offsets.
struct Record {
    explicit Record(unsigned commandNumber) : number(commandNumber) {}
    template <typename Value>
    void put(size_t offset, Value value) {
        __builtin_memcpy(bytes.data() + offset, &value, sizeof(value));
    }

    unsigned number;
    std::array<uint8_t, 340> bytes = {};
};

class Model {
  public:
    bool isUp() const { return mUp.has_value(); }

    int init(const VELKInitParams& params);
    int uninit();
    int taskStart(const void* key, int task, const VELKTaskExtraParams* extra);
    int taskEnd(const void* key, int task);
    int sceneChange(int task, VELKSceneChangeMode mode);
    int control(const VELKSingleShotControl* control);
    int controlOf(int category);
    int resetControl(int category);
    int mark(int user);
    int unmark();
    int spanStart(int task) { return span(36, task); }
    int spanEnd(int task) { return span(37, task); }
    int anchorStart(int id, uint32_t serial) { return anchor(id, serial, 1); }
    int anchorEnd(int id, uint32_t serial) { return anchor(id, serial, 2); }
    // Of an operation that only sends a record.
    int sendWhileUp(const Record& record) { return mUp ? send(mFd, record) : -1; }

    // What the library did in a call: a command with the driver's answer, or an open of the node.
    void observe(unsigned number, const void* record, size_t size, int result);
    // Before a call is made again.
    void forgetEffects() { mEffects.clear(); }
    // Fails when the library did more than the model expected, unless that is not compared.
    void checkComplete(bool isSilent);

  private:
    struct Effect {
        Record record;
        int result;
    };
    struct Pair {
        const void* key;
        int task;
        uint32_t id;
        std::optional<Record> refused;  // the registration that the driver does not have yet
    };
    struct Slot {
        bool isActive;
        int tid;
        uint32_t id;
    };
    // One value that an active control asks for; it is merged with those of the same place.
    struct Active {
        int64_t place, value;
        bool operator==(const Active&) const = default;
    };

    Effect next(unsigned number);
    int send(int fd, const Record& record);
    int open();
    int sendTemporarily(const VELKSingleShotControl& control);
    const fake::TaskFigures* figures(int task) const;
    bool isValid(int task) const;
    Pair* find(const void* key, int task);
    Record registration(uint32_t id, int task, const VELKTaskExtraParams& extra) const;
    static Record taskRecord(uint32_t number, uint32_t id);
    static std::vector<Active> valuesOf(const VELKSingleShotControl& control);
    int64_t largest(int64_t place, int64_t floor) const;
    const VELKSingleShotControl* setting(int category) const;
    int sendMerged(const VELKSingleShotControl& control);
    int span(uint32_t number, int task);
    int target(int anchor, size_t element) const;
    int anchor(int anchor, uint32_t serial, int phase);

    // The library's state while it is up.
    struct Tables {
        VELKScenario scenario;
        bool hasCustomer;
        std::array<std::unordered_map<int, std::array<int, 2>>, 2> anchors;
        std::set<int> invalidAnchors;
        uint32_t nextId = 1;
        std::vector<Pair> pairs;
        std::map<int, std::vector<Slot>> slots;
        std::map<int, VELKSingleShotControl> defaults;
        std::vector<VELKSingleShotControl> stack;
        std::vector<Active> active;
        int sharedCount = 0;
    };
    std::optional<Tables> mUp;
    int mUsers = 0;
    int mFd = -1;           // of the tables
    int mTemporaryFd = -1;  // of marking while down
    std::vector<Effect> mEffects;
    size_t mChecked = 0;
};

}  // namespace fuzz

/*
 * Turns bytes into calls of the library and, between them, changes of tuning data, properties, log
 * switches and injected faults. Every call is compared with the model.
 *
 * One sequence in four may run out of memory within a call. The same call succeeds when it is made
 * again, with the effect that it has without the failure. What init, uninit, task starts and ends,
 * and marking before init leave behind depends on where they failed. After these the model is no
 * longer compared; what is still checked always holds: sections balance, no lock is held,
 * descriptors are only used while open, and nothing is left after the last uninit.
 */
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <utility>

#include "Model.h"
#include "VELKMachine.h"
#include "VELKMachineCus.h"
#include "support/AllocationFaults.h"
#include "support/Commands.h"
#include "support/Node.h"
#include "support/Recorder.h"

extern "C" pid_t __real_gettid();
extern "C" pid_t __wrap_gettid() {
    return fake::tInLibrary ? fuzz::gThread : __real_gettid();
}

namespace fuzz {
namespace {

using fake::node;
using fake::platform;

// Values that sequences pick from: few, so that they collide, and at the bounds.
constexpr std::array kTasks = {5, 6, 22, 24, 20, 21, 0, -1, 99};
constexpr std::array kCategories = {0, 4, 5, 7, 0, -3};
constexpr std::array kPercents = {1, 30, 60, 100, 0, -1, -2, 101};
constexpr std::array kLevels = {100U, 512U, 1024U, 0U, 600U, 1025U};
constexpr std::array kUclamps = {7, 600, 1024, 0, -1, 1025};
constexpr std::array kLimits = {5U, ~0U, 1U, 999999U, 0x80000000U};
constexpr std::array kAnchors = {1, 2, 3, -2, 0};
constexpr std::array kScenarios = {VELKScenario{3}, VELK_SCENARIO_FALLBACK};
constexpr std::array kTargets = {16, 5, 4, 1, 0, -1, -2};
constexpr std::array kClusterLevels = {0U, 600U, 1024U, 1025U, 0x7FFFFFFFU, 0x80000000U};
constexpr std::array kNames = {"TASK_CUSTOM_ABCDEFGHIJK", "", "MY_TASK_TASK_X", "CUSTOM_TASK_Y"};
constexpr std::array kOverrides = {0, 0, 304000, 201500, -201500, 100000, 1, -1};
constexpr size_t kMaxSteps = 2000;

// Bytes are read in statements of their own where there are several: compilers differ in the order
// in which they evaluate arguments.
class Sequence {
  public:
    Sequence(const uint8_t* bytes, size_t size) : mNext(bytes), mEnd(bytes + size) {
        fake::recorder().enable(false);
        node().reset();
        node().observer = [this](unsigned number, const void* record, size_t recordSize,
                                 int result) {
            mModel.observe(number, record, recordSize, result);
        };
        platform().reset();
        for (const auto property :
             {fake::kForceOff, fake::kDumpTaskTable, fake::kLatencySpec, fake::kJitterSpec}) {
            platform().set(property, 0);
        }
        fake::setLogSwitches(0);
    }

    void run() {
        const uint8_t bits = byte();
        mMayRunOutOfMemory = bits % 4 == 3;
        if (bits % 16 / 4 == 3) {
            node().handOut(bits / 16 % 2);
        }
        for (size_t steps = 0; mNext != mEnd && steps < kMaxSteps; ++steps) {
            const uint8_t choice = byte();
            if (choice >= 192) {
                changeWorld(choice % 13);
            } else {
                callLibrary(choice % 13);
            }
        }
        drain();
    }

  private:
    uint8_t byte() { return mNext == mEnd ? 0 : *mNext++; }
    template <typename Values>
    const auto& pick(const Values& values) {
        return values[byte() % values.size()];
    }

    // Makes one call and has the model judge it. The prediction is an operation of the model, or a
    // function with the model as its first parameter.
    template <typename Prediction, typename Operation, typename... Arguments>
    void perform(Prediction prediction, Operation operation, Arguments... arguments) {
        const auto call = [&] { return fake::call([&] { return operation(arguments...); }); };
        const int failing = std::exchange(mFailingAllocation, 0);
        fake::failAllocation(failing);
        int result = call();
        fake::failAllocation(0);
        if (result == fake::kThrew && failing != 0) {
            mModel.forgetEffects();
            result = call();
        }
        const int expected =
                mIsModelSilent ? result : std::invoke(prediction, mModel, arguments...);
        mModel.checkComplete(mIsModelSilent);
        if (result != expected || (result != 0 && result != -1) || platform().openSections != 0) {
            fail("result %d, expected %d; %d sections are open", result, expected,
                 platform().openSections.load());
        }
    }

    void callLibrary(int operation) {
        const int task = pick(kTasks);
        mIsModelSilent |= mFailingAllocation != 0 && (operation <= 4 || !mModel.isUp());
        switch (operation) {
            case 0:
                return init(byte());
            case 1:
                return perform(&Model::uninit, VELKMachine::uninit);
            case 2:
                return start(task, 1);
            case 3:
                return start(task, byte() % 24);
            case 4:
                return perform(&Model::taskEnd, notifyTaskEndCus, readKey(), task);
            case 5:
                return perform(&Model::sceneChange, notifyTaskSceneChangeCus, task,
                               static_cast<VELKSceneChangeMode>(byte() - 1));
            case 6: {
                const VELKSingleShotControl control = readControl();
                return perform(&Model::control, notifySingleShotControlCus, &control);
            }
            case 7:
                return perform(&Model::controlOf, notifySingleShotControlUserCus,
                               pick(kCategories));
            case 8:
                return perform(&Model::resetControl, notifyResetSingleShotControlUserCus,
                               pick(kCategories));
            case 9:
                return byte() % 2 == 0
                               ? perform(&Model::unmark, unsetCriticalTaskCus)
                               : perform(&Model::mark, markCriticalTaskUserCus, pick(kCategories));
            case 10:
                perform(&Model::spanStart, notifySingleShotCriticalTaskStartCus, task);
                return perform(&Model::spanEnd, notifySingleShotCriticalTaskEndCus, task);
            case 11: {
                const bool isEnd = byte() % 2 == 0;
                const int anchor = pick(kAnchors);
                const unsigned serial = ~0U - byte();
                return isEnd ? perform(&Model::anchorEnd, notifyAnchorPointEndCus, anchor, serial)
                             : perform(&Model::anchorStart, notifyAnchorPointStartCus, anchor,
                                       serial);
            }
            default:
                makePlainCalls(readBits());
        }
    }

    void makePlainCalls(uint32_t bits) {
        for (const fake::PlainCall& plain : fake::kPlainCalls) {
            Record record(plain.number);
            const auto put = [&record](size_t offset, uint32_t word) { record.put(offset, word); };
            perform([&record](Model& model) { return model.sendWhileUp(record); },
                    [&] { return plain.make(bits, put); });
        }
    }

    void changeWorld(int what) {
        fake::Source& source = platform().sources[byte() % 2];
        switch (what) {
            case 0: {
                const uint32_t mode = byte() % 16;
                return fake::setLogSwitches(mode, byte() % 8);
            }
            case 1:
                return fake::setLogSwitches(3, 5, ~0U << byte() % 32);
            case 2:
                return platform().set(fake::kForceOff, byte() % 2);
            case 3:
                node().fail(fake::kOpenDump, EACCES, byte() % 2);
                return platform().set(fake::kDumpTaskTable, byte() % 2);
            case 4: {
                const auto property = byte() % 2 == 0 ? fake::kLatencySpec : fake::kJitterSpec;
                return platform().set(property, pick(kOverrides));
            }
            case 5:
                platform().traceTags = byte() % 2 == 0 ? 0x400 : ~uint64_t{0x400};
                return;
            case 6:
                gThread = byte() % 3 + 1;
                return;
            case 7: {
                const unsigned command = 27 + byte() % 12;
                const int times = byte() % 8;
                return node().fail(command, EINVAL, times, byte() % 3 - 1);
            }
            case 8: {
                const int error = byte() % 2 == 0 ? ENOENT : EACCES;
                return node().fail(fake::kOpenNode, error, byte() % 3, -error);
            }
            case 9:
                source.tasks[pick(kTasks)] = {pick(kTargets), pick(kUclamps), byte(),
                                              byte() % 2 == 0, pick(kNames)};
                return;
            case 10:
                source.clusterLevels[byte() % 8] = pick(kClusterLevels);
                source.isMissing = byte() % 8 == 1;
                return;
            case 11:
                (byte() % 2 == 0 ? platform().anchors
                                 : platform().custAnchors)[pick(kScenarios)][pick(kAnchors)] = {
                        pick(kTargets), pick(kTargets)};
                if (const int category = pick(kCategories); byte() % 4 == 0) {
                    platform().singleShots.erase(category);
                } else {
                    platform().singleShots[category][pick(kScenarios)] = readControl();
                }
                return;
            default:
                mFailingAllocation = mMayRunOutOfMemory ? byte() % 32 : 0;
        }
    }

    void init(unsigned bits) {
        const VELKInitParams params = {.driverParam = bits,
                                       .scenario = pick(kScenarios),
                                       .customization = {},
                                       .queryMaxEfficientFreq = (bits & 1) != 0,
                                       .tuningParam1 = static_cast<int32_t>(bits % 8) - 2,
                                       .tuningParam2 = static_cast<int32_t>(bits / 8 % 4) - 1,
                                       .applyExtraDefaultControl = (bits & 0x80) != 0};
        ++mInits;
        perform(&Model::init, VELKMachine::init, std::cref(params));
    }

    void start(int task, int times) {
        const void* const key = readKey();
        const VELKTaskExtraParams extra = {.extraFlag0 = byte(), .extraFlag1 = 0xFF};
        for (int i = 0; i < times; ++i) {
            perform(&Model::taskStart, notifyTaskStartExtraCus, key, task, &extra);
        }
    }

    // Calls uninit for every user with no fault injected; nothing may be left then. Only a last
    // uninit forgets an absent node, so the library goes up and down once more.
    void drain() {
        mFailingAllocation = 0;
        platform().set(fake::kForceOff, 0);
        platform().sources[0].isMissing = false;
        node().failNothing();
        for (int users = mInits; users >= 0; --users) {
            perform(&Model::uninit, VELKMachine::uninit);
        }
        init(0);
        perform(&Model::uninit, VELKMachine::uninit);
        if (!node().openDescriptors().empty() || platform().livingConvertors != 0 ||
            !fake::recorder().violations().empty()) {
            fail("something is left, or was used when closed");
        }
    }

    const void* readKey() {
        const uintptr_t key = byte() % 16;
        return reinterpret_cast<const void*>(key < 12 ? 0x55FD00 + 16 * key : ~key << 32);
    }

    uint32_t readBits() {
        uint32_t bits = 0;
        for (int i = 0; i < 4; ++i) {
            bits = bits << 8 | byte();
        }
        return bits;
    }

    void readLevels(std::vector<uint32_t>& levels) {
        levels.resize(byte() % 10);
        for (uint32_t& level : levels) {
            level = pick(kLevels);
        }
    }

    VELKSingleShotControl readControl() {
        VELKSingleShotControl control;
        control.category = pick(kCategories);
        const uint8_t parts = byte();
        if ((parts & 1) != 0) {
            control.percentLevel = pick(kPercents);
        }
        if ((parts & 2) != 0) {
            readLevels(control.uclampLevels);
        }
        if ((parts & 4) != 0) {
            readLevels(control.rangeLevels1);
            readLevels(control.rangeLevels2);
            readLevels(control.rangeLevels3);
        }
        for (int i = (parts & 8) != 0 ? byte() % 6 : 0; i > 0; --i) {
            const int task = pick(kTasks);
            control.criticalTaskUclamps.emplace(task, pick(kUclamps));
        }
        if ((parts & 16) != 0) {
            control.limits = {pick(kLimits), byte(), 0, byte()};
        }
        control.sharedFlag = (parts & 32) != 0;
        const int flags = (parts & 64) != 0 ? byte() : 32;
        control.isReset = (flags & 1) != 0;
        control.releaseRequest = (flags & 2) != 0;
        control.auxFlag = (flags & 4) != 0;
        control.passFlag = (flags & 8) != 0;
        control.requestValue = flags / 16 - 3;
        control.auxValue = -flags;
        control.extraValues = {flags, -1, -flags};
        return control;
    }

    const uint8_t* mNext;
    const uint8_t* const mEnd;
    Model mModel;
    bool mMayRunOutOfMemory = false;
    int mFailingAllocation = 0;
    bool mIsModelSilent = false;
    int mInits = 0;
};

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Sequence(data, size).run();
    return 0;
}

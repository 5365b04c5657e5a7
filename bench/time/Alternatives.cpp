#include "time/Alternatives.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace bench {

namespace {

// The kernel's structure and flags; its header clashes with the C library's.
struct SchedulerAttributes {
    uint32_t size = sizeof(SchedulerAttributes);
    uint32_t policy = 0;
    uint64_t flags = 0;
    int32_t nice = 0;
    uint32_t priority = 0;
    uint64_t runtime = 0, deadline = 0, period = 0;
    uint32_t utilMin = 0, utilMax = 1024;
};
constexpr uint64_t kKeepAll = 0x08 | 0x10;
constexpr uint64_t kClampUtil = 0x20 | 0x40;

uint64_t gFlags = kKeepAll | kClampUtil;

int setUtilMin(uint32_t utilMin) {
    SchedulerAttributes attributes;
    attributes.flags = gFlags;
    attributes.utilMin = utilMin;
    return static_cast<int>(syscall(SYS_sched_setattr, 0, &attributes, 0U));
}

int clampOnAndOff() {
    return setUtilMin(512) | setUtilMin(0);
}

// A file of the kernel that holds one number: the values that start and end a boost.
struct Knob {
    const char* file;
    std::string_view on, off;
};
constexpr std::array<Knob, 3> kGroupKnobs = {{{"cpu.uclamp.min", "50.00", "0.00"},
                                              {"cpu.weight", "200", "100"},
                                              {"cpu.shares", "2048", "1024"}}};
constexpr Knob kStandIn = {"/proc/self/timerslack_ns", "40000", "50000"};

// The folder of a control group. It can be removed because no process is put into the group.
class Group {
  public:
    ~Group() { rmdir(mPath.c_str()); }
    bool make(const std::string& parent) {
        mPath = parent + "/velk_bench";
        return mkdir(mPath.c_str(), 0755) == 0 || errno == EEXIST;  // a killed run left it
    }
    const std::string& path() const { return mPath; }

  private:
    std::string mPath;
};

Knob gKnob = kStandIn;
int gKnobFd = -1;

bool write(std::string_view value) {
    return pwrite(gKnobFd, value.data(), value.size(), 0) == static_cast<ssize_t>(value.size());
}

int knobOnAndOff() {
    return write(gKnob.on) && write(gKnob.off) ? 0 : -1;
}

// Whether the file exists and takes its values; it is the one written from then on.
bool choose(const std::string& path, const Knob& knob) {
    gKnob = knob;
    gKnobFd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    return gKnobFd >= 0 && knobOnAndOff() == 0;
}

}  // namespace

Alternative schedulerAttributes() {
    Alternative alternative = {"sched_setattr(2) on and off", "", clampOnAndOff};
    if (clampOnAndOff() != 0) {
        alternative.remark =
                "without clamps, which this kernel refuses: " + std::string(std::strerror(errno));
        gFlags = kKeepAll;
    }
    return alternative;
}

Alternative controlGroup() {
    for (const char* parent : {"/sys/fs/cgroup", "/sys/fs/cgroup/cpu"}) {
        static Group group;
        if (!group.make(parent)) {
            continue;
        }
        for (const Knob& knob : kGroupKnobs) {
            if (choose(group.path() + '/' + knob.file, knob)) {
                return {std::string("write to ") + knob.file + " on and off", "", knobOnAndOff};
            }
        }
        rmdir(group.path().c_str());
    }
    if (choose(kStandIn.file, kStandIn)) {
        return {std::string("write to ") + kStandIn.file + " on and off",
                "stands in for a control group, none of which can be written here", knobOnAndOff};
    }
    return {"write to a control group on and off", "no control group can be written here", nullptr};
}

}  // namespace bench

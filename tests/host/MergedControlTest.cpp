#include "driver/MergedControl.h"

#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include "DriverScript.h"

namespace desk {
namespace {

// "percent=80 level=1:700 task=2:600 request=3 limit=5 shared reset"
VELK_SINGLE_SHOT_PARAM recordOf(const std::string& text) {
    VELK_SINGLE_SHOT_PARAM record = {};
    record.tid = kTid;
    record.percentLevel = VELK_NO_REQUEST;
    record.requestValue = VELK_NO_REQUEST;
    size_t tasks = 0;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const std::string name = word.substr(0, word.find('='));
        int first = 1;
        int second = 0;
        const std::string value = word.substr(std::min(name.size() + 1, word.size()));
        std::sscanf(value.c_str(), "%d:%d", &first, &second);
        if (name == "percent") {
            record.percentLevel = first;
        } else if (name == "level") {
            record.uclampLevels[first] = static_cast<uint32_t>(second);
        } else if (name == "task") {
            record.criticalTaskIds[tasks] = static_cast<uint32_t>(first);
            record.criticalTaskUclamps[tasks++] = static_cast<uint32_t>(second);
        } else if (name == "request") {
            record.requestValue = first;
        } else if (name == "limit") {
            record.limits[0] = static_cast<uint32_t>(first);
        } else {
            (name == "reset" ? record.isReset : record.sharedFlag) = 1;
        }
    }
    return record;
}

std::string describe(const MergedControl& control) {
    return control.isEmpty()
                   ? "nothing"
                   : fmt::format("levels {} percent {} request {} tasks {} limit {}{}",
                                 fmt::join(control.uclampLevels, " "), control.percentLevel,
                                 control.requestValue.value_or(0), control.taskUclamps,
                                 control.limit, control.sharedFlag ? " shared" : "");
}

struct ControlCase {
    const char* script;  // commands and, in brackets, controls
    const char* inForce;
    const char* atUninit = "nothing";
};

// The desk's init names the cluster levels 1024, 800 and 512, every task has the default uclamp
// 300.
constexpr ControlCase kControlCases[] = {
        {"init,[percent=80],[percent=-2 reset]", "nothing"},
        {"init,[percent=80],[],[percent=0]", "nothing"},
        {"init,[percent=80 request=3 limit=9 shared],[level=1:801 level=2:512 level=3:1]",
         "levels 0 801 0 1 0 0 0 0 percent 80 request 3 tasks {} limit 9 shared"},
        {"init,[percent=80 request=3 limit=9 level=1:801 shared],"
         "[percent=-2 request=-2 limit=999999 level=1:800 shared reset]",
         "nothing"},
        {"init,[percent=80 shared],[percent=70 reset]",
         "levels 0 0 0 0 0 0 0 0 percent 70 request 0 tasks {} limit 0 shared"},
        // Critical tasks are merged task by task.
        {"init,reg 1,reg 2,[task=1:600],[task=2:700 task=2:500 task=3:900]",
         "levels 0 0 0 0 0 0 0 0 percent 0 request 0 tasks {1: 600, 2: 700} limit 0"},
        {"init,reg 1,reg 2,[task=1:600 task=2:700],[task=1:300 reset],[percent=1]",
         "levels 0 0 0 0 0 0 0 0 percent 1 request 0 tasks {2: 700} limit 0"},
        // While the library is down, a record stands for itself.
        {"[percent=40 level=1:5]", "levels 0 5 0 0 0 0 0 0 percent 40 request 0 tasks {} limit 0"},
        {"[percent=40 level=1:5],[]", "nothing"},
        {"[percent=40],init", "nothing"},
        {"init,[percent=80],uninit", "nothing",
         "levels 0 0 0 0 0 0 0 0 percent 80 request 0 tasks {} limit 0"},
        {"init,[percent=80],uninit,[level=0:9],[percent=30]",
         "levels 0 0 0 0 0 0 0 0 percent 30 request 0 tasks {} limit 0",
         "levels 0 0 0 0 0 0 0 0 percent 80 request 0 tasks {} limit 0"},
        {"init,[percent=80],uninit,init", "nothing"},
};

TEST(MergedControl, HoldsWhatIsStillAskedFor) {
    for (const ControlCase& c : kControlCases) {
        SCOPED_TRACE(c.script);
        ScriptedDriver driver;
        std::istringstream steps(c.script);
        for (std::string step; std::getline(steps, step, ',');) {
            if (step.front() == '[') {
                EXPECT_EQ(driver.send(VELK_IOC_SINGLE_SHOT,
                                      recordOf(step.substr(1, step.size() - 2))),
                          0);
            } else {
                driver.play(step);
            }
        }
        const DriverSnapshot snapshot = driver.model.snapshot();
        EXPECT_EQ(describe(snapshot.control), c.inForce);
        EXPECT_EQ(describe(snapshot.controlAtUninit), c.atUninit);
    }
}

}  // namespace
}  // namespace desk

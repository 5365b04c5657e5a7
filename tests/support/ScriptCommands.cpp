#include <cerrno>
#include <cstring>
#include <future>
#include <stdexcept>

#include "support/Commands.h"
#include "support/LibraryTest.h"
#include "support/RecordText.h"
#include "support/Script.h"
#include "support/ScriptArguments.h"

namespace fake {

VELKSingleShotControl controlOf(const Arguments& a) {
    VELKSingleShotControl c;
    a.set("category", c.category);
    a.set("uclamp", c.uclampLevels);
    a.set("percent", c.percentLevel);
    a.set("reset", c.isReset);
    a.set("request", c.requestValue);
    a.set("aux", c.auxValue);
    a.set("release", c.releaseRequest);
    a.set("auxflag", c.auxFlag);
    a.set("range1", c.rangeLevels1);
    a.set("range2", c.rangeLevels2);
    a.set("range3", c.rangeLevels3);
    a.set("critical", c.criticalTaskUclamps);
    a.set("limits", c.limits);
    a.set("pass", c.passFlag);
    a.set("shared", c.sharedFlag);
    a.set("extra", c.extraValues);
    return c;
}

void callInit(const Arguments& a) {
    VELKInitParams params = kParams;
    a.set("driver", params.driverParam);
    a.set("freq", params.queryMaxEfficientFreq);
    a.set("p1", params.tuningParam1);
    a.set("p2", params.tuningParam2);
    a.set("extra", params.applyExtraDefaultControl);
    init(params);
}

void callStart(const Arguments& a) {
    const VELKTaskExtraParams none;
    VELKTaskExtraParams extra;
    a.set("head", extra.groupHead);
    a.set("flag0", extra.extraFlag0);
    a.set("flag1", extra.extraFlag1);
    if (std::memcmp(&extra, &none, sizeof(extra)) == 0) {
        start(a.at<uintptr_t>(0), a.at(1));
    } else {
        make(notifyTaskStartExtraCus, keyOf(a.at<uintptr_t>(0)), a.at(1), &extra);
    }
}

namespace {

Source& sourceOf(const Arguments& a) {
    return platform().sources.at(a.choice(0));
}

void goUp(const Arguments& /*none*/) {
    EXPECT_EQ(0, init());
    recorder().take();
}

// Keeps tuning data and properties; descriptors count from the first again.
void goDown(const Arguments& /*none*/) {
    while (uninit() == 0) {
    }
    node().reset();
    recorder().take();
}

void fail(const Arguments& a) {
    static constexpr std::array kErrors = {0, ENOENT, EACCES, EMFILE, EINTR, EINVAL, EIO};
    const bool isCommand = std::isdigit(static_cast<unsigned char>(a.word(0)[0])) != 0;
    const auto what = isCommand ? a.at<unsigned>(0) : static_cast<unsigned>(a.choice(0));
    if (isCommand ? what - kFirstCommand >= kRecords.size() : what > kClose) {
        throw Mistake("there is no command '" + a.word(0) + "'");
    }
    node().fail(what, kErrors.at(a.choice(1)), a.at(2, kForever), a.at(3, -1));
}

void setProperty(const Arguments& a) {
    static constexpr std::array kKnown = {kForceOff, kLatencySpec, kJitterSpec};
    platform().set(kKnown.at(a.choice(0)), a.at(1));
}

void setTask(const Arguments& a) {
    sourceOf(a).tasks[a.at(1)] = {a.at(2), a.at(3), a.at(4), a.at<uint8_t>(5) != 0,
                                  a.count() > 6 ? a.word(6) : ""};
}

void setAnchor(const Arguments& a) {
    auto& anchors = a.choice(0) == 0 ? platform().anchors : platform().custAnchors;
    anchors[VELKScenario{a.at(1)}][a.at(2)] = {a.at(3), a.at(4)};
}

void setSetting(const Arguments& a) {
    platform().singleShots[a.at(0)][VELKScenario{a.at(1)}] = controlOf(a);
}

void changeDuring(const Arguments& a) {
    if (recorder().hook) {
        throw Mistake("the '! during' before still waits, expected its event first");
    }
    Words change = a.from(1);
    change.insert(change.begin(), "!");
    recorder().hook = [beginning = a.word(0), change](const Event& event) {
        if (event.text.starts_with(beginning)) {
            recorder().hook = nullptr;
            carryOut(change);
        }
    };
}

void show(const Arguments& a) {
    static constexpr std::array<uint32_t, 10> kKinds = {
            kUsual, kNode, kLog, kTrace, kResult, kPlatform, kQuery, kProperty, kTags, kLock};
    uint32_t shown = 0;
    for (size_t i = 0; i < a.count(); ++i) {
        shown |= kKinds.at(a.choice(i));
    }
    shownEvents() = shown;
}

const std::map<std::string, SpelledCall>& changes() {
    static const std::map<std::string, SpelledCall> table = {
            {"! show", {"usual/node/log/trace/result/platform/query/property/tags/lock...", show}},
            {"! forget", {"", [](Args) { recorder().take(); }}},
            {"! up", {"", goUp}},
            {"! down", {"", goDown}},
            {"! fail",
             {"open/dump/close/COMMAND 0/ENOENT/EACCES/EMFILE/EINTR/EINVAL/EIO [TIMES] [RESULT]",
              fail}},
            {"! handOut", {"DESCRIPTOR", [](Args a) { node().handOut(a.at(0)); }}},
            {"! set", {"forceoff/latencySpec/jitterSpec VALUE", setProperty}},
            {"! log", {"MODE", [](Args a) { setLogSwitches(a.at<uint32_t>(0)); }}},
            {"! tags", {"TAGS", [](Args a) { platform().traceTags = a.at<uint64_t>(0); }}},
            {"! task", {"own/customer TASK TARGETTIME UCLAMP SPECVALUE VIP [NAME]", setTask}},
            {"! noTask", {"own/customer TASK", [](Args a) { sourceOf(a).tasks.erase(a.at(1)); }}},
            {"! missing", {"own/customer", [](Args a) { sourceOf(a).isMissing = true; }}},
            {"! anchor", {"own/customer SCENARIO ANCHOR LATENCY JITTER", setAnchor}},
            {"! noAnchors", {"", [](Args) { platform().anchors = platform().custAnchors = {}; }}},
            {"! setting", {std::string("CATEGORY SCENARIO ") + kControlWords, setSetting}},
            {"! noSetting", {"CATEGORY", [](Args a) { platform().singleShots[a.at(0)].clear(); }}},
            {"! throw", {"", [](Args) { throw std::runtime_error("platform"); }}},
            {"! during", {"BEGINNING CHANGE...", changeDuring}},
            {"! locks", {"NAME...", [](Args a) { recorder().nameLocks(a.from(0)); }}},
    };
    return table;
}

const std::map<std::string, SpelledCall>& commands() {
    static const std::map<std::string, SpelledCall> all = [] {
        std::map<std::string, SpelledCall> table = spelledCalls();
        table.insert(changes().begin(), changes().end());
        return table;
    }();
    return all;
}

}  // namespace

void carryOut(const Words& words) {
    const bool isOnThread = words[0] == "T>";
    const auto name = (isOnThread ? ">" : words[0]) + ' ' + (words.size() > 1 ? words[1] : "");
    const auto command = commands().find(name);
    if (command == commands().end()) {
        throw Mistake("unknown '" + name +
                      "', expected a call of tests/support/Commands.h or a change that "
                      "tests/transcripts/README.md lists");
    }
    const auto& [arguments, run] = command->second;
    try {
        const Arguments given(arguments, {words.begin() + 2, words.end()});
        std::async(isOnThread ? std::launch::async : std::launch::deferred, run, given).get();
    } catch (const Mistake& mistake) {
        throw Mistake(std::string(mistake.what()) + "; it is written: " + name + ' ' + arguments);
    }
}

std::vector<std::string> changeUsages() {
    std::vector<std::string> all;
    for (const auto& [name, command] : changes()) {
        all.push_back(name + (command.arguments.empty() ? "" : ' ' + command.arguments));
    }
    return all;
}

}  // namespace fake

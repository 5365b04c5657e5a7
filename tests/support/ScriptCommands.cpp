#include <cerrno>
#include <cstring>
#include <future>
#include <stdexcept>

#include "support/LibraryTest.h"
#include "support/RecordText.h"
#include "support/Script.h"
#include "support/ScriptArguments.h"

namespace fake {
namespace {

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

constexpr const char* kControl =
        "[category=N] [uclamp=N,...] [percent=N] [reset] [request=N] [aux=N] [release] [auxflag] "
        "[range1=N,...] [range2=N,...] [range3=N,...] [critical=TASK:N,...] [limits=N,...] [pass] "
        "[shared] [extra=N,...]";

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
        start(a.at<uintptr_t>(0), a.at(1), extra);
    }
}

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
    const auto what = static_cast<unsigned>(a.choice(0));
    const bool isCommand = what > kClose;
    node().fail(isCommand ? what - kClose - 1 + kFirstCommand : what, kErrors.at(a.choice(1)),
                a.at(2, kForever), a.at(3, -1));
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

struct Command {
    std::string arguments;  // a pattern; see ScriptArguments.h
    void (*run)(const Arguments&);
};

const std::map<std::string, Command>& commands() {
    using Args = const Arguments&;
    static const std::map<std::string, Command> table = {
            {"> init", {"[driver=N] [freq] [p1=N] [p2=N] [extra]", callInit}},
            {"> uninit", {"", [](Args) { uninit(); }}},
            {"> start", {"KEY TASK [head=N] [flag0=N] [flag1=N]", callStart}},
            {"> end", {"KEY TASK", [](Args a) { end(a.at<uintptr_t>(0), a.at(1)); }}},
            {"> scene", {"TASK MODE", [](Args a) { sceneChange(a.at(0), a.at(1)); }}},
            {"> control", {kControl, [](Args a) { control(controlOf(a)); }}},
            {"> category", {"CATEGORY", [](Args a) { control(a.at(0)); }}},
            {"> reset", {"[CATEGORY]", [](Args a) { a.count() == 0 ? reset() : reset(a.at(0)); }}},
            {"> mark", {"[USER]", [](Args a) { a.count() == 0 ? mark() : mark(a.at(0)); }}},
            {"> unmark", {"", [](Args) { unmark(); }}},
            {"> spanStart", {"TASK", [](Args a) { spanStart(a.at(0)); }}},
            {"> spanEnd", {"TASK", [](Args a) { spanEnd(a.at(0)); }}},
            {"> anchorStart",
             {"ANCHOR SERIAL", [](Args a) { anchorStart(a.at(0), a.at<unsigned>(1)); }}},
            {"> anchorEnd",
             {"ANCHOR SERIAL", [](Args a) { anchorEnd(a.at(0), a.at<unsigned>(1)); }}},
            {"> vsync", {"", [](Args) { vsync(); }}},
            {"> fps", {"FPS", [](Args a) { camFps(a.real(0)); }}},

            {"! show", {"usual/node/log/trace/result/platform/query/property/tags/lock...", show}},
            {"! forget", {"", [](Args) { recorder().take(); }}},
            {"! up", {"", goUp}},
            {"! down", {"", goDown}},
            {"! fail",
             {"open/dump/close/27/28/29/30/31/32/33/34/35/36/37/38 "
              "0/ENOENT/EACCES/EMFILE/EINTR/EINVAL/EIO [TIMES] [RESULT]",
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
            {"! setting", {std::string("CATEGORY SCENARIO ") + kControl, setSetting}},
            {"! noSetting", {"CATEGORY", [](Args a) { platform().singleShots[a.at(0)].clear(); }}},
            {"! throw", {"", [](Args) { throw std::runtime_error("platform"); }}},
            {"! during", {"BEGINNING CHANGE...", changeDuring}},
            {"! locks", {"NAME...", [](Args a) { recorder().nameLocks(a.from(0)); }}},
    };
    return table;
}

}  // namespace

void carryOut(const Words& words) {
    const bool isOnThread = words[0] == "T>";
    const auto name = (isOnThread ? ">" : words[0]) + ' ' + (words.size() > 1 ? words[1] : "");
    const auto command = commands().find(name);
    if (command == commands().end()) {
        throw Mistake("unknown '" + name +
                      "', expected one that tests/transcripts/README.md lists");
    }
    const auto& [arguments, run] = command->second;
    try {
        const Arguments given(arguments, {words.begin() + 2, words.end()});
        std::async(isOnThread ? std::launch::async : std::launch::deferred, run, given).get();
    } catch (const Mistake& mistake) {
        throw Mistake(std::string(mistake.what()) + "; it is written: " + name + ' ' + arguments);
    }
}

std::vector<std::string> usages() {
    std::vector<std::string> all;
    for (const auto& [name, command] : commands()) {
        all.push_back(name + (command.arguments.empty() ? "" : ' ' + command.arguments));
    }
    return all;
}

}  // namespace fake

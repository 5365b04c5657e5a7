#include <algorithm>
#include <cerrno>
#include <map>
#include <sstream>
#include <stdexcept>

#include "support/LibraryTest.h"
#include "support/Script.h"

namespace fake {
namespace {

using Numbers = std::vector<int64_t>;

int64_t number(const std::string& text) {
    return std::stoll(text, nullptr, 0);
}

// "1,2,3" and "5:600,22:700" alike.
Numbers numbers(std::string text) {
    std::replace(text.begin(), text.end(), ':', ',');
    std::istringstream input(text);
    Numbers values;
    for (std::string value; std::getline(input, value, ',');) {
        values.push_back(number(value));
    }
    return values;
}

// What follows the name of a call or a change.
class Arguments {
  public:
    explicit Arguments(const Words& words) : mWords(words.begin() + 1, words.end()) {}
    size_t count() const { return mWords.size(); }
    const std::string& word(size_t i) const { return mWords.at(i); }
    template <typename Value = int>
    Value at(size_t i) const {
        return static_cast<Value>(number(mWords.at(i)));
    }
    int at(size_t i, int missing) const { return i < count() ? at(i) : missing; }
    Words from(size_t i) const {
        return {std::next(mWords.begin(), static_cast<int>(i)), mWords.end()};
    }

    // Takes the value from NAME=VALUE, or 1 from NAME alone; without either it stays.
    template <typename Value>
    void set(const std::string& name, Value& value) const {
        if (const Numbers all = named(name); !all.empty()) {
            value = static_cast<Value>(all.front());
        }
    }
    template <typename Values>
    void setAll(const std::string& name, Values& values) const {
        const Numbers all = named(name);
        if constexpr (requires { values.resize(all.size()); }) {
            values.resize(all.size());
        }
        std::transform(all.begin(), all.end(), values.begin(), [](int64_t value) {
            return static_cast<typename Values::value_type>(value);
        });
    }
    Numbers named(const std::string& name) const {
        for (const std::string& word : mWords) {
            if (word == name || word.starts_with(name + '=')) {
                return numbers(word == name ? "1" : word.substr(name.size() + 1));
            }
        }
        return {};
    }

  private:
    const Words mWords;
};

VELKSingleShotControl controlOf(const Arguments& a) {
    VELKSingleShotControl c;
    a.set("category", c.category);
    a.setAll("uclamp", c.uclampLevels);
    a.set("percent", c.percentLevel);
    a.set("reset", c.isReset);
    a.set("request", c.requestValue);
    a.set("aux", c.auxValue);
    a.set("release", c.releaseRequest);
    a.set("auxflag", c.auxFlag);
    a.setAll("range1", c.rangeLevels1);
    a.setAll("range2", c.rangeLevels2);
    a.setAll("range3", c.rangeLevels3);
    std::vector<int32_t> critical;
    a.setAll("critical", critical);
    for (size_t i = 0; i < critical.size(); i += 2) {
        c.criticalTaskUclamps.emplace(critical.at(i), critical.at(i + 1));
    }
    a.setAll("limits", c.limits);
    a.set("pass", c.passFlag);
    a.set("shared", c.sharedFlag);
    a.setAll("extra", c.extraValues);
    return c;
}

int callInit(const Arguments& a) {
    VELKInitParams params = kParams;
    a.set("driver", params.driverParam);
    a.set("freq", params.queryMaxEfficientFreq);
    a.set("p1", params.tuningParam1);
    a.set("p2", params.tuningParam2);
    a.set("extra", params.applyExtraDefaultControl);
    return init(params);
}

int callStart(const Arguments& a) {
    VELKTaskExtraParams extra;
    a.set("head", extra.groupHead);
    a.set("flag0", extra.extraFlag0);
    a.set("flag1", extra.extraFlag1);
    return a.count() == 2 ? start(a.at<uintptr_t>(0), a.at(1))
                          : start(a.at<uintptr_t>(0), a.at(1), extra);
}

const std::map<std::string, int (*)(const Arguments&)> kCalls = {
        {"init", callInit},
        {"uninit", [](const auto&) { return uninit(); }},
        {"start", callStart},
        {"end", [](const auto& a) { return end(a.template at<uintptr_t>(0), a.at(1)); }},
        {"scene", [](const auto& a) { return sceneChange(a.at(0), a.at(1)); }},
        {"control", [](const auto& a) { return control(controlOf(a)); }},
        {"category", [](const auto& a) { return control(a.at(0)); }},
        {"reset", [](const auto& a) { return a.count() == 0 ? reset() : reset(a.at(0)); }},
        {"mark", [](const auto& a) { return a.count() == 0 ? mark() : mark(a.at(0)); }},
        {"unmark", [](const auto&) { return unmark(); }},
        {"spanStart", [](const auto& a) { return spanStart(a.at(0)); }},
        {"spanEnd", [](const auto& a) { return spanEnd(a.at(0)); }},
        {"anchorStart",
         [](const auto& a) { return anchorStart(a.at(0), a.template at<unsigned>(1)); }},
        {"anchorEnd", [](const auto& a) { return anchorEnd(a.at(0), a.template at<unsigned>(1)); }},
        {"vsync", [](const auto&) { return vsync(); }},
        {"fps", [](const auto& a) { return camFps(std::stof(a.word(0))); }},
};

// A value by its name, else by its number.
template <typename Value>
Value valueOf(const std::string& name, const std::map<std::string, Value>& values) {
    const auto entry = values.find(name);
    return entry == values.end() ? static_cast<Value>(number(name)) : entry->second;
}

Property propertyOf(const Arguments& a) {
    return valueOf<Property>(
            a.word(0),
            {{"forceoff", kForceOff}, {"latencySpec", kLatencySpec}, {"jitterSpec", kJitterSpec}});
}

bool isCustomer(const Arguments& a) {
    return a.word(0) == "customer";
}

Source& sourceOf(const Arguments& a) {
    return platform().sources.at(isCustomer(a) ? 1 : 0);
}

void goUp() {
    EXPECT_EQ(0, init());
    recorder().take();
}

// Keeps tuning data and properties; descriptors count from the first again.
void goDown() {
    while (uninit() == 0) {
    }
    node().reset();
    recorder().take();
}

// WHAT ERROR [TIMES [RESULT]]
void fail(const Arguments& a) {
    const auto what = valueOf<unsigned>(
            a.word(0), {{"open", kOpenNode}, {"dump", kOpenDump}, {"close", kClose}});
    const auto error = valueOf<int>(a.word(1), {{"ENOENT", ENOENT},
                                                {"EACCES", EACCES},
                                                {"EMFILE", EMFILE},
                                                {"EINTR", EINTR},
                                                {"EINVAL", EINVAL},
                                                {"EIO", EIO}});
    node().fail(what, error, a.at(2, kForever), a.at(3, -1));
}

// SOURCE TASK [TARGETTIME UCLAMP SPECVALUE VIP [NAME]]; without figures the task is unknown
void setTask(const Arguments& a) {
    auto& tasks = sourceOf(a).tasks;
    tasks.erase(a.at(1));
    if (a.count() > 2) {
        tasks[a.at(1)] = {a.at(2), a.at(3), a.at(4), a.at<bool>(5), a.count() > 6 ? a.word(6) : ""};
    }
}

// SOURCE SCENARIO ANCHOR LATENCY JITTER
void setAnchor(const Arguments& a) {
    auto& anchors = isCustomer(a) ? platform().custAnchors : platform().anchors;
    anchors[a.at<VELKScenario>(1)][a.at(2)] = {a.at(3), a.at(4)};
}

// CATEGORY [SCENARIO CONTROL...]
void setSetting(const Arguments& a) {
    auto& controls = platform().singleShots[a.at(0)];
    if (a.count() > 1) {
        controls[a.at<VELKScenario>(1)] = controlOf(a);
    }
}

// BEGINNING CHANGE...: the change happens inside the next event that begins like this
void changeDuring(const Arguments& a) {
    recorder().hook = [beginning = a.word(0), words = a.from(1)](const Event& event) {
        if (event.text.starts_with(beginning)) {
            recorder().hook = nullptr;
            uint32_t shown = 0;
            changeWorld(words, shown);
        }
    };
}

const std::map<std::string, void (*)(const Arguments&)> kChanges = {
        {"forget", [](const auto&) { recorder().take(); }},
        {"up", [](const auto&) { goUp(); }},
        {"down", [](const auto&) { goDown(); }},
        {"locks", [](const auto& a) { recorder().nameLocks(a.from(0)); }},
        {"set", [](const auto& a) { platform().set(propertyOf(a), a.at(1)); }},
        {"unset", [](const auto& a) { platform().unset(propertyOf(a)); }},
        {"log", [](const auto& a) { setLogSwitches(a.template at<uint32_t>(0)); }},
        {"tags", [](const auto& a) { platform().traceTags = a.template at<uint64_t>(0); }},
        {"fail", fail},
        {"handOut", [](const auto& a) { node().handOut(a.at(0)); }},
        {"task", setTask},
        {"missing", [](const auto& a) { sourceOf(a).isMissing = true; }},
        {"anchor", setAnchor},
        {"noAnchors", [](const auto&) { platform().anchors = platform().custAnchors = {}; }},
        {"setting", setSetting},
        {"throw", [](const auto&) { throw std::runtime_error("platform"); }},
        {"during", changeDuring},
};

}  // namespace

void callOperation(const Words& words) {
    kCalls.at(words.at(0))(Arguments(words));
}

void changeWorld(const Words& words, uint32_t& shown) {
    if (words.at(0) != "show") {
        kChanges.at(words.at(0))(Arguments(words));
        return;
    }
    shown = 0;
    for (const std::string& kind : Arguments(words).from(0)) {
        shown |= valueOf<uint32_t>(kind, {{"usual", kUsual},
                                          {"node", kNode},
                                          {"log", kLog},
                                          {"trace", kTrace},
                                          {"result", kResult},
                                          {"platform", kPlatform},
                                          {"query", kQuery},
                                          {"property", kProperty},
                                          {"tags", kTags},
                                          {"lock", kLock}});
    }
}

}  // namespace fake

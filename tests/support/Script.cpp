#include "support/Script.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "support/LibraryTest.h"

namespace fake {
namespace {

using Words = std::vector<std::string>;
using Numbers = std::vector<int64_t>;

int64_t number(const std::string& text) {
    return std::stoll(text, nullptr, 0);
}

// "1,2,3" and "5:600,22:700" alike.
Numbers numbers(std::string text) {
    std::replace_if(
            text.begin(), text.end(), [](char c) { return c == ',' || c == ':'; }, ' ');
    std::istringstream words(text);
    Numbers values;
    for (std::string word; words >> word;) {
        values.push_back(number(word));
    }
    return values;
}

// The arguments after the command, as numbers of whatever type they are for.
class Arguments {
  public:
    explicit Arguments(Words words) : mWords(std::move(words)) {}
    size_t count() const { return mWords.size(); }
    const std::string& word(size_t i) const { return mWords.at(i); }
    int64_t at(size_t i) const { return number(mWords.at(i)); }
    int integer(size_t i) const { return static_cast<int>(at(i)); }
    int integer(size_t i, int missing) const { return i < count() ? integer(i) : missing; }

    // The value of NAME=VALUE, of NAME alone "1", of neither "".
    std::string named(const std::string& name) const {
        for (const std::string& word : mWords) {
            if (word == name) {
                return "1";
            }
            if (word.starts_with(name + '=')) {
                return word.substr(name.size() + 1);
            }
        }
        return "";
    }
    template <typename Value>
    void set(const std::string& name, Value& value) const {
        if (const std::string text = named(name); !text.empty()) {
            value = static_cast<Value>(number(text));
        }
    }
    template <typename Values>
    void setAll(const std::string& name, Values& values) const {
        const Numbers all = numbers(named(name));
        if constexpr (requires { values.resize(all.size()); }) {
            values.resize(all.size());
        }
        std::transform(all.begin(), all.end(), values.begin(), [](int64_t value) {
            return static_cast<typename Values::value_type>(value);
        });
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
    const Numbers critical = numbers(a.named("critical"));
    for (size_t i = 0; i + 1 < critical.size(); i += 2) {
        c.criticalTaskUclamps.emplace(static_cast<int>(critical[i]),
                                      static_cast<int>(critical[i + 1]));
    }
    a.setAll("limits", c.limits);
    a.set("pass", c.passFlag);
    a.set("shared", c.sharedFlag);
    a.setAll("extra", c.extraValues);
    return c;
}

VELKInitParams paramsOf(const Arguments& a) {
    VELKInitParams params = kParams;
    a.set("driver", params.driverParam);
    a.set("freq", params.queryMaxEfficientFreq);
    a.set("p1", params.tuningParam1);
    a.set("p2", params.tuningParam2);
    a.set("extra", params.applyExtraDefaultControl);
    return params;
}

const std::map<std::string, int (*)(const Arguments&)> kCalls = {
        {"init", [](const Arguments& a) { return init(paramsOf(a)); }},
        {"uninit", [](const Arguments&) { return uninit(); }},
        {"start",
         [](const Arguments& a) {
             const auto key = static_cast<uintptr_t>(a.at(0));
             VELKTaskExtraParams extra;
             a.set("head", extra.groupHead);
             a.set("flag0", extra.extraFlag0);
             a.set("flag1", extra.extraFlag1);
             return a.count() == 2 ? start(key, a.integer(1)) : start(key, a.integer(1), extra);
         }},
        {"end",
         [](const Arguments& a) { return end(static_cast<uintptr_t>(a.at(0)), a.integer(1)); }},
        {"scene", [](const Arguments& a) { return sceneChange(a.integer(0), a.integer(1)); }},
        {"control", [](const Arguments& a) { return control(controlOf(a)); }},
        {"category", [](const Arguments& a) { return control(a.integer(0)); }},
        {"reset",
         [](const Arguments& a) { return a.count() == 0 ? reset() : reset(a.integer(0)); }},
        {"mark", [](const Arguments& a) { return a.count() == 0 ? mark() : mark(a.integer(0)); }},
        {"unmark", [](const Arguments&) { return unmark(); }},
        {"spanStart", [](const Arguments& a) { return spanStart(a.integer(0)); }},
        {"spanEnd", [](const Arguments& a) { return spanEnd(a.integer(0)); }},
        {"anchorStart",
         [](const Arguments& a) {
             return anchorStart(a.integer(0), static_cast<unsigned>(a.at(1)));
         }},
        {"anchorEnd",
         [](const Arguments& a) {
             return anchorEnd(a.integer(0), static_cast<unsigned>(a.at(1)));
         }},
        {"vsync", [](const Arguments&) { return vsync(); }},
        {"fps", [](const Arguments& a) { return camFps(std::stof(a.word(0))); }},
};

uint32_t gShown = kUsual;

void change(const Words& words);

Source& sourceOf(const Arguments& a) {
    return platform().sources.at(a.word(0) == "customer" ? 1 : 0);
}

template <typename Value>
Value named(const std::map<std::string, Value>& values, const std::string& name) {
    const auto entry = values.find(name);
    return entry == values.end() ? static_cast<Value>(number(name)) : entry->second;
}

const std::map<std::string, int> kErrors = {
        {"ENOENT", ENOENT}, {"EACCES", EACCES}, {"EMFILE", EMFILE}, {"EINTR", EINTR},
        {"EINVAL", EINVAL}, {"EIO", EIO},       {"ENOSPC", ENOSPC}};
const std::map<std::string, unsigned> kCallsThatFail = {
        {"open", kOpenNode}, {"dump", kOpenDump}, {"close", kClose}, {"write", kWrite}};
const std::map<std::string, Property> kSwitches = {{"debuglog", kDebugLog},
                                                   {"forceoff", kForceOff},
                                                   {"latencySpec", kLatencySpec},
                                                   {"jitterSpec", kJitterSpec}};
const std::map<std::string, uint32_t> kKinds = {
        {"usual", kUsual},   {"node", kNode},         {"log", kLog},     {"trace", kTrace},
        {"result", kResult}, {"platform", kPlatform}, {"query", kQuery}, {"property", kProperty},
        {"tags", kTags},     {"lock", kLock}};

const std::map<std::string, void (*)(const Arguments&)> kChanges = {
        {"forget", [](const Arguments&) { recorder().take(); }},
        {"up",
         [](const Arguments&) {
             EXPECT_EQ(0, init());
             recorder().take();
         }},
        // Down with everything, keeping tuning data and properties; descriptors count from 100.
        {"down",
         [](const Arguments&) {
             while (uninit() == 0) {
             }
             node().reset();
             recorder().take();
         }},
        {"show",
         [](const Arguments& a) {
             gShown = 0;
             for (size_t i = 0; i < a.count(); ++i) {
                 gShown |= named(kKinds, a.word(i));
             }
         }},
        {"locks",
         [](const Arguments& a) {
             std::vector<std::string> names;
             for (size_t i = 0; i < a.count(); ++i) {
                 names.push_back(a.word(i));
             }
             recorder().nameLocks(names);
         }},
        {"set",
         [](const Arguments& a) { platform().set(named(kSwitches, a.word(0)), a.integer(1)); }},
        {"unset", [](const Arguments& a) { platform().unset(named(kSwitches, a.word(0))); }},
        {"log", [](const Arguments& a) { setLogSwitches(static_cast<uint32_t>(a.at(0))); }},
        {"tags", [](const Arguments& a) { platform().traceTags = static_cast<uint64_t>(a.at(0)); }},
        // WHAT ERROR [TIMES [RESULT]]
        {"fail",
         [](const Arguments& a) {
             node().fail(named(kCallsThatFail, a.word(0)), named(kErrors, a.word(1)),
                         a.integer(2, kForever), a.integer(3, -1));
         }},
        {"handOut", [](const Arguments& a) { node().handOut(a.integer(0)); }},
        // SOURCE TASK TARGETTIME UCLAMP SPECVALUE VIP [NAME]; without figures the task is unknown
        {"task",
         [](const Arguments& a) {
             auto& tasks = sourceOf(a).tasks;
             tasks.erase(a.integer(1));
             if (a.count() > 2) {
                 tasks[a.integer(1)] = {a.integer(2), a.integer(3), a.integer(4), a.at(5) != 0,
                                        a.count() > 6 ? a.word(6) : ""};
             }
         }},
        {"missing", [](const Arguments& a) { sourceOf(a).isMissing = true; }},
        // SOURCE SCENARIO ANCHOR LATENCY JITTER; without arguments there are none
        {"anchor",
         [](const Arguments& a) {
             auto& anchors = a.word(0) == "customer" ? platform().custAnchors : platform().anchors;
             anchors[static_cast<VELKScenario>(a.at(1))][a.integer(2)] = {a.integer(3),
                                                                          a.integer(4)};
         }},
        {"noAnchors",
         [](const Arguments&) {
             platform().anchors.clear();
             platform().custAnchors.clear();
         }},
        // CATEGORY [SCENARIO CONTROL...]
        {"setting",
         [](const Arguments& a) {
             auto& controls = platform().singleShots[a.integer(0)];
             if (a.count() > 1) {
                 controls[static_cast<VELKScenario>(a.at(1))] = controlOf(a);
             }
         }},
        {"throw", [](const Arguments&) { throw std::runtime_error("platform"); }},
        // BEGINNING CHANGE...: the change happens inside the next event that begins like this
        {"during",
         [](const Arguments& a) {
             Words words;
             for (size_t i = 1; i < a.count(); ++i) {
                 words.push_back(a.word(i));
             }
             recorder().hook = [beginning = a.word(0), words](const Event& event) {
                 if (event.text.starts_with(beginning)) {
                     recorder().hook = nullptr;
                     change(words);
                 }
             };
         }},
};

Arguments argumentsOf(const Words& words) {
    return Arguments(Words(words.begin() + 1, words.end()));
}

void change(const Words& words) {
    kChanges.at(words.at(0))(argumentsOf(words));
}

void callOperation(const Words& words) {
    kCalls.at(words.at(0))(argumentsOf(words));
}

Words split(const std::string& text) {
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), {}};
}

}  // namespace

std::vector<Script> readScripts(const std::string& file) {
    std::ifstream input(file);
    std::vector<Script> scripts;
    std::string text;
    for (int number = 1; std::getline(input, text); ++number) {
        text.erase(0, text.find_first_not_of(' '));
        if (text.starts_with("== ")) {
            scripts.push_back({text.substr(3), {}});
        } else if (!text.empty() && text[0] != '#') {
            scripts.at(scripts.size() - 1).lines.push_back({file, number, text});
        }
    }
    return scripts;
}

void play(const Script& script) {
    gShown = kUsual;
    std::string expectation;
    for (size_t i = 0; i < script.lines.size(); ++i) {
        const auto& [file, number, text] = script.lines[i];
        const ::testing::ScopedTrace trace(file.c_str(), number, text);
        const bool isCommand =
                text.starts_with("> ") || text.starts_with("T> ") || text.starts_with("! ");
        if (!isCommand) {
            expectation += text == "nothing" ? "" : text + '\n';
            const bool isLast = i + 1 == script.lines.size();
            const std::string next = isLast ? "> " : script.lines[i + 1].text;
            if (isLast || next.starts_with("> ") || next.starts_with("T> ") ||
                next.starts_with("! ")) {
                EXPECT_EQ(expected(expectation), recorder().take(gShown));
                expectation.clear();
            }
            continue;
        }
        Words words = split(text);
        const std::string kind = words.front();
        words.erase(words.begin());
        if (kind == "!") {
            change(words);
        } else if (kind == ">") {
            callOperation(words);
        } else {
            std::thread(callOperation, words).join();
        }
    }
}

}  // namespace fake

// Every allocation and every platform call of every operation fails in turn. The exception reaches
// the caller, the section is closed, no mutex is left held, and the same call made again, and what
// follows it, has the same effect as if nothing had failed.
#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <string_view>

#include "support/AllocationFaults.h"
#include "support/LibraryTest.h"

namespace fake {
namespace {

using Control = VELKSingleShotControl;
using Steps = std::vector<std::function<int()>>;

// The n-th call of the platform that may throw does.
void failPlatform(int n) {
    recorder().hook = [left = std::make_shared<int>(n)](const Event& event) {
        const bool mayThrow = (event.kind == kPlatform && !event.text.starts_with("destroy")) ||
                              event.kind == kQuery || (event.kind == kLog && event.isULogger);
        if (mayThrow && --*left == 0) {
            throw std::runtime_error("platform");
        }
    };
}

struct Case {
    const char* name;
    Steps before;
    std::function<int()> operation;
    Steps after;
    // Made again after a failure; empty when a failed call has its effect all the same.
    bool isRepeated = true;
};

class FaultTest : public LibraryTest {
  protected:
    static void prepare(const Case& c) {
        bringDown();
        recorder().reset();
        node().reset();
        platform().anchors[kScenario] = {{1, {4000, 50}}};
        platform().custAnchors[kScenario] = {{2, {40, 5}}};
        platform().singleShots[4] = {{kScenario, full(4)}, {VELK_SCENARIO_FALLBACK, full(4)}};
        for (const auto& step : c.before) {
            step();
        }
        takeTranscript();
    }

    static Control full(int category) {
        return {.category = category,
                .uclampLevels = {300, 301, 302, 303, 304, 305, 306, 307},
                .percentLevel = 40,
                .rangeLevels1 = {1, 2, 3},
                .criticalTaskUclamps =
                        {{5, 600}, {5, 601}, {6, 700}, {22, 800}, {22, 801}, {24, 1}},
                .limits = {9},
                .sharedFlag = true};
    }

    static void run(const Steps& steps) {
        for (const auto& step : steps) {
            step();
        }
    }

    static void mutexesAreFree(const std::string& transcript) {
        std::map<std::string, int> held;
        std::istringstream lines(transcript);
        for (std::string word, name; lines >> word;) {
            if (word == "lock" || word == "unlock") {
                lines >> name;
                held[name] += word == "lock" ? 1 : -1;
            }
        }
        for (const auto& [name, count] : held) {
            EXPECT_EQ(0, count) << "mutex " << name << " in\n" << transcript;
        }
    }

    // The id of a task where a line of a transcript names it.
    static std::string_view idIn(std::string_view line) {
        constexpr std::string_view name = "uniqueTaskId=";
        const size_t start = line.find(name);
        if (start == std::string_view::npos) {
            return {};
        }
        line.remove_prefix(start + name.size());
        return line.substr(0, line.find_first_not_of("0123456789"));
    }

    static std::vector<std::string> linesOf(const std::string& transcript) {
        std::vector<std::string> lines;
        std::istringstream text(transcript);
        for (std::string line; std::getline(text, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    // Ids of tasks become letters in the order of their appearance.
    static std::string canonical(const std::string& transcript) {
        std::map<std::string, char> letters;
        std::string result;
        for (std::string& line : linesOf(transcript)) {
            if (const std::string_view id = idIn(line); !id.empty()) {
                const auto [letter, isNew] = letters.try_emplace(
                        std::string(id), static_cast<char>('A' + static_cast<int>(letters.size())));
                line.replace(static_cast<size_t>(id.data() - line.data()), id.size(), 1,
                             letter->second);
            }
            // A descriptor that marking has opened while the library is down stays open.
            result += line.starts_with("open ") ? "" : line + '\n';
        }
        return result;
    }

    // The active values, as records show them; they stay as they are.
    static std::string activeValues() {
        sceneChange(5, 0);
        control(Control{.uclampLevels = {0, 0, 0},
                        .percentLevel = 0,
                        .criticalTaskUclamps = {{5, 0}, {6, 0}, {22, 0}},
                        .limits = {1},
                        .sharedFlag = true});
        reset();
        return takeTranscript(kNode | kResult);
    }

    // Descriptors shall not differ between runs.
    static void handOutFromTheFirst() {
        if (node().openDescriptors().empty()) {
            node().handOut(kFirstDescriptor);
        }
    }

    // Returns how many faults the operation met.
    static int everyFault(const Case& c, void (*fail)(int)) {
        SCOPED_TRACE(c.name);
        prepare(c);
        const std::string before = activeValues();
        const int expectedResult = c.operation();
        if (!c.isRepeated) {
            takeTranscript();
            handOutFromTheFirst();
        }
        run(c.after);
        const std::string reference = canonical(takeTranscript(kNode | kResult));
        for (int n = 1; n < 1000; ++n) {
            SCOPED_TRACE(n);
            prepare(c);
            fail(n);
            const int result = c.operation();
            failAllocation(0);
            recorder().hook = nullptr;
            const std::string failed = takeTranscript(kNode | kLock | kTrace | kResult);
            mutexesAreFree(failed);
            EXPECT_EQ(0, platform().openSections) << failed;
            if (result != kThrew) {
                EXPECT_EQ(expectedResult, result);
                return n - 1;
            }
            if (c.isRepeated) {
                EXPECT_EQ(before, activeValues()) << failed;
            }
            handOutFromTheFirst();
            std::string registered;
            for (const std::string& line : linesOf(failed)) {
                registered += line.starts_with("ioctl 28") ? line + '\n' : "";
            }
            if (c.isRepeated) {
                EXPECT_EQ(expectedResult, c.operation());
            }
            run(c.after);
            const std::string again = takeTranscript(kNode | kResult);
            idsAreNew(failed + again);
            EXPECT_EQ(reference, canonical(c.isRepeated ? registered + again : again)) << failed;
        }
        ADD_FAILURE() << "fails forever";
        return 0;
    }

    static void idsAreNew(const std::string& transcript) {
        std::set<std::string_view> ids;
        const std::vector<std::string> lines = linesOf(transcript);
        for (const std::string& line : lines) {
            const bool isKept = line.find(" 28 uniqueTaskId=") != std::string::npos &&
                                line.find(" = ") == std::string::npos;
            EXPECT_TRUE(!isKept || ids.insert(idIn(line)).second) << transcript;
        }
    }
};

const std::function<int()> kInit = [] { return init(); };
const std::function<int()> kStart = [] { return start(1, 5); };
const std::function<int()> kReset = [] { return reset(); };
const std::function<int()> kUp = [] { return init() + start(1, 5) + start(2, 6); };

TEST_F(FaultTest, EveryOperation) {
    VELKInitParams extra = kParams;
    extra.queryMaxEfficientFreq = extra.applyExtraDefaultControl = true;
    const Case cases[] = {
            {"init", {}, [=] { return init(extra); }, {kReset, kReset, kReset, uninit, uninit}},
            {"second init", {kInit}, kInit, {uninit, uninit, uninit}},
            {"uninit", {kInit}, uninit, {uninit, vsync, kInit}, false},
            {"uninit of two", {kInit, kInit}, uninit, {uninit, uninit}, false},
            {"start",
             {kInit},
             kStart,
             {kStart, [] { return start(2, 5); }, [] { return end(1, 5); }}},
            {"start again", {kInit, kStart}, kStart, {[] { return end(1, 5); }, kStart}},
            {"end", {kInit, kStart}, [] { return end(1, 5); }, {kStart}},
            {"end of an unknown pair", {kInit}, [] { return end(1, 5); }, {kStart}},
            {"scene change", {kInit, kStart}, [] { return sceneChange(5, 1); }, {kStart}},
            {"no scene change", {kInit}, [] { return sceneChange(5, 1); }, {kStart}},
            {"control", {kUp}, [] { return control(full(0)); }, {kReset, kReset, kReset}},
            {"control of two",
             {kUp, [] { return control(full(0)); }},
             [] { return control(full(0)); },
             {kReset, kReset, kReset, kReset}},
            {"control of category 7",
             {kUp},
             [] { return control(full(7)); },
             {[] { return control(7); }, [] { return reset(7); }, kReset}},
            {"category", {kUp}, [] { return control(4); }, {[] { return reset(4); }, kReset}},
            {"control that asks for little",
             {kUp},
             [] { return control(Control{.uclampLevels = {1}}); },
             {[] { return control(Control{.sharedFlag = true}); }, kReset, kReset}},
            {"invalid control",
             {kUp},
             [] { return control(Control{.percentLevel = 101}); },
             {kReset}},
            {"reset", {kUp, [] { return control(full(0)); }}, kReset, {kReset, kReset}},
            {"reset of one of two",
             {kUp, [] { return control(full(0)); }, [] { return control(full(0)); }},
             kReset,
             {kReset, kReset, kReset}},
            {"reset of a category",
             {kUp, [] { return control(4); }},
             [] { return reset(4); },
             {[] { return control(4); }, kReset}},
            {"reset of a category that is not active",
             {kUp, [] { return control(full(0)); }, kReset},
             [] { return reset(4); },
             {[] { return control(4); }}},
            {"mark", {kUp}, [] { return mark(); }, {[] { return reset(4); }}},
            {"mark while down", {}, [] { return mark(); }, {unmark, uninit}},
            {"unmark", {kUp}, unmark, {kReset, kReset, kReset}},
            {"unmark while down", {}, unmark, {unmark, uninit}},
            {"span start", {kUp}, [] { return spanStart(5); }, {[] { return spanEnd(5); }}},
            {"span end", {kUp}, [] { return spanEnd(5); }, {[] { return spanStart(5); }}},
            {"invalid anchor",
             {kUp},
             [] { return anchorStart(3, 1); },
             {[] { return anchorEnd(3, 1); }, [] { return anchorStart(1, 1); }}},
    };
    int allocations = 0, calls = 0;
    for (const Case& c : cases) {
        allocations += everyFault(c, failAllocation);
        calls += everyFault(c, failPlatform);
    }
    EXPECT_GT(allocations, 250);
    EXPECT_GT(calls, 100);
}

}  // namespace
}  // namespace fake

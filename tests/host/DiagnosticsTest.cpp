#include <android/log.h>
#include <cutils/trace.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "clock/DeskClock.h"
#include "log/DeskLog.h"
#include "support/TemporaryFolder.h"
#include "trace/TraceCollector.h"
#include "ulogger/DeskULogger.h"

// The header declares the two only within the functions that call them.
extern "C" void atrace_begin_body(const char* name);
extern "C" void atrace_end_body();

namespace {

using testing::ElementsAre;

// At 12.345678 s for ever.
class FrozenClock {
  public:
    FrozenClock() {
        desk::setClock([]() noexcept { return int64_t{12'345'678'901}; });
    }
    ~FrozenClock() { desk::setClock(nullptr); }
    FrozenClock(const FrozenClock&) = delete;
    FrozenClock& operator=(const FrozenClock&) = delete;
};

std::vector<std::string> linesOf(const std::string& path) {
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string here() {
    return "12.345678 " + std::to_string(gettid());
}

TEST(Diagnostics, BothLoggersWriteLinesToTheirSink) {
    const FrozenClock clock;
    const TemporaryFolder folder;
    const std::string path = folder.file("log.txt");
    const auto sink = desk::LineSink::toFile(path);

    __android_log_print(ANDROID_LOG_ERROR, "Tag", "nobody listens yet");
    desk::setAndroidLog(sink);
    errno = EXDEV;
    __android_log_print(ANDROID_LOG_DEBUG, "Tag", "debug %d", 1);
    EXPECT_EQ(errno, EXDEV);
    __android_log_print(ANDROID_LOG_ERROR, "Tag", "error\x1b[2J\n");
    desk::setAndroidLog(nullptr);
    __android_log_print(ANDROID_LOG_ERROR, "Tag", "nobody listens any more");

    desk::DeskULogger logger(sink);
    logger.logMessage(0x1001015, "Tag", 5, "more", 4);
    logger.logMessage(0x1, "Tag", 1, "cut", 2000);
    logger.flush();

    EXPECT_TRUE(sink->flush());
    EXPECT_THAT(linesOf(path),
                ElementsAre(here() + " D Tag: debug 1", here() + R"( E Tag: error\x1b[2J\n)",
                            here() + " [1001015] D Tag: more", here() + " [0000001] E Tag: cut"));
    std::filesystem::remove(path);
    EXPECT_THROW(desk::LineSink::toFile("/nonexistent/folder/file"), std::system_error);
}

TEST(Diagnostics, AFullDiskIsReported) {
    const auto sink = desk::LineSink::toFile("/dev/full");
    sink->writeLine("lost");
    EXPECT_FALSE(sink->flush());
}

// "+name" begins a section, "-" ends one.
std::string describeTrace(const std::vector<desk::TraceEvent>& events, uint32_t tid) {
    std::string text;
    for (const desk::TraceEvent& event : events) {
        if (event.tid == tid) {
            text += event.phase == desk::TracePhase::Begin ? "+" : "-";
            text += event.name();
        }
    }
    return text;
}

TEST(Trace, CollectsSectionsPerThreadWhileItIsOn) {
    const FrozenClock clock;
    std::vector<desk::TraceEvent> events;
    EXPECT_EQ(atrace_get_enabled_tags(), 0U);
    atrace_begin_body("early");

    desk::setTracing(true);
    EXPECT_EQ(atrace_get_enabled_tags(), uint64_t{ATRACE_TAG_CAMERA});
    atrace_begin_body("outer");
    uint32_t otherTid = 0;
    std::thread([&otherTid] {
        otherTid = desk::currentTid();
        atrace_begin_body("other");
        atrace_end_body();
    }).join();
    atrace_begin_body(std::string(80, 'n').c_str());
    atrace_end_body();
    atrace_end_body();
    desk::setTracing(false);
    atrace_end_body();

    desk::drainTrace(events);
    EXPECT_EQ(describeTrace(events, desk::currentTid()), "+outer+" + std::string(50, 'n') + "--");
    EXPECT_EQ(describeTrace(events, otherTid), "+other-");
    ASSERT_EQ(events.size(), 6U);
    EXPECT_EQ(events[0].timeNs, 12'345'678'901);
    desk::drainTrace(events);
    EXPECT_TRUE(events.empty());
}

TEST(Trace, DropsAndCountsWhatNobodyDrains) {
    std::vector<desk::TraceEvent> events;
    const uint64_t droppedBefore = desk::droppedTraceEvents();
    desk::setTracing(true);
    for (size_t i = 0; i < desk::kMaxPendingTraceEvents + 3; ++i) {
        atrace_end_body();
    }
    desk::setTracing(false);
    desk::drainTrace(events);
    EXPECT_EQ(events.size(), desk::kMaxPendingTraceEvents);
    EXPECT_EQ(desk::droppedTraceEvents() - droppedBefore, 3U);
}

}  // namespace

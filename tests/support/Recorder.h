/*
 * Records every effect of the library in order: system calls, messages, trace sections, mutexes,
 * calls of the platform. Tests state what they expect as a transcript, one line of text per event.
 *
 *   {NAME ... }                      trace section "VELK::NAME"
 *   open PATH FLAGS MODE = RESULT    "node" stands for the control node, read-only
 *   close FD, write FD SIZE = RESULT, then the text
 *   ioctl@FD COMMAND FIELD=VALUE... = RESULT
 *                                    the record, without the fields that are zero; tid=caller is
 *                                    the calling thread; descriptor 100 and result 0 are left out
 *   E: TEXT @OPERATION, D: TEXT ...  one message as both sinks got it, with its proper level, tag,
 *                                    module and length; anything else is spelled out per sink
 *                                    ("android D: ...", "ulogger I: ...")
 *   = RESULT, ! EXCEPTION            how the call ended
 *
 * The message that announces each ioctl is folded into the ioctl's line. In an expected transcript
 * a star behind the level ("D*: TEXT") marks a message that only appears while the debug log is on,
 * so that every expectation holds in both kinds of process; " | " may stand between lines. Lines of
 * other threads start with "T2".
 */
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace fake {

enum Kind : uint32_t {
    kNode = 1,
    kLog = 2,
    kTrace = 4,
    kResult = 8,
    kPlatform = 16,  // convertors made, loaded and destroyed; settings fetched
    kQuery = 32,     // questions to a convertor
    kProperty = 64,
    kTags = 128,
    kLock = 256,
};
inline constexpr uint32_t kUsual = kNode | kLog | kTrace | kResult | kPlatform;

struct Event {
    Kind kind;
    std::string text;
    // Of a message: what the sink was handed besides the text.
    bool isULogger = false;
    uint32_t level = 0;
    std::string format;
    uint32_t request = 0;  // of an ioctl
    int thread = 0;
};

// Whether the calling thread runs library code, as opposed to a test's or a fake's.
inline thread_local bool tInLibrary = false;
// Set: the library finds the next mutex taken, and waiting for it fails once with this errno.
inline thread_local int tWaitError = 0;

class Side {
  public:
    explicit Side(bool inLibrary) : mBefore(tInLibrary) { tInLibrary = inLibrary; }
    ~Side() { tInLibrary = mBefore; }
    Side(const Side&) = delete;
    Side& operator=(const Side&) = delete;

  private:
    const bool mBefore;
};

class Recorder {
  public:
    // Forgets everything; the calling thread becomes the first.
    void reset();

    // Notes an event, then runs the hook, which may change the fakes, block or throw.
    void record(Event event);
    void record(Kind kind, std::string text) {
        record(Event{.kind = kind, .text = std::move(text)});
    }
    bool isOn() const { return mIsOn.load(std::memory_order_relaxed); }
    // Disabled while threads race: its mutex would order them.
    void enable(bool on) { mIsOn = on; }
    // Something that must never happen, whatever the test is about.
    void violation(std::string text);
    std::vector<std::string> violations();

    // The transcript so far, which is then forgotten.
    std::string take(uint32_t shown = kUsual);
    // How many events not yet taken begin like this.
    size_t count(std::string_view beginning);

    // Names for the mutexes to come, in the order in which they are first taken.
    void nameLocks(std::vector<std::string> names) { mLockNames = std::move(names); }
    std::string lockName(const void* mutex);

    std::function<void(const Event&)> hook;

  private:
    int threadNumber();

    std::atomic<bool> mIsOn = true;
    std::mutex mMutex;
    std::vector<Event> mEvents;
    std::vector<std::string> mViolations;
    std::vector<int> mThreads;
    std::map<const void*, std::string> mLocks;
    std::vector<std::string> mLockNames;
};

Recorder& recorder();

// Whether this process runs with the debug log on: it is read once, so it belongs to the process.
bool isDebugLogOn();

// What a transcript is to be in this kind of process.
std::string expected(std::string_view text);

// Runs one operation of the library, with errno 0 at first, and records how it ended. An exception
// becomes kThrew.
inline constexpr int kThrew = -99;
int call(const std::function<int()>& operation);

}  // namespace fake

/*
 * libvelkrecord.so: preloaded into a program, it writes the calls that the program makes to the
 * library into the session file that VELK_RECORD names.
 *
 * The line of a call is written when its first command goes to the driver, because a replay has to
 * repeat the order of the commands; that of a call without commands is written at its end.
 * With VELK_RECORD_ORDER=exact, only one call at a time enters the library.
 */
#include <pthread.h>
#include <sys/prctl.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "record/CallObserver.h"
#include "record/Messages.h"
#include "record/RecordingFile.h"
#include "record/ThreadNames.h"
#include "session/SessionLine.h"
#include "text/PrintableText.h"

namespace desk {

namespace {

using std::chrono::steady_clock;

constexpr size_t kMaxThreads = 256;  // the most that a session can have

// The index of this thread's name.
constinit thread_local size_t threadName = ThreadNames::kNone;

class Recorder final : public CallObserver {
  public:
    Recorder(std::string path, bool isExact, bool isFirstKept)
        : mPath(std::move(path)), mIsExact(isExact), mIsFirstKept(isFirstKept) {
        pthread_key_create(&mThreadEnd, [](void* recorder) {
            static_cast<Recorder*>(recorder)->forgetThread();
        });
    }

    bool isOn() const { return mIsOn.load(std::memory_order_relaxed); }

    // In a child process: the recording is the parent's.
    void leaveToParent() { mIsOn.store(false); }

    void trim() noexcept {
        if (!isOn()) {
            return;  // a child process may have inherited the mutex locked
        }
        const std::lock_guard lock(mMutex);
        if (mFile) {
            tryTo([this] { mFile->trim(); });
        }
    }

    void onCallBegin(const ObservedCall& /*call*/) noexcept override {
        if (mIsExact) {
            mOneCall.lock();
        }
    }

    void onFirstCommand(const ObservedCall& call) noexcept override { write(call); }

    void onCallEnd(const ObservedCall& call, const int* /*result*/,
                   bool hadCommand) noexcept override {
        if (!hadCommand) {
            write(call);
        }
        if (mIsExact) {
            mOneCall.unlock();
        }
    }

    void onForeignCommand() noexcept override {
        sayOnce(mForeignCommandSaid,
                "commands go to the driver outside of the library's calls, which are not recorded: "
                "the program links the library statically, or sends them itself");
    }

    void onMissingOperation(const char* name) noexcept override {
        sayOnce(mMissingOperationSaid,
                std::string(name) + " was not found in libvelkperfctrl.so.1");
    }

  private:
    static void sayOnce(std::atomic<bool>& isSaid, const std::string& message) noexcept {
        if (!isSaid.exchange(true)) {
            say(message);
        }
    }

    // Any error ends the recording, never the program.
    template <typename Action>
    void tryTo(const Action& action) noexcept {
        const int callersErrno = errno;
        try {
            action();
        } catch (const std::exception& error) {
            mIsOn.store(false);
            say(std::string("the recording ends here: ") + error.what());
        }
        errno = callersErrno;
    }

    void write(const ObservedCall& call) noexcept {
        if (!isOn()) {
            return;
        }
        const std::lock_guard lock(mMutex);
        if (isOn()) {
            tryTo([&] { append(call); });
        }
    }

    bool hasOthersCalls() const {
        std::error_code none;
        const auto size = std::filesystem::file_size(mPath, none);
        return !none && size > 0;
    }

    void append(const ObservedCall& call) {
        const auto now = steady_clock::now();
        if (!mFile) {
            if (mIsFirstKept && hasOthersCalls()) {
                mIsOn.store(false);
                return;
            }
            mFile.emplace(mPath);
            mStart = now;
        }
        if (threadName == ThreadNames::kNone && !nameThread()) {
            return;
        }
        const auto atUs = std::chrono::duration_cast<std::chrono::microseconds>(now - mStart);
        mLine.clear();
        appendSessionLine(mLine, atUs.count(), mNames[threadName], call.name(), call.arguments());
        mFile->append(mLine);
    }

    bool nameThread() {
        std::array<char, 17> name = {};
        prctl(PR_GET_NAME, name.data());
        const std::string text = printableText(name.data());
        threadName = mNames.take(text.empty() ? "?" : text, kMaxThreads);
        if (threadName == ThreadNames::kNone) {
            sayOnce(mManyThreadsSaid,
                    "more threads at a time than the 256 that a session can have: "
                    "the calls of the others are not recorded");
            return false;
        }
        pthread_setspecific(mThreadEnd, this);
        return true;
    }

    void forgetThread() {
        if (isOn()) {
            const std::lock_guard lock(mMutex);
            mNames.giveBack(std::exchange(threadName, ThreadNames::kNone));
        }
    }

    const std::string mPath;
    const bool mIsExact;
    const bool mIsFirstKept;  // of several processes, the recording of the first
    std::atomic<bool> mIsOn = true;
    std::atomic<bool> mForeignCommandSaid = false;
    std::atomic<bool> mMissingOperationSaid = false;
    std::atomic<bool> mManyThreadsSaid = false;
    pthread_key_t mThreadEnd = 0;
    std::mutex mOneCall;  // in exact order: held while a call is in the library
    std::mutex mMutex;    // guards all below
    std::optional<RecordingFile> mFile;
    steady_clock::time_point mStart;
    ThreadNames mNames;
    std::string mLine;
};

// Null when no recording is asked for. Never destroyed, because calls are possible until the end of
// the process.
Recorder* makeRecorder() noexcept {
    const char* const path = std::getenv("VELK_RECORD");
    if (path == nullptr || *path == '\0') {
        return nullptr;
    }
    const char* const order = std::getenv("VELK_RECORD_ORDER");
    const std::string_view orderText = order != nullptr ? order : "";
    if (!orderText.empty() && orderText != "exact") {
        say("VELK_RECORD_ORDER: found \"" + std::string(orderText) +
            "\", expected \"exact\" or nothing; nothing is recorded");
        return nullptr;
    }
    const bool isFirstKept = std::getenv("VELK_RECORD_KEEP") != nullptr;
    return std::make_unique<Recorder>(path, orderText == "exact", isFirstKept).release();
}

std::atomic<Recorder*> madeRecorder = nullptr;

Recorder* recorder() noexcept {
    static Recorder* const theRecorder = [] {
        Recorder* const made = makeRecorder();
        madeRecorder = made;
        if (made != nullptr) {
            pthread_atfork(nullptr, nullptr, [] { madeRecorder.load()->leaveToParent(); });
        }
        return made;
    }();
    return theRecorder;
}

__attribute__((destructor)) void endRecording() {
    if (Recorder* const made = madeRecorder) {
        made->trim();
    }
}

}  // namespace

CallObserver* callObserver() noexcept {
    Recorder* const observer = recorder();
    return observer != nullptr && observer->isOn() ? observer : nullptr;
}

}  // namespace desk

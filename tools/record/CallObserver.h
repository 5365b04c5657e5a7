/*
 * The interface to observe the calls that a program makes to the library. A preloaded library
 * defines its observer and links Interposer.cpp, which notifies it of every call.
 */
#pragma once

#include "session/CallTable.h"

namespace desk {

// A call in progress. Its arguments are in the caller's memory: they are read only on request, and
// only before the call has ended.
class ObservedCall {
  public:
    ObservedCall(const ObservedCall&) = delete;
    ObservedCall& operator=(const ObservedCall&) = delete;

    const char* name() const { return mName; }
    // May throw std::bad_alloc.
    virtual CallArguments arguments() const = 0;

  protected:
    explicit ObservedCall(const char* name) : mName(name) {}
    ~ObservedCall() = default;

  private:
    const char* mName;
};

/*
 * Notified once of each call from outside the library; operations that the library itself calls
 * are part of that call. All members run on the caller's thread, and several threads may be in
 * them at a time.
 */
class CallObserver {
  public:
    CallObserver() = default;
    CallObserver(const CallObserver&) = delete;
    CallObserver& operator=(const CallObserver&) = delete;

    // Before the library is entered.
    virtual void onCallBegin(const ObservedCall& call) noexcept = 0;
    // Before the first command of the call goes to the driver. Not every call has one.
    virtual void onFirstCommand(const ObservedCall& call) noexcept = 0;
    // After the library has returned. `result` is null when it threw an exception.
    virtual void onCallEnd(const ObservedCall& call, const int* result,
                           bool hadCommand) noexcept = 0;
    // A command goes to the driver while this thread is in no call of the library.
    virtual void onForeignCommand() noexcept = 0;
    // The real operation was not found. Its call returns -1.
    virtual void onMissingOperation(const char* name) noexcept = 0;

  protected:
    ~CallObserver() = default;
};

// The observer of this library, or null when there is nothing to observe. Any thread.
CallObserver* callObserver() noexcept;

}  // namespace desk

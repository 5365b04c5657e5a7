/*
 * One exported operation of the library, as a library that interposes it calls it.
 */
#pragma once

#include <dlfcn.h>

#include <atomic>

#include "record/CallObserver.h"

namespace desk {

// The observed call that this thread is in.
struct CurrentCall {
    const ObservedCall* call = nullptr;
    bool hadCommand = false;
};

// Null while the thread is in no observed call. Calls that the library makes to its own operations
// find it set and are not observed.
inline constinit thread_local CurrentCall* currentCall = nullptr;

// The next definition of a function after this library's. Null when there is none.
void* findNext(const char* symbol);

template <typename... Parameters>
class Operation {
  public:
    // `symbol` is the mangled name.
    constexpr Operation(const char* name, const char* symbol) : mName(name), mSymbol(symbol) {}

    // Makes the call. `fill` writes its arguments into a CallArguments.
    template <typename Fill>
    int call(const Fill& fill, Parameters... parameters) {
        Function* const next = find();
        CallObserver* const observer = currentCall == nullptr ? callObserver() : nullptr;
        if (next == nullptr) {
            if (observer != nullptr) {
                observer->onMissingOperation(mName);
            }
            return -1;
        }
        if (observer == nullptr) {
            return next(parameters...);
        }
        const FilledCall<Fill> call(mName, fill);
        Span span(*observer, call);
        return span.end(next(parameters...));
    }

  private:
    using Function = int(Parameters...);

    template <typename Fill>
    class FilledCall final : public ObservedCall {
      public:
        FilledCall(const char* name, const Fill& fill) : ObservedCall(name), mFill(fill) {}
        CallArguments arguments() const override {
            CallArguments arguments;
            mFill(arguments);
            return arguments;
        }

      private:
        const Fill& mFill;
    };

    // Notifies the observer of the end, also when the library throws.
    class Span {
      public:
        Span(CallObserver& observer, const ObservedCall& call) : mObserver(observer) {
            mCurrent.call = &call;
            observer.onCallBegin(call);
            currentCall = &mCurrent;
        }
        ~Span() {
            currentCall = nullptr;
            mObserver.onCallEnd(*mCurrent.call, mHasResult ? &mResult : nullptr,
                                mCurrent.hadCommand);
        }
        Span(const Span&) = delete;
        Span& operator=(const Span&) = delete;

        int end(int result) {
            mResult = result;
            mHasResult = true;
            return result;
        }

      private:
        CallObserver& mObserver;
        CurrentCall mCurrent;
        int mResult = 0;
        bool mHasResult = false;
    };

    Function* find() {
        Function* function = mNext.load(std::memory_order_relaxed);
        if (function == nullptr) {
            function = reinterpret_cast<Function*>(findNext(mSymbol));
            mNext.store(function, std::memory_order_relaxed);
        }
        return function;
    }

    const char* mName;
    const char* mSymbol;
    std::atomic<Function*> mNext = nullptr;
};

}  // namespace desk

#include "analysis/SessionAnalysis.h"

namespace desk {

void SessionAnalysis::tell(IntervalListener& listener) {
    mTasks.tell(&listener);
    mAnchors.tell(&listener);
    mSpans.tell(&listener);
}

void SessionAnalysis::onCall(const PlayedCall& played) {
    countCall(played);
    mThreads.take(played);
    for (const ReceivedCommand& command : played.commands) {
        if (command.command != nullptr) {
            mTasks.takeCommand(played, command);
            mSpans.takeCommand(played, command);
            mAnchors.takeCommand(played, command);
            mFrames.takeCommand(played, command);
            mLevels.takeCommand(played, command);
            mControls.takeCommand(played, command);
        }
    }
}

void SessionAnalysis::countCall(const PlayedCall& played) {
    if (mCalls++ == 0) {
        mFirstUs = played.call->atUs;
        mLevels.begin(mFirstUs);
    }
    mLastUs = played.call->atUs;
    OperationFigures& operation = mOperations[played.call->info];
    operation.name = played.call->info->name;
    ++operation.calls;
    if (played.result == 0) {
        return;
    }
    if (played.isFailureInjected) {
        ++operation.failedInjected;
    } else if (++operation.failed == 1) {
        operation.firstFailedLine = played.call->line;
    }
}

SessionFigures SessionAnalysis::figures() const {
    SessionFigures figures;
    figures.calls = mCalls;
    figures.threads = mThreads.size();
    figures.recordedUs = mLastUs - mFirstUs;
    for (const auto& [info, operation] : mOperations) {
        figures.operations.push_back(operation);
    }
    figures.tasks = mTasks.figures(mThreads);
    figures.spans = mSpans.figures();
    figures.anchors = mAnchors.figures();
    figures.frames = mFrames.figures(mLastUs);
    figures.levels = mLevels.figures(mLastUs);
    figures.controls = mControls.figures(mLastUs);
    figures.activeRuns = mTasks.activeRuns(mThreads);
    figures.activeSpans = mSpans.activeSpans(mThreads);
    return figures;
}

}  // namespace desk

#include "analysis/SpanAnalysis.h"

#include "driver/RecordCopy.h"

namespace desk {

void SpanAnalysis::takeCommand(const PlayedCall& played, const ReceivedCommand& command) {
    if (command.request == VELK_IOC_INIT) {
        mOpen.clear();  // an init clears them in the driver
    }
    if (isRefusal(command.verdict)) {
        return;
    }
    const void* record = command.record.data();
    if (command.request == VELK_IOC_CRITICAL_START) {
        start(played, copyRecord<VELK_CRITICAL_TASK_PARAM>(record));
    } else if (command.request == VELK_IOC_CRITICAL_END) {
        end(played, copyRecord<VELK_CRITICAL_TASK_PARAM>(record));
    }
}

void SpanAnalysis::start(const PlayedCall& played, const VELK_CRITICAL_TASK_PARAM& record) {
    const auto [span, isNew] =
            mOpen.try_emplace(record.tid, Span{played.call->thread, 0, played.call->atUs});
    mNestedStarts += isNew ? 0 : 1;
    span->second.criticalValue = record.criticalValue;
}

void SpanAnalysis::end(const PlayedCall& played, const VELK_CRITICAL_TASK_PARAM& record) {
    if (const auto span = mOpen.find(record.tid); span != mOpen.end()) {
        mEnded.add(played.call->atUs - span->second.sinceUs);
        if (mListener != nullptr) {
            mListener->onSpan({span->second.thread, span->second.sinceUs, played.call->atUs});
        }
        mOpen.erase(span);
    }
}

SpanFigures SpanAnalysis::figures() const {
    return {mEnded.figures(), mNestedStarts};
}

std::vector<ActiveSpan> SpanAnalysis::activeSpans(const ThreadTable& threads) const {
    std::vector<ActiveSpan> spans;
    spans.reserve(mOpen.size());
    for (const auto& [tid, span] : mOpen) {
        spans.push_back({threads.nameOf(span.thread), span.criticalValue, span.sinceUs});
    }
    return spans;
}

}  // namespace desk

#include "analysis/FrameAnalysis.h"

#include "driver/RecordCopy.h"

namespace desk {

namespace {

constexpr size_t kMostStretches = 1000;

}  // namespace

void FrameAnalysis::takeCommand(const PlayedCall& played, const ReceivedCommand& command) {
    const int64_t atUs = played.call->atUs;
    if (command.request == VELK_IOC_INIT) {
        mLastVsyncUs.reset();
        endStretch(atUs);
    }
    if (isRefusal(command.verdict)) {
        return;
    }
    const void* record = command.record.data();
    switch (command.request) {
        case VELK_IOC_UNINIT:
            endStretch(atUs);
            break;
        case VELK_IOC_VSYNC:
            takeVsync(atUs);
            break;
        case VELK_IOC_CAM_FPS:
            takeFrameRate(copyRecord<VELK_CAM_FPS_PARAM>(record).fps, atUs);
            break;
        case VELK_IOC_ANCHOR:
            if (const auto anchor = copyRecord<VELK_ANCHOR_PARAM>(record);
                mOpen && anchor.phase == VELK_ANCHOR_END) {
                ++mOpen->anchorEnds[anchor.anchor];
            }
            break;
        default:
            break;
    }
}

void FrameAnalysis::takeVsync(int64_t atUs) {
    ++mVsyncs;
    if (mLastVsyncUs) {
        mIntervals.add(atUs - *mLastVsyncUs);
    }
    mLastVsyncUs = atUs;
}

void FrameAnalysis::takeFrameRate(uint32_t fps, int64_t atUs) {
    if (!mOpen || mOpen->fps != fps) {
        endStretch(atUs);
        mOpen = {atUs, atUs, fps, {}};
    }
}

void FrameAnalysis::endStretch(int64_t atUs) {
    if (!mOpen) {
        return;
    }
    mOpen->untilUs = atUs;
    if (mStretches.size() < kMostStretches) {
        mStretches.push_back(*std::move(mOpen));
    } else {
        ++mFurtherStretches;
    }
    mOpen.reset();
}

// Display and pipeline keep one period most of the time, so the median is the period, and an
// interval of about n periods has missed n - 1 vsyncs.
VsyncFigures FrameAnalysis::vsyncFigures() const {
    VsyncFigures figures = {mVsyncs, mIntervals.figures(), 0};
    const int64_t periodUs = figures.intervals.p50Us;
    if (periodUs > 0) {
        mIntervals.forEachBucket([&figures, periodUs](int64_t us, uint64_t count) {
            const int64_t periods = (2 * us + periodUs) / (2 * periodUs);  // rounded
            figures.missed += periods > 1 ? static_cast<uint64_t>(periods - 1) * count : 0;
        });
    }
    return figures;
}

FrameFigures FrameAnalysis::figures(int64_t lastUs) const {
    FrameAnalysis closed = *this;
    closed.endStretch(lastUs);
    return {vsyncFigures(), std::move(closed.mStretches), closed.mFurtherStretches};
}

}  // namespace desk

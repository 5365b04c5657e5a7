#include "analysis/AnchorAnalysis.h"

#include <algorithm>

#include "driver/RecordCopy.h"

namespace desk {

namespace {

// The most starts without an end that are kept. A pipeline processes a handful of frames at a time.
constexpr size_t kMostOpen = 1024;

// Stores the serial if it is higher. False when it is out of order. Serials may wrap around: one
// is higher when it is ahead of the other by less than half of their range.
bool advance(std::optional<uint32_t>& highest, uint32_t serial) {
    if (highest && static_cast<int32_t>(serial - *highest) <= 0) {
        return false;
    }
    highest = serial;
    return true;
}

}  // namespace

void AnchorAnalysis::takeCommand(const PlayedCall& played, const ReceivedCommand& command) {
    if (command.request == VELK_IOC_INIT) {
        beginAnew();
        return;
    }
    if (command.request != VELK_IOC_ANCHOR || isRefusal(command.verdict)) {
        return;
    }
    const auto record = copyRecord<VELK_ANCHOR_PARAM>(command.record.data());
    Anchor& anchor = mAnchors[record.anchor];
    if (record.phase == VELK_ANCHOR_START) {
        start(anchor, record, played.call->atUs);
    } else {
        end(anchor, record, played.call->atUs);
    }
}

void AnchorAnalysis::beginAnew() {
    for (auto& [number, anchor] : mAnchors) {
        anchor.figures.unmatchedStarts += anchor.open.size();
        anchor.open.clear();
        anchor.highestStarted.reset();
        anchor.highestEnded.reset();
        anchor.lastLatencyUs.reset();
    }
}

void AnchorAnalysis::start(Anchor& anchor, const VELK_ANCHOR_PARAM& record, int64_t atUs) {
    AnchorFigures& figures = anchor.figures;
    ++figures.starts;
    figures.latencyTargetUs = record.latencyTarget;
    figures.jitterTargetUs = record.jitterTarget;
    if (!advance(anchor.highestStarted, record.serial)) {
        ++figures.outOfOrderStarts;
    }
    figures.unmatchedStarts += std::erase_if(
            anchor.open, [&record](const Start& each) { return each.serial == record.serial; });
    if (anchor.open.size() == kMostOpen) {
        ++figures.unmatchedStarts;
        anchor.open.pop_front();
    }
    anchor.open.push_back({record.serial, atUs, record.latencyTarget, record.jitterTarget});
}

void AnchorAnalysis::end(Anchor& anchor, const VELK_ANCHOR_PARAM& record, int64_t atUs) {
    ++anchor.figures.ends;
    if (!advance(anchor.highestEnded, record.serial)) {
        ++anchor.figures.outOfOrderEnds;
    }
    const auto start = std::ranges::find(anchor.open, record.serial, &Start::serial);
    if (start == anchor.open.end()) {
        ++anchor.figures.unmatchedEnds;
        return;
    }
    finishPass(anchor, *start, atUs);
    if (mListener != nullptr) {
        mListener->onPass({record.anchor, start->atUs, atUs, start->latencyTargetUs});
    }
    anchor.open.erase(start);
}

void AnchorAnalysis::finishPass(Anchor& anchor, const Start& start, int64_t atUs) {
    const int64_t latencyUs = atUs - start.atUs;
    anchor.latency.add(latencyUs);
    const bool isLate = start.latencyTargetUs > 0 && latencyUs > start.latencyTargetUs;
    anchor.figures.overLatencyTarget += isLate ? 1 : 0;
    if (anchor.lastLatencyUs) {
        const int64_t jitterUs = std::max(latencyUs, *anchor.lastLatencyUs) -
                                 std::min(latencyUs, *anchor.lastLatencyUs);
        anchor.jitter.add(jitterUs);
        const bool isUneven = start.jitterTargetUs > 0 && jitterUs > start.jitterTargetUs;
        anchor.figures.overJitterTarget += isUneven ? 1 : 0;
    }
    anchor.lastLatencyUs = latencyUs;
}

std::vector<AnchorFigures> AnchorAnalysis::figures() const {
    std::vector<AnchorFigures> list;
    for (const auto& [number, anchor] : mAnchors) {
        AnchorFigures& figures = list.emplace_back(anchor.figures);
        figures.anchor = number;
        figures.latency = anchor.latency.figures();
        figures.jitter = anchor.jitter.figures();
        figures.openAtEnd = anchor.open.size();
    }
    return list;
}

}  // namespace desk

/*
 * The passes of anchors: from the start of a serial to its end.
 */
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <vector>

#include "analysis/IntervalListener.h"
#include "analysis/SessionFigures.h"
#include "play/PlayedCall.h"

namespace desk {

class AnchorAnalysis {
  public:
    void tell(IntervalListener* listener) { mListener = listener; }
    // To be called for each command of a call, in the order in which the driver received them.
    void takeCommand(const PlayedCall& played, const ReceivedCommand& command);

    std::vector<AnchorFigures> figures() const;
    // Calls `use(anchor, latency, jitter)` for each anchor, with its distributions.
    template <typename Use>
    void forEachAnchor(Use&& use) const {
        for (const auto& [number, anchor] : mAnchors) {
            use(number, anchor.latency, anchor.jitter);
        }
    }

  private:
    struct Start {
        uint32_t serial = 0;
        int64_t atUs = 0;
        int32_t latencyTargetUs = 0;
        int32_t jitterTargetUs = 0;
    };
    struct Anchor {
        AnchorFigures figures;
        Distribution latency;
        Distribution jitter;
        std::deque<Start> open;  // the newest last
        std::optional<uint32_t> highestStarted;
        std::optional<uint32_t> highestEnded;
        std::optional<int64_t> lastLatencyUs;
    };

    void beginAnew();
    static void start(Anchor& anchor, const VELK_ANCHOR_PARAM& record, int64_t atUs);
    void end(Anchor& anchor, const VELK_ANCHOR_PARAM& record, int64_t atUs);
    static void finishPass(Anchor& anchor, const Start& start, int64_t atUs);

    std::map<int32_t, Anchor> mAnchors;
    IntervalListener* mListener = nullptr;
};

}  // namespace desk

/*
 * Vsyncs and reported frame rates in a summary.
 */
#include "report/SummaryParts.h"

namespace desk {

namespace {

using nlohmann::ordered_json;

constexpr double kUsPerSecond = 1e6;

ordered_json anchorEndsToJson(const FrameRateStretch& stretch) {
    ordered_json list = ordered_json::array();
    const int64_t timeUs = stretch.untilUs - stretch.fromUs;
    for (const auto& [anchor, ends] : stretch.anchorEnds) {
        ordered_json rate;
        if (timeUs > 0) {
            rate = static_cast<double>(ends) * kUsPerSecond / static_cast<double>(timeUs);
        }
        list.push_back({{"anchor", anchor}, {"ends", ends}, {"endsPerSecond", rate}});
    }
    return list;
}

std::string describeAnchorEnds(const FrameRateStretch& stretch) {
    std::string text;
    const int64_t timeUs = stretch.untilUs - stretch.fromUs;
    for (const auto& [anchor, ends] : stretch.anchorEnds) {
        const std::string rate =
                timeUs > 0 ? fmt::format("{:.2f}", static_cast<double>(ends) * kUsPerSecond /
                                                           static_cast<double>(timeUs))
                           : "-";
        text += fmt::format("{}anchor {}: {}", text.empty() ? "" : ", ", anchor, rate);
    }
    return text.empty() ? "-" : text;
}

}  // namespace

ordered_json framesToJson(const FrameFigures& frames) {
    const DistributionFigures& intervals = frames.vsync.intervals;
    ordered_json rate;
    if (intervals.p50Us > 0) {
        rate = kUsPerSecond / static_cast<double>(intervals.p50Us);
    }
    ordered_json stretches = ordered_json::array();
    for (const FrameRateStretch& stretch : frames.stretches) {
        stretches.push_back({{"fps", stretch.fps},
                             {"fromUs", stretch.fromUs},
                             {"untilUs", stretch.untilUs},
                             {"anchors", anchorEndsToJson(stretch)}});
    }
    return {{"vsync",
             {{"count", frames.vsync.count},
              {"ratePerSecond", rate},
              {"missed", frames.vsync.missed},
              {"p50IntervalUs", jsonOf(intervals, intervals.p50Us)},
              {"p90IntervalUs", jsonOf(intervals, intervals.p90Us)},
              {"p99IntervalUs", jsonOf(intervals, intervals.p99Us)},
              {"longestIntervalUs", intervals.longestUs}}},
            {"toldRates", stretches},
            {"furtherToldRates", frames.furtherStretches}};
}

void writeFrames(TextOutput out, const FrameFigures& frames) {
    const VsyncFigures& vsync = frames.vsync;
    const DistributionFigures& intervals = vsync.intervals;
    if (vsync.count > 0) {
        fmt::format_to(out, "\n{:<16} {:>8} {:>10} {:>8} {:>8} {:>8} {:>8} {:>12}\n", "Frames",
                       "count", "per second", "p50 us", "p90 us", "p99 us", "max us", "missed");
        const std::string rate =
                intervals.p50Us > 0
                        ? fmt::format("{:.2f}", kUsPerSecond / static_cast<double>(intervals.p50Us))
                        : "-";
        fmt::format_to(out, "  {:<14} {:>8} {:>10} {:>8} {:>8} {:>8} {:>8} {:>12}\n", "vsync",
                       vsync.count, rate, textOf(intervals, intervals.p50Us),
                       textOf(intervals, intervals.p90Us), textOf(intervals, intervals.p99Us),
                       textOf(intervals, intervals.longestUs), vsync.missed);
    }
    if (frames.stretches.empty()) {
        return;
    }
    fmt::format_to(out, "\n{:<16} {:>12} {:>12}  {}\n", "Frame rates told", "from ms", "until ms",
                   "ends per second");
    writeFirst(out, frames.stretches, frames.furtherStretches, "rate",
               [out](const FrameRateStretch& stretch) {
                   fmt::format_to(out, "  {:<14} {:>12.3f} {:>12.3f}  {}\n", stretch.fps,
                                  milliseconds(stretch.fromUs), milliseconds(stretch.untilUs),
                                  describeAnchorEnds(stretch));
               });
}

}  // namespace desk

/*
 * What the page of a session shows over time, collected while the session is played, in memory that
 * does not depend on its length.
 */
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "analysis/IntervalListener.h"
#include "analysis/ThreadTable.h"
#include "play/PlayedCall.h"
#include "report/page/IntervalRow.h"
#include "report/page/LevelSeries.h"

namespace desk {

enum class RowKind : uint8_t { Anchor, Task, Span };

struct PageRow {
    RowKind kind = RowKind::Task;
    std::string thread;  // empty for an anchor
    int64_t number = 0;  // of the task or the anchor
    std::string name;    // of the task
    IntervalRow intervals;
};

enum class EventKind : uint8_t { Finding, Refusal, Failure };
inline constexpr size_t kEventKinds = 3;

// A finding, a refusal or a failed call.
struct PageEvent {
    EventKind kind = EventKind::Finding;
    int64_t atUs = 0;  // since the first call of the session
    uint64_t line = 0;
    std::string thread;
    std::string what;  // the command or call
    std::string text;
};

class PageRecorder : public CallListener, public IntervalListener {
  public:
    void onCall(const PlayedCall& played) override;
    void onRun(const EndedRun& run) override;
    void onPass(const EndedPass& pass) override;
    void onSpan(const EndedSpan& span) override;

    int64_t firstUs() const { return mFirstUs; }
    const std::deque<PageRow>& rows() const { return mRows; }
    uint64_t intervalsWithoutRow() const { return mWithoutRow; }
    const LevelSeries& levels() const { return mLevels; }
    const std::vector<PageEvent>& events() const { return mEvents; }
    // The number of events, including those that are not kept.
    uint64_t countOf(EventKind kind) const { return mEventCounts[static_cast<size_t>(kind)]; }

  private:
    // The kind, the number of the thread in the session (0 for an anchor), and the row's number.
    using RowKey = std::tuple<RowKind, uint32_t, int64_t>;

    void add(const RowKey& key, std::string_view name, const PageInterval& interval);
    void addEvent(EventKind kind, const PlayedCall& played, std::string_view what,
                  std::string_view text);
    PageInterval intervalOf(int64_t sinceUs, int64_t untilUs, int32_t targetUs) const;

    bool mHasBegun = false;
    int64_t mFirstUs = 0;
    ThreadTable mThreads;
    std::deque<PageRow> mRows;  // by first appearance
    std::map<RowKey, PageRow*> mRowsByKey;
    uint64_t mWithoutRow = 0;
    LevelSeries mLevels;
    std::vector<PageEvent> mEvents;
    std::array<uint64_t, kEventKinds> mEventCounts = {};
};

}  // namespace desk

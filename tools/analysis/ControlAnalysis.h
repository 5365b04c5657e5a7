/*
 * The single-shot controls that the library holds, and who activated them.
 *
 * The library does not report this, so it is derived from the calls and their documented effects.
 * The memory needed is that of the controls that are active at a time, as in the library itself.
 */
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "VELKTypes.h"
#include "analysis/ControlValues.h"
#include "analysis/SessionFigures.h"
#include "play/PlayedCall.h"

namespace desk {

class ControlAnalysis {
  public:
    // To be called for each command of a call, in the order in which the driver received them.
    void takeCommand(const PlayedCall& played, const ReceivedCommand& command);

    // `lastUs` is the time of the last call.
    ControlFigures figures(int64_t lastUs) const;

  private:
    struct Control {
        ControlActivation activation;
        bool isCallers = false;  // false: the library activated it on its own
        uint64_t place = 0;      // 0, 1, 2, ... among the controls of callers
        uint64_t activeBefore = 0;
        ControlValues values;
    };

    void begin(const PlayedCall& played);
    void takeControl(const PlayedCall& played);
    void activate(const PlayedCall& played, int32_t category, const VELKSingleShotControl* control,
                  bool isCallers);
    void reset(int32_t category, int64_t atUs);
    bool resetNewest(int64_t atUs);
    bool resetCategory(int32_t category, int64_t atUs);
    // The control that the category stands for. Null when the library has none for it.
    const VELKSingleShotControl* find(int32_t category) const;

    void advanceTo(int64_t atUs);
    void end(Control& control, ControlEnd how, int64_t atUs);
    // Ends all controls and returns what nobody has reset.
    UnresetControls endAll(ControlEnd how, int64_t atUs);
    void withdraw(const ControlValues& values);

    bool mIsUp = false;
    VELKScenario mScenario = VELK_SCENARIO_FALLBACK;
    std::map<int, std::map<VELKScenario, VELKSingleShotControl>> mSettings;
    std::map<int32_t, VELKSingleShotControl> mDefaults;  // for categories without settings
    std::map<int32_t, std::vector<Control>> mActive;     // by category, newest last
    std::map<int32_t, std::set<int32_t>> mTaskUclamps;   // active uclamps, by task enum
    uint64_t mActiveCount = 0;                           // controls that callers activated
    int64_t mSinceUs = 0;                                // up to when active times are counted
    ControlFigures mFigures;
};

}  // namespace desk

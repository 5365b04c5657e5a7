/*
 * The commands as the tests spell them: the bytes of each record, the words for each call in a
 * transcript, and calls for the fuzzer. Nothing here is taken from the library's own description of
 * the commands, so that a mistake in that one shows.
 */
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <functional>
#include <map>
#include <string>

#include "VELKMachineCus.h"
#include "support/LibraryCalls.h"
#include "support/ScriptArguments.h"

namespace fake {

// --- Records -------------------------------------------------------------------------------------

struct SpelledRecord {
    uint32_t request;
    const char* fields;
};

// Offset, type, count and name of each field. The types are unsigned and signed words, thread ids,
// bytes and characters.
inline constexpr auto kRecords = std::to_array<SpelledRecord>(
        {{0x4024671B,
          "0u1 driverParam 4u3 clusterLevels 16u3 maxEfficientFreqs 28i1 tuningParam1 "
          "32i1 tuningParam2"},
         {0x4028671C,
          "0u1 uniqueTaskId 8i1 defaultUclamp 12i1 targetTime 16i1 taskSpecValue 24b1 isVIPTask "
          "25b1 extraFlag0 26b1 extraFlag1 27c10 taskName"},
         {0x4010671D, "0t1 tid 4u1 uniqueTaskId"},
         {0x4010671E, "0t1 tid 4u1 uniqueTaskId"},
         {0x4010671F, "0t1 tid 4u1 uniqueTaskId 12u1 sceneChangeMode"},
         {0x40046720, ""},
         {0x40086721, ""},
         {0x40086722, "4u1 fps"},
         {0x41546723,
          "0t1 tid 4u8 uclampLevels 36i1 percentLevel 40i1 requestValue 44i1 auxValue "
          "48u8 rangeLevels1 80u8 rangeLevels2 112u8 rangeLevels3 144b1 isReset 145b1 auxFlag "
          "148u20 criticalTaskIds 228u20 criticalTaskUclamps 308u4 limits 324b1 passFlag "
          "325b1 sharedFlag 328i3 extraValues"},
         {0x40086724, "0t1 tid 4i1 criticalValue"},
         {0x40086725, "0t1 tid"},
         {0x401C6726, "0i1 anchor 8i1 phase 16u1 serial 20i1 latencyTarget 24i1 jitterTarget"}});

// --- Calls ---------------------------------------------------------------------------------------

using Args = const Arguments&;

struct SpelledCall {
    std::string arguments;  // a pattern; see ScriptArguments.h
    void (*run)(Args);
};

inline constexpr const char* kControlWords =
        "[category=N] [uclamp=N,...] [percent=N] [reset] [request=N] [aux=N] [release] [auxflag] "
        "[range1=N,...] [range2=N,...] [range3=N,...] [critical=TASK:N,...] [limits=N,...] [pass] "
        "[shared] [extra=N,...]";
// Makes the call and records how it ended.
template <typename... Parameters, typename... Values>
int make(int (*operation)(Parameters...), Values... arguments) {
    return call([=] { return operation(arguments...); });
}
VELKSingleShotControl controlOf(Args a);
void callInit(Args a);   // scenario 3, customization 2, driver parameter 7
void callStart(Args a);  // with extra parameters when one is given

// The calls that a transcript can make. Where an operation has a C entry point, it is called
// through that.
inline std::map<std::string, SpelledCall> spelledCalls() {
    return {{"> init", {"[driver=N] [freq] [p1=N] [p2=N] [extra]", callInit}},
            {"> uninit", {"", [](Args) { uninit(); }}},
            {"> start", {"KEY TASK [head=N] [flag0=N] [flag1=N]", callStart}},
            {"> end",
             {"KEY TASK",
              [](Args a) { make(notifyTaskEndCus, keyOf(a.at<uintptr_t>(0)), a.at(1)); }}},
            {"> scene",
             {"TASK MODE",
              [](Args a) {
                  make(notifyTaskSceneChangeCus, a.at(0), VELKSceneChangeMode(a.at(1)));
              }}},
            {"> control",
             {kControlWords,
              [](Args a) {
                  const VELKSingleShotControl wanted = controlOf(a);
                  make(notifySingleShotControlCus, &wanted);
              }}},
            {"> category",
             {"CATEGORY", [](Args a) { make(notifySingleShotControlUserCus, a.at(0)); }}},
            {"> reset",
             {"[CATEGORY]",
              [](Args a) {
                  a.count() == 0 ? make(notifyResetSingleShotControlCus)
                                 : make(notifyResetSingleShotControlUserCus, a.at(0));
              }}},
            {"> mark",
             {"[USER]",
              [](Args a) {
                  a.count() == 0 ? make(markCriticalTaskCus)
                                 : make(markCriticalTaskUserCus, a.at(0));
              }}},
            {"> unmark", {"", [](Args) { make(unsetCriticalTaskCus); }}},
            {"> spanStart",
             {"TASK", [](Args a) { make(notifySingleShotCriticalTaskStartCus, a.at(0)); }}},
            {"> spanEnd",
             {"TASK", [](Args a) { make(notifySingleShotCriticalTaskEndCus, a.at(0)); }}},
            {"> anchorStart",
             {"ANCHOR SERIAL",
              [](Args a) { make(notifyAnchorPointStartCus, a.at(0), a.at<unsigned>(1)); }}},
            {"> anchorEnd",
             {"ANCHOR SERIAL",
              [](Args a) { make(notifyAnchorPointEndCus, a.at(0), a.at<unsigned>(1)); }}},
            {"> vsync", {"", [](Args) { vsync(); }}},
            {"> fps", {"FPS", [](Args a) { camFps(a.real(0)); }}}};
}

// --- Calls for the fuzzer ------------------------------------------------------------------------

// A call that does nothing but send a record, with arguments that follow from 32 bits.
struct PlainCall {
    using Put = std::function<void(size_t offset, uint32_t word)>;

    unsigned number;
    // Makes the call, and puts the words into the record that it has to send.
    int (*make)(uint32_t bits, const Put& put);
};

inline constexpr auto kPlainCalls = std::to_array<PlainCall>(
        {{33, [](uint32_t, const PlainCall::Put&) { return VELKInfoNotifier::notifyVSync(); }},
         {34, [](uint32_t bits, const PlainCall::Put& put) {
              const auto fps = std::bit_cast<float>(bits);
              const double whole = std::isnan(fps) ? 0 : std::clamp<double>(fps, 0, 0xFFFFFFFF);
              put(4, static_cast<uint32_t>(whole));
              return VELKInfoNotifier::notifyCamFps(fps);
          }}});

}  // namespace fake

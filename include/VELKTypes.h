/** @file
 * Types that cross the boundary of the library. Usable from C11 and from C++20; in C the
 * single-shot control is an opaque type, because its members are C++ containers.
 */
#ifndef VELK_TYPES_H
#define VELK_TYPES_H

#include <stdint.h>

#ifdef __cplusplus
#include <array>
#include <map>
#include <vector>
#endif

/**
 * An exported operation. Never inlined, so that code that interposes one sees every call to it,
 * also the library's own calls.
 */
#define VELK_API __attribute__((visibility("default"), noinline))

#ifdef __cplusplus

/** Camera use case that selects tuning data. Any value of the camera stack may be passed. */
enum VELKScenario : int32_t {
    /** The scenario whose single-shot control serves a category that has none for the current one.
     */
    VELK_SCENARIO_FALLBACK = 8,
};

/** Feature customization of the camera stack, handed on to the tuning services unchanged. */
enum VELKFeatureCustomization : int32_t {
    VELK_CUSTOMIZATION_NONE = 0, /**< none */
};

/** What kind of scene a running task has entered. Sent to the driver unchanged. */
enum VELKSceneChangeMode : int32_t {
    VELK_SCENE_CHANGE_MODE_DEFAULT = 0, /**< no particular one */
};

/** Argument of VELKMachine::init. The library keeps a copy until the last uninit. */
struct VELKInitParams {
    uint32_t driverParam;                   /**< sent to the driver unchanged */
    VELKScenario scenario;                  /**< the use case, by which tuning data is chosen */
    VELKFeatureCustomization customization; /**< handed on to the tuning services */
    bool queryMaxEfficientFreq;    /**< tell the driver the maximum efficient CPU frequencies */
    int32_t tuningParam1;          /**< sent to the driver; 0 and below select 10 */
    int32_t tuningParam2;          /**< sent to the driver; 0 and below select 65 */
    bool applyExtraDefaultControl; /**< apply a second default single-shot control */
};

/** Details of a task start. Default: in no group, no flag. */
struct VELKTaskExtraParams {
    int32_t groupHead = -1; /**< index of the task's group; negative: none; starts do not use it */
    uint8_t extraFlag0 = 0; /**< sent to the driver unchanged */
    uint8_t extraFlag1 = 0; /**< sent to the driver unchanged */
    uint8_t reserved[2] = {}; /**< not used */
};

/**
 * A short-lived boost around one capture. Utilisation clamps (uclamps) and range levels are on the
 * kernel scheduler's scale 0..1024. A control outside the stated ranges is refused whole.
 */
struct VELKSingleShotControl {
    int32_t category = 0;               /**< 0: handed over by the caller; else its category */
    std::vector<uint32_t> uclampLevels; /**< up to 8 uclamps, merged by maximum per position */
    int32_t percentLevel = -1;          /**< -1: no request; 0..100: the active maximum */
    bool isReset = false;               /**< leave false: the library's own; inverts sharedFlag */
    int32_t requestValue = -1;          /**< -1: no request; sent unchanged */
    int32_t auxValue = 0;               /**< sent unchanged */
    bool releaseRequest = false;        /**< send -2 in place of requestValue */
    bool auxFlag = false;               /**< sent unchanged */
    std::vector<uint32_t> rangeLevels1; /**< up to 8 values 0..1024, sent unchanged */
    std::vector<uint32_t> rangeLevels2; /**< up to 8 values 0..1024, sent unchanged */
    std::vector<uint32_t> rangeLevels3; /**< up to 8 values 0..1024, sent unchanged */
    std::multimap<int32_t, int32_t> criticalTaskUclamps; /**< task enum -> 0..1024 */
    /** [0]: 0 no request, else merged by maximum; [1..3] sent unchanged */
    std::array<uint32_t, 4> limits = {};
    bool passFlag = false;   /**< sent unchanged */
    bool sharedFlag = false; /**< stays on while at least one active control holds it */
    std::array<int32_t, 3> extraValues = {-1, -1, -1}; /**< sent unchanged */
};

#else /* C */

#if defined(__STDC_VERSION__) && __STDC_VERSION__ >= 202311L
typedef enum VELKSceneChangeMode : int32_t {
    VELK_SCENE_CHANGE_MODE_DEFAULT = 0
} VELKSceneChangeMode;
#else
typedef int32_t VELKSceneChangeMode;
#define VELK_SCENE_CHANGE_MODE_DEFAULT ((VELKSceneChangeMode)0)
#endif

/** Details of a task start. {-1, 0, 0, {0, 0}}: in no group, no flag. */
typedef struct VELKTaskExtraParams {
    int32_t groupHead;  /**< index of the task's group; negative: none; starts do not use it */
    uint8_t extraFlag0; /**< sent to the driver unchanged */
    uint8_t extraFlag1; /**< sent to the driver unchanged */
    uint8_t reserved[2];
} VELKTaskExtraParams;

typedef struct VELKSingleShotControl VELKSingleShotControl;

#endif /* __cplusplus */

#endif /* VELK_TYPES_H */

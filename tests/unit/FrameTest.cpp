// Anchor points with their targets and debugging properties, vertical sync and frame rate.
#include <climits>
#include <cmath>
#include <limits>

#include "support/LibraryTest.h"

namespace fake {
namespace {

class FrameTest : public LibraryTest {
  protected:
    FrameTest() {
        platform().anchors[kScenario] = {{1, {4000, 50}}, {2, {0, 5}},    {3, {3000, 0}},
                                         {4, {0, 0}},     {5, {500, 15}}, {7, {-1, -2}}};
        platform().custAnchors[kScenario] = {{3, {3300, 33}}, {5, {0, 16}}, {6, {600, 0}}};
        platform().anchors[VELKScenario{4}] = {{9, {9, 9}}};
        up();
    }
};

TEST_F(FrameTest, AnchorRecords) {
    anchorStart(1, 0x80000000);
    hears(R"({notifyAnchorPointStart | ioctl 38 0:1 8:1 16:-2147483648 20:4000 24:50 | } | = 0)");
    anchorEnd(1, 12);
    hears("{notifyAnchorPointEnd | ioctl 38 0:1 8:2 16:12 24:50 | } | = 0");
    platform().anchors.clear();
    platform().custAnchors.clear();  // the library has copies
    for (const int anchor : {2, 3, 5, 6, 7}) {
        anchorStart(anchor, 0);
        anchorEnd(anchor, 0);
    }
    anchorEnd(8, 1);  // an end does not validate
    hears(R"(ioctl 38 0:2 8:1 24:5 | ioctl 38 0:2 8:2 24:5
        ioctl 38 0:3 8:1 20:3300 24:33 | ioctl 38 0:3 8:2 24:33
        ioctl 38 0:5 8:1 20:500 24:16 | ioctl 38 0:5 8:2 24:16
        ioctl 38 0:6 8:1 20:600 | ioctl 38 0:6 8:2
        ioctl 38 0:7 8:1 20:-1 24:-2 | ioctl 38 0:7 8:2 24:-2 | ioctl 38 0:8 8:2 16:1)",
          kNode);
}

TEST_F(FrameTest, AnchorWithoutTargetsIsInvalidFromThenOn) {
    anchorStart(4, 1);
    hears(R"(property vendor.debug.velk.latencySpec | property vendor.debug.velk.jitterSpec
        D*: invalid anchor: 4 | = -1)",
          kUsual | kTags | kProperty);
    anchorStart(9, 1);  // another scenario's
    heard();
    platform().set(kLatencySpec, 904000);
    platform().set(kJitterSpec, 400001);
    anchorStart(9, 1);
    anchorEnd(9, 1);
    anchorEnd(4, 1);
    hears(R"(D*: invalid anchor: 9 | = -1 | D*: invalid anchor: 9 | = -1
        D*: invalid anchor: 4 | = -1)",
          kUsual | kTags | kProperty);
    platform().unset(kJitterSpec);
    uninit();
    node().reset();
    up();
    anchorStart(9, 0);
    hears("ioctl 38 0:9 8:1 20:4000", kNode);
}

TEST_F(FrameTest, PropertiesOverrideTheTargetsOfEveryAnchor) {
    const struct {
        int latency, jitter, anchor;
        const char* sent;
    } cases[] = {{201500, 0, 2, "ioctl 38 0:2 8:1 20:1500 24:5"},
                 {0, 100007, 1, "ioctl 38 0:1 8:1 20:4000 24:7"},
                 {304000, 0, 3, "ioctl 38 0:3 8:1 20:4000 24:33"},
                 {201500, 0, 3, "ioctl 38 0:3 8:1 24:33"},
                 {0, 100007, 3, "ioctl 38 0:3 8:1 20:3300"},
                 {199999, 100001, 1, "ioctl 38 0:1 8:1 20:99999 24:1"},
                 {-201500, 0, -2, "ioctl 38 0:-2 8:1 20:-1500"},
                 {-99999, 0, 0, "ioctl 38 8:1 20:-99999"},
                 {5, 6, 0, "ioctl 38 8:1 20:5 24:6"},
                 {200000, 300001, 3, "ioctl 38 0:3 8:1 24:1"},
                 {INT_MAX, INT_MIN, 21474, "ioctl 38 0:21474 8:1 20:83647"},
                 {INT_MAX, INT_MIN, -21474, "ioctl 38 0:-21474 8:1 24:-83648"},
                 {100000, 100000, 1, ""},
                 {201500, 201500, 5, ""}};
    for (const auto& c : cases) {
        uninit();
        node().reset();
        platform().set(kLatencySpec, c.latency);
        platform().set(kJitterSpec, c.jitter);
        up();
        anchorStart(c.anchor, 0);
        hears(c.sent, kNode);
    }
}

TEST_F(FrameTest, PropertiesAreReadAgainForTheRecord) {
    constexpr uint32_t kShown = kProperty | kNode | kTrace;
    anchorStart(1, 1);
    hears(R"(property vendor.debug.velk.latencySpec | {notifyAnchorPointStart
        property vendor.debug.velk.latencySpec | property vendor.debug.velk.jitterSpec
        ioctl 38 0:1 8:1 16:1 20:4000 24:50 | })",
          kShown);
    anchorStart(2, 1);
    hears(R"(property vendor.debug.velk.latencySpec | property vendor.debug.velk.jitterSpec
        {notifyAnchorPointStart
        property vendor.debug.velk.latencySpec | property vendor.debug.velk.jitterSpec
        ioctl 38 0:2 8:1 16:1 24:5 | })",
          kShown);
    anchorEnd(1, 1);
    hears(R"({notifyAnchorPointEnd | property vendor.debug.velk.jitterSpec
        ioctl 38 0:1 8:2 16:1 24:50 | })",
          kShown);
    during("begin", [] { platform().set(kLatencySpec, 100001); });
    anchorStart(1, 0);
    during("begin", [] { platform().set(kLatencySpec, 200002); });
    anchorStart(1, 0);
    hears("ioctl 38 0:1 8:1 20:1 24:50 | ioctl 38 0:1 8:1 24:50", kNode);
}

TEST_F(FrameTest, VSyncIsAnEmptyRecord) {
    vsync();
    hears("{notifyVSync | ioctl 33 | } | = 0", kUsual | kLock);
}

TEST_F(FrameTest, FrameRateIsTruncatedAndClamped) {
    camFps(29.97F);
    hears("{notifyCamFps | D*: get fps: 29.969999 | ioctl 34 4:29 | } | = 0", kUsual | kLock);
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const std::pair<float, const char*> cases[] = {{0.5F, ""},
                                                   {-1.0F, ""},
                                                   {-0.0F, ""},
                                                   {-kInfinity, ""},
                                                   {std::nanf(""), ""},
                                                   {0.99999994F, ""},
                                                   {1.0F, " 4:1"},
                                                   {-0.5F, ""},
                                                   {16777216.0F, " 4:16777216"},
                                                   {1e20F, " 4:-1"},
                                                   {kInfinity, " 4:-1"},
                                                   {2147483648.0F, " 4:-2147483648"},
                                                   {-4294967296.0F, ""},
                                                   {4294967296.0F, " 4:-1"},
                                                   {4294967040.0F, " 4:-256"}};
    for (const auto& [fps, sent] : cases) {
        camFps(fps);
        hears(std::string("ioctl 34") + sent, kNode);
    }
}

}  // namespace
}  // namespace fake

// A camera service: one thread runs the preview, another takes a snapshot meanwhile, and a third
// shuts everything down. Each notification comes from the thread that does the work.
#include <VELKInfoNotifier.h>
#include <VELKMachine.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <iostream>
#include <thread>

namespace {

// The tuning data defines tasks, anchors, categories and scenarios; these are the sample's.
constexpr int kScaleTask = 5;
constexpr int kSnapshotTask = 24;
constexpr int kPreviewAnchor = 1;
constexpr int kSnapshotCategory = 5;
constexpr VELKScenario kPreviewScenario{1};

constexpr unsigned kSnapshotFrame = 30;
constexpr unsigned kLastFrame = 60;
constexpr auto kFrameWork = std::chrono::milliseconds(12);
constexpr auto kFramePause = std::chrono::milliseconds(21);
constexpr auto kSnapshotWork = std::chrono::microseconds(1500);

std::atomic<unsigned> gFrame{0};
std::atomic<bool> gIsStopping{false};
std::atomic<int> gFailures{0};

// Counts failed calls; the Android log has the reasons.
void check(int result, const char* call) {
    if (result != 0) {
        ++gFailures;
        std::cerr << "camera-service: " << call << " failed\n";
    }
}

void awaitFrame(unsigned frame) {
    for (unsigned shown = gFrame; shown < frame; shown = gFrame) {
        gFrame.wait(shown);
    }
}

void runPreview() {
    pthread_setname_np(pthread_self(), "preview");
    const int stream = 0;  // its address distinguishes this user of the task from others
    for (unsigned frame = 1; !gIsStopping; ++frame) {
        check(VELKMachine::notifyAnchorPointStart(kPreviewAnchor, frame), "notifyAnchorPointStart");
        check(VELKMachine::notifyTaskStart(&stream, kScaleTask), "notifyTaskStart");
        std::this_thread::sleep_for(kFrameWork);
        check(VELKMachine::notifyTaskEnd(&stream, kScaleTask), "notifyTaskEnd");
        check(VELKMachine::notifyAnchorPointEnd(kPreviewAnchor, frame), "notifyAnchorPointEnd");
        check(VELKInfoNotifier::notifyVSync(), "notifyVSync");
        gFrame = frame;
        gFrame.notify_all();
        std::this_thread::sleep_for(kFramePause);
    }
}

void runSnapshot() {
    pthread_setname_np(pthread_self(), "snapshot");
    awaitFrame(kSnapshotFrame);
    const int capture = 0;
    check(VELKMachine::notifySingleShotControl(kSnapshotCategory), "notifySingleShotControl");
    check(VELKMachine::notifyTaskStart(&capture, kSnapshotTask), "notifyTaskStart");
    std::this_thread::sleep_for(kSnapshotWork);
    check(VELKMachine::notifyTaskEnd(&capture, kSnapshotTask), "notifyTaskEnd");
    check(VELKMachine::notifyResetSingleShotControl(kSnapshotCategory),
          "notifyResetSingleShotControl");
}

void runTeardown(std::thread& preview, std::thread& snapshot) {
    pthread_setname_np(pthread_self(), "teardown");
    awaitFrame(kLastFrame);
    gIsStopping = true;
    preview.join();
    snapshot.join();
    check(VELKMachine::uninit(), "uninit");
}

}  // namespace

int main() {
    VELKInitParams params = {};
    params.scenario = kPreviewScenario;
    if (VELKMachine::init(params) != 0) {
        std::cerr << "camera-service: init failed, as there is no driver or no tuning data; where "
                     "there is no device, velk-run supplies both\n";
        return 1;
    }
    check(VELKInfoNotifier::notifyCamFps(30), "notifyCamFps");
    std::thread preview(runPreview);
    std::thread snapshot(runSnapshot);
    std::thread(runTeardown, std::ref(preview), std::ref(snapshot)).join();
    return gFailures == 0 ? 0 : 1;
}

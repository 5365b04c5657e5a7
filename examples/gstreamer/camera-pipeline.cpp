// A camera made of GStreamer elements: a live source, image processing, and from there on preview,
// video and snapshots on a thread each. Probes on the pads of the elements notify the library of
// each frame that passes, from the thread that works on it.
#include <VELKInfoNotifier.h>
#include <VELKMachine.h>
#include <gst/gst.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <iostream>
#include <memory>
#include <thread>

namespace {

// The tuning data defines tasks, anchors, categories and scenarios; these are the sample's.
constexpr int kTuneTask = 3;
constexpr int kScaleTask = 5;
constexpr int kEncodeTask = 9;
constexpr int kJpegTask = 24;
constexpr int kPreviewAnchor = 1;
constexpr int kVideoAnchor = 2;
constexpr int kSnapshotCategory = 5;
constexpr VELKScenario kScenario{1};
constexpr unsigned kFramesASecond = 30;
constexpr auto kVSyncPeriod = std::chrono::microseconds(16667);

// Each queue starts a thread, which is given the name of the queue.
constexpr const char* kPipeline =
        "videotestsrc name=sensor is-live=true pattern=ball "
        "! video/x-raw,format=I420,width=640,height=360,framerate=30/1 "
        "! videobalance name=tuner saturation=1.3 ! tee name=frames "
        "frames. ! queue name=preview ! videoscale name=scaler ! video/x-raw,width=320,height=180 "
        "! videoconvert ! video/x-raw,format=RGB ! fakesink name=screen sync=true "
        "frames. ! queue name=video ! jpegenc name=encoder ! avimux ! filesink location=video.avi "
        "frames. ! queue name=snapshot ! videorate drop-only=true ! video/x-raw,framerate=1/1 "
        "! jpegenc name=snapper ! multifilesink async=false location=snapshot-%02d.jpg";

std::atomic<unsigned> gFailures{0};

// Counts failed calls; the Android log has the reasons.
void check(int result, const char* call) {
    if (result != 0) {
        ++gFailures;
        std::cerr << "camera-pipeline: " << call << " failed\n";
    }
}

// What to do when a frame passes a pad. The element distinguishes this user of a task from others.
using Notify = void (*)(const void* element, unsigned frame);

template <int task>
void startTask(const void* element, unsigned /*frame*/) {
    check(VELKMachine::notifyTaskStart(element, task), "notifyTaskStart");
}
template <int task>
void endTask(const void* element, unsigned /*frame*/) {
    check(VELKMachine::notifyTaskEnd(element, task), "notifyTaskEnd");
}

template <int anchor>
void startAnchor(const void* /*element*/, unsigned frame) {
    check(VELKMachine::notifyAnchorPointStart(anchor, frame), "notifyAnchorPointStart");
}
template <int anchor>
void endAnchor(const void* /*element*/, unsigned frame) {
    check(VELKMachine::notifyAnchorPointEnd(anchor, frame), "notifyAnchorPointEnd");
}

void startEncoding(const void* encoder, unsigned frame) {
    startAnchor<kVideoAnchor>(encoder, frame);
    startTask<kEncodeTask>(encoder, frame);
    check(VELKMachine::notifySingleShotCriticalTaskStart(kEncodeTask),
          "notifySingleShotCriticalTaskStart");
}
void endEncoding(const void* encoder, unsigned frame) {
    check(VELKMachine::notifySingleShotCriticalTaskEnd(kEncodeTask),
          "notifySingleShotCriticalTaskEnd");
    endTask<kEncodeTask>(encoder, frame);
    endAnchor<kVideoAnchor>(encoder, frame);
}

void startSnapshot(const void* snapper, unsigned frame) {
    check(VELKMachine::notifySingleShotControl(kSnapshotCategory), "notifySingleShotControl");
    startTask<kJpegTask>(snapper, frame);
}
void endSnapshot(const void* snapper, unsigned frame) {
    endTask<kJpegTask>(snapper, frame);
    check(VELKMachine::notifyResetSingleShotControl(kSnapshotCategory),
          "notifyResetSingleShotControl");
}

// An element works on a frame between its sink pad and its source pad.
constexpr struct {
    const char* element;
    const char* pad;
    Notify notify;
} kNotifications[] = {
        {"sensor", "src", startAnchor<kPreviewAnchor>},
        {"tuner", "sink", startTask<kTuneTask>},
        {"tuner", "src", endTask<kTuneTask>},
        {"scaler", "sink", startTask<kScaleTask>},
        {"scaler", "src", endTask<kScaleTask>},
        {"screen", "sink", endAnchor<kPreviewAnchor>},
        {"encoder", "sink", startEncoding},
        {"encoder", "src", endEncoding},
        {"snapper", "sink", startSnapshot},
        {"snapper", "src", endSnapshot},
};

GstPadProbeReturn notifyOfFrame(GstPad* pad, GstPadProbeInfo* info, gpointer notify) {
    const GstClockTime time = GST_BUFFER_PTS(GST_PAD_PROBE_INFO_BUFFER(info));
    const guint64 frame = gst_util_uint64_scale_round(time, kFramesASecond, GST_SECOND);
    reinterpret_cast<Notify>(notify)(GST_PAD_PARENT(pad), static_cast<unsigned>(frame));
    return GST_PAD_PROBE_OK;
}

struct Unref {
    void operator()(gpointer object) const { gst_object_unref(object); }
};
template <typename T>
using Ref = std::unique_ptr<T, Unref>;

bool printError(const char* what, GError* error) {
    std::cerr << "camera-pipeline: " << what << ": " << error->message << "\n";
    g_error_free(error);
    return false;
}

// Null when an element is missing.
Ref<GstElement> makePipeline(int frames) {
    GError* error = nullptr;
    Ref<GstElement> pipeline(
            gst_parse_launch_full(kPipeline, nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &error));
    if (!pipeline) {
        printError("no pipeline", error);
        return pipeline;
    }
    for (const auto& [name, padName, notify] : kNotifications) {
        const Ref<GstElement> element(gst_bin_get_by_name(GST_BIN(pipeline.get()), name));
        const Ref<GstPad> pad(gst_element_get_static_pad(element.get(), padName));
        gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, notifyOfFrame,
                          reinterpret_cast<gpointer>(notify), nullptr);
    }
    const Ref<GstElement> sensor(gst_bin_get_by_name(GST_BIN(pipeline.get()), "sensor"));
    g_object_set(sensor.get(), "num-buffers", frames, nullptr);
    return pipeline;
}

// Runs until the last frame has passed or an element fails, and ends the pipeline's threads.
bool play(GstElement* pipeline) {
    constexpr auto kEnds = static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR);
    const Ref<GstBus> bus(gst_element_get_bus(pipeline));
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    GstMessage* const end = gst_bus_timed_pop_filtered(bus.get(), GST_CLOCK_TIME_NONE, kEnds);
    GError* error = nullptr;
    if (GST_MESSAGE_TYPE(end) == GST_MESSAGE_ERROR) {
        gst_message_parse_error(end, &error, nullptr);
    }
    gst_message_unref(end);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    return error == nullptr || printError("failed", error);
}

void showFrames(const std::atomic<bool>& isOver) {
    pthread_setname_np(pthread_self(), "display");
    for (auto next = std::chrono::steady_clock::now(); !isOver; next += kVSyncPeriod) {
        std::this_thread::sleep_until(next);
        check(VELKInfoNotifier::notifyVSync(), "notifyVSync");
    }
}

}  // namespace

int main(int argc, char** argv) {
    gst_init(&argc, &argv);
    gint64 frames = 90;
    if (argc > 1 && g_ascii_string_to_signed(argv[1], 10, 1, G_MAXINT, &frames, nullptr) == FALSE) {
        std::cerr << "Usage: camera-pipeline [FRAMES]\n";
        return 2;
    }
    const Ref<GstElement> pipeline = makePipeline(static_cast<int>(frames));
    VELKInitParams params = {};
    params.scenario = kScenario;
    if (!pipeline || VELKMachine::init(params) != 0) {
        std::cerr << "camera-pipeline: not started; where there is no device, use velk-run\n";
        return 1;
    }
    check(VELKInfoNotifier::notifyCamFps(kFramesASecond), "notifyCamFps");
    std::atomic<bool> isOver{false};
    std::thread display(showFrames, std::cref(isOver));
    const bool isWhole = play(pipeline.get());
    isOver = true;
    display.join();
    check(VELKMachine::uninit(), "uninit");
    return isWhole && gFailures == 0 ? 0 : 1;
}

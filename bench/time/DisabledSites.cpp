#include "time/DisabledSites.h"

#include <cutils/trace.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include "foundation/LogGate.h"
#include "foundation/TraceSection.h"

namespace bench {

int loopAlone() {
    return repeatSite([](int) {});
}

int velkLogSites() {
    return repeatSite([](int i) { VELK_LOGD("site: %d", i); });
}

int velkGatedLogSites() {
    return repeatSite([](int i) { VELK_LOGD_GATED("site: %d", i); });
}

int spdlogSites() {
    static const auto logger = spdlog::create<spdlog::sinks::null_sink_mt>("disabled");
    return repeatSite([&](int i) { logger->debug("site: {}", i); });
}

int velkTraceSections() {
    return repeatSite([](int) { const TraceSection section("section"); });
}

int cutilsTraceSections() {
    return repeatSite([](int) {
        atrace_begin(ATRACE_TAG_CAMERA, "section");
        atrace_end(ATRACE_TAG_CAMERA);
    });
}

}  // namespace bench

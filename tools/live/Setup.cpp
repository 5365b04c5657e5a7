#include "live/Setup.h"

namespace desk {

namespace {

template <typename Frame, typename Members>
void exchange(Frame& frame, Members& setup) {
    frame.exchange(setup.isFollowed, setup.hasLog, setup.hasUlog, setup.hasTrace, setup.faults,
                   setup.tuning.platform, setup.tuning.customer, setup.tuning.settings,
                   setup.properties);
}

}  // namespace

void writeSetup(FrameWriter& frame, const Setup& setup) {
    exchange(frame, setup);
}

Setup readSetup(std::string_view content) {
    FrameReader reader(content);
    Setup setup;
    exchange(reader, setup);
    return setup;
}

}  // namespace desk

/*
 * velk-replay: plays a recorded camera session through the library on a desk.
 */
#include <exception>
#include <variant>

#include "Options.h"
#include "Replay.h"
#include "common/ExitStatus.h"
#include "common/StandardStreams.h"

int main(int argc, char** argv) {
    desk::prepareStandardStreams();
    try {
        const auto options = desk::parseOptions(argc, argv);
        if (const int* status = std::get_if<int>(&options)) {
            return *status;
        }
        return desk::replay(std::get<desk::Options>(options));
    } catch (const std::exception& error) {
        desk::sayError("velk-replay", error.what());
        return desk::kExitBadInput;
    }
}

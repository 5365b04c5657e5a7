/*
 * velk-replay: plays a recorded camera session through the library on a desk.
 */
#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <variant>

#include "ExitStatus.h"
#include "Options.h"
#include "Replay.h"

int main(int argc, char** argv) {
    try {
        const auto options = desk::parseOptions(argc, argv);
        if (const int* status = std::get_if<int>(&options)) {
            return *status;
        }
        return desk::replay(std::get<desk::Options>(options));
    } catch (const std::exception& error) {
        fmt::print(stderr, "velk-replay: {}\n", error.what());
        return desk::kExitBadInput;
    }
}

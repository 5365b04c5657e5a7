/*
 * velk-tuning: judges tuning data, alone or against recorded sessions.
 */
#include <exception>
#include <variant>

#include "common/ExitStatus.h"
#include "common/StandardStreams.h"
#include "tune/Check.h"
#include "tune/TuneOptions.h"

int main(int argc, char** argv) {
    desk::prepareStandardStreams();
    try {
        const auto options = desk::parseTuneOptions(argc, argv);
        if (const int* status = std::get_if<int>(&options)) {
            return *status;
        }
        return std::visit([](const desk::CheckOptions& check) { return desk::check(check); },
                          std::get<desk::TuneOptions>(options));
    } catch (const std::exception& error) {
        desk::sayError("velk-tuning", error.what());
        return desk::kExitBadInput;
    }
}

/*
 * velk-tuning: judges tuning data, alone or against recorded sessions, compares and suggests it.
 */
#include <exception>
#include <variant>

#include "common/ExitStatus.h"
#include "common/StandardStreams.h"
#include "tune/Check.h"
#include "tune/Compare.h"
#include "tune/Suggest.h"
#include "tune/TuneOptions.h"

namespace {

int run(const desk::CheckOptions& options) {
    return desk::check(options);
}

int run(const desk::CompareOptions& options) {
    return desk::compare(options);
}

int run(const desk::SuggestOptions& options) {
    return desk::suggest(options);
}

}  // namespace

int main(int argc, char** argv) {
    desk::prepareStandardStreams();
    try {
        const auto options = desk::parseTuneOptions(argc, argv);
        if (const int* status = std::get_if<int>(&options)) {
            return *status;
        }
        return std::visit([](const auto& each) { return run(each); },
                          std::get<desk::TuneOptions>(options));
    } catch (const std::exception& error) {
        desk::sayError("velk-tuning", error.what());
        return desk::kExitBadInput;
    }
}

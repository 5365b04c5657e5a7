/*
 * velk-run: runs a program that uses the library, and shows what it tells the driver.
 */
#include <exception>
#include <variant>

#include "common/StandardStreams.h"
#include "run/Program.h"
#include "run/Run.h"

int main(int argc, char** argv) {
    desk::rememberSignals();
    desk::prepareStandardStreams();
    try {
        const auto options = desk::parseRunOptions(argc, argv);
        if (const int* status = std::get_if<int>(&options)) {
            return *status;
        }
        return desk::run(std::get<desk::RunOptions>(options));
    } catch (const desk::ProgramError& error) {
        desk::sayError("velk-run", error.what());
        return error.exitStatus();
    } catch (const std::exception& error) {
        desk::sayError("velk-run", error.what());
        return desk::kExitToolFailed;
    }
}

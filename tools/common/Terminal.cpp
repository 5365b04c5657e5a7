#include "common/Terminal.h"

#include <android-base/parseint.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace desk {

std::optional<size_t> terminalColumns(int descriptor) {
    if (isatty(descriptor) == 0) {
        return std::nullopt;
    }
    winsize size = {};
    if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
    constexpr size_t kUsualColumns = 80;
    constexpr size_t kMaxColumns = 10000;
    size_t columns = 0;
    const char* text = std::getenv("COLUMNS");
    return text != nullptr && android::base::ParseUint(text, &columns, kMaxColumns) && columns > 0
                   ? columns
                   : kUsualColumns;
}

bool canTerminalEraseLines() {
    const char* name = std::getenv("TERM");
    return name != nullptr && *name != '\0' && std::string_view(name) != "dumb";
}

}  // namespace desk

#include "support/RecordText.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <sstream>
#include <vector>

#include "support/Commands.h"

namespace fake {
namespace {

std::string textOf(char type, const uint8_t* bytes) {
    uint32_t value = 0;
    std::memcpy(&value, bytes, type == 'b' ? 1 : sizeof(value));
    if (type == 't' && value == static_cast<uint32_t>(gettid())) {
        return "caller";
    }
    return type == 'i' ? std::to_string(static_cast<int32_t>(value)) : std::to_string(value);
}

// The values of a field, or nothing when all are zero.
std::string textOf(char type, size_t count, const uint8_t* bytes) {
    const auto* const characters = reinterpret_cast<const char*>(bytes);
    if (type == 'c') {
        return {characters, strnlen(characters, count)};
    }
    std::string all, shown;
    for (size_t i = 0; i < count; ++i) {
        const std::string value = textOf(type, bytes + i * sizeof(uint32_t));
        all += (i > 0 ? "," : "") + value;
        shown = value == "0" ? shown : all;
    }
    return shown;
}

}  // namespace

bool isRequest(unsigned long request) {
    return std::any_of(kRecords.begin(), kRecords.end(),
                       [&](const SpelledRecord& record) { return record.request == request; });
}

std::string describeRecord(unsigned command, const uint8_t* bytes, size_t size) {
    std::vector<uint8_t> rest(bytes, bytes + size);
    std::string text;
    std::istringstream fields(kRecords.at(command - kFirstCommand).fields);
    size_t offset = 0, count = 0;
    char type = 0;
    for (std::string name; fields >> offset >> type >> count >> name;) {
        const std::string value = textOf(type, count, bytes + offset);
        text += value.empty() ? "" : ' ' + name + '=' + value;
        const size_t described = type == 'c' ? value.size() : type == 'b' ? 1 : 4 * count;
        std::fill_n(rest.begin() + static_cast<int>(offset), described, uint8_t{0});
    }
    for (size_t i = 0; i < size; ++i) {
        text += rest[i] == 0 ? "" : " byte" + std::to_string(i) + '=' + std::to_string(rest[i]);
    }
    return text;
}

}  // namespace fake

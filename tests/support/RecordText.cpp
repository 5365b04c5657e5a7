#include "support/RecordText.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <sstream>
#include <vector>

namespace fake {
namespace {

struct Record {
    uint32_t request;
    const char* fields;
};

// Offset, type, count and name of each field. The types are unsigned and signed words, thread ids,
// bytes and characters.
constexpr std::array<Record, 12> kRecords = {
        {{0x4024671B,
          "0u1 driverParam 4u3 clusterLevels 16u3 maxEfficientFreqs 28i1 tuningParam1 "
          "32i1 tuningParam2"},
         {0x4028671C,
          "0u1 uniqueTaskId 8i1 defaultUclamp 12i1 targetTime 16i1 taskSpecValue 24b1 isVIPTask "
          "25b1 extraFlag0 26b1 extraFlag1 27c10 taskName"},
         {0x4010671D, "0t1 tid 4u1 uniqueTaskId"},
         {0x4010671E, "0t1 tid 4u1 uniqueTaskId"},
         {0x4010671F, "0t1 tid 4u1 uniqueTaskId 12u1 sceneChangeMode"},
         {0x40046720, ""},
         {0x40086721, ""},
         {0x40086722, "4u1 fps"},
         {0x41546723,
          "0t1 tid 4u8 uclampLevels 36i1 percentLevel 40i1 requestValue 44i1 auxValue "
          "48u8 rangeLevels1 80u8 rangeLevels2 112u8 rangeLevels3 144b1 isReset 145b1 auxFlag "
          "148u20 criticalTaskIds 228u20 criticalTaskUclamps 308u4 limits 324b1 passFlag "
          "325b1 sharedFlag 328i3 extraValues"},
         {0x40086724, "0t1 tid 4i1 criticalValue"},
         {0x40086725, "0t1 tid"},
         {0x401C6726, "0i1 anchor 8i1 phase 16u1 serial 20i1 latencyTarget 24i1 jitterTarget"}}};

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
                       [&](const Record& record) { return record.request == request; });
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

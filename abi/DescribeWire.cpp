/*
 * Prints every command of the control node: number, name, request and size, then the offset, type
 * and name of each field of its record.
 */
#include <cinttypes>
#include <cstdio>
#include <string>

#include "driver/RecordDecoder.h"

namespace {

const char* nameOf(desk::FieldType type) {
    switch (type) {
        case desk::FieldType::Unsigned32:
            return "u32";
        case desk::FieldType::Signed32:
            return "s32";
        case desk::FieldType::Byte:
            return "u8";
        case desk::FieldType::Text:
            break;
    }
    return "char";
}

void describe(const VELKCommand& command) {
    std::printf("%" PRIu32 " %s request 0x%08" PRIx32 " size %zu\n", command.number, command.name,
                command.request, command.recordSize);
    for (const desk::RecordField& field : desk::findRecordLayout(command.request)->fields) {
        std::string type = nameOf(field.type);
        if (field.count > 1) {
            type += '[' + std::to_string(field.count) + ']';
        }
        std::printf("    %3d %-8s %s\n", field.offset, type.c_str(), field.name);
    }
}

}  // namespace

int main() {
    for (const VELKCommand& command : VELK_COMMANDS) {
        describe(command);
    }
}

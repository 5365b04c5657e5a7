/*
 * Prints every command of the control node: number, name, request and size, then the offset, type,
 * name and valid values of each field. wire.txt holds these rows as they were released; rows.awk
 * prints those of docs/wire-protocol.md.
 */
#include <cinttypes>
#include <cstdio>

#include "driver/FieldText.h"
#include "foundation/CommandTable.h"

int main() {
    for (const VELKCommand& command : VELK_COMMANDS) {
        const uint32_t number = command.number;
        std::printf("%" PRIu32 " | %" PRIu32 " | `%s` | 0x%08" PRIX32 " | %zu |\n", number, number,
                    command.name, command.request, command.recordSize);
        for (const VELKField& field : command.fields) {
            std::printf("%" PRIu32 " | %zu | %s | `%s` | %s |\n", number, field.offset,
                        desk::describeType(field).c_str(), field.name,
                        desk::describeValues(field).c_str());
        }
    }
}

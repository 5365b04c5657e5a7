/*
 * Prints every command of the control node: number, name, request and size, then the offset, type,
 * name and valid values of each field of its record.
 */
#include <cinttypes>
#include <cstdio>

#include "driver/FieldText.h"
#include "foundation/CommandTable.h"

int main() {
    for (const VELKCommand& command : VELK_COMMANDS) {
        std::printf("%" PRIu32 " %s request 0x%08" PRIx32 " size %zu\n", command.number,
                    command.name, command.request, command.recordSize);
        for (const VELKField& field : command.fields) {
            std::printf("    %3zu %-8s %-19s %s\n", field.offset, desk::describeType(field).c_str(),
                        field.name, desk::describeValues(field).c_str());
        }
    }
}

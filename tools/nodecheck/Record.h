/*
 * Records built from the rows of the command table.
 */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "foundation/CommandTable.h"

namespace nodecheck {

struct Record {
    const VELKCommand* command = nullptr;
    alignas(8) std::array<std::byte, VELK_LARGEST_RECORD> bytes = {};

    const void* data() const { return bytes.data(); }
};

// Each element has its valid value that is closest to 0, `tid` is the caller's, and every place of
// a critical task names task 1.
Record validRecord(const VELKCommand& command, uint32_t tid);
// Of the command with this request, which has to be one of the table.
Record validRecord(uint32_t request, uint32_t tid);

bool isThreadId(const VELKField& field);
// Null where the record has no such field.
const VELKField* findField(const VELKCommand& command, const char* name);

// Of a text, its length, which may be that of the whole field.
int64_t valueOf(const Record& record, const VELKField& field, size_t element = 0);
void setValue(Record& record, const VELKField& field, size_t element, int64_t value);
size_t elementsOf(const VELKField& field);  // 1 of a text

// What the type of the field can hold, valid or not; of a text, its length.
int64_t smallestOfType(const VELKField& field);
int64_t largestOfType(const VELKField& field);
inline bool isValid(const VELKField& field, int64_t value) {
    return value >= field.smallest && value <= field.largest;
}

// Follows the rules between fields: no critical task behind a free place, no latency target at the
// end of an anchor.
void fitTogether(Record& record);
// Whether these rules hold.
bool fitsTogether(const Record& record);

// "singleShot rangeLevels1[3]=1025"
std::string describe(const VELKCommand& command, const VELKField& field, size_t element,
                     int64_t value);

}  // namespace nodecheck

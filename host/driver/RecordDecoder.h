/*
 * Turns the bytes of a command into named fields, in the order of the record.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "foundation/CommandTable.h"

namespace desk {

enum class FieldType : uint8_t { Unsigned32, Signed32, Byte, Text };

struct RecordField {
    const char* name;
    FieldType type;
    uint16_t offset;
    uint16_t count = 1;       // elements; of a text, its bytes
    bool isReserved = false;  // always zero
};

struct RecordLayout {
    const VELKCommand* command;
    std::span<const RecordField> fields;  // without gaps, from the first byte to the last
};

// Null when the request is none of the command table.
const RecordLayout* findRecordLayout(uint32_t request);

// A field of one record. It reads the record's bytes when asked, so the record must live on.
class FieldValue {
  public:
    FieldValue(const RecordField& field, const void* record)
        : mField(&field), mBytes(static_cast<const std::byte*>(record) + field.offset) {}

    std::string_view name() const { return mField->name; }
    bool isReserved() const { return mField->isReserved; }
    bool isText() const { return mField->type == FieldType::Text; }
    bool isArray() const { return !isText() && mField->count > 1; }

    size_t size() const { return mField->count; }  // elements
    int64_t number(size_t index = 0) const;        // not of a text
    std::string_view text() const;                 // up to the first zero byte
    bool isZero() const;                           // all bytes
    size_t usedSize() const;                       // elements without the zeros at the end

  private:
    const RecordField* mField;
    const std::byte* mBytes;
};

// Shows every field to `visit(const FieldValue&)`.
template <typename Visitor>
void visitRecord(const RecordLayout& layout, const void* record, Visitor&& visit) {
    for (const RecordField& field : layout.fields) {
        visit(FieldValue(field, record));
    }
}

// One line for people: "tid=4711 uniqueTaskId=3". Arrays end with their last element that is not
// zero, and reserved fields show only when they are not zero.
std::string describeRecord(const RecordLayout& layout, const void* record);

}  // namespace desk

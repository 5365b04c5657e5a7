/*
 * Turns the bytes of a command into named fields, in the order of the record.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/CommandTable.h"

namespace desk {

// A field of one record. It reads the record's bytes when asked, so the record must outlive it.
class FieldValue {
  public:
    FieldValue(const VELKField& field, const void* record)
        : mField(&field), mBytes(static_cast<const std::byte*>(record) + field.offset) {}

    const VELKField& field() const { return *mField; }
    std::string_view name() const { return mField->name; }
    bool isReserved() const { return mField->isReserved; }
    bool isText() const { return mField->type == VELK_TEXT; }
    bool isArray() const { return !isText() && mField->count > 1; }

    size_t size() const { return mField->count; }  // elements; of a text, its bytes
    int64_t number(size_t index = 0) const;        // an element; of a text, a byte
    std::string_view text() const;                 // up to the first zero byte
    size_t usedSize() const;                       // elements without the zeros at the end
    bool isZero() const { return usedSize() == 0; }

  private:
    const VELKField* mField;
    const std::byte* mBytes;
};

// Shows every field to `visit(const FieldValue&)`.
template <typename Visitor>
void visitRecord(const VELKCommand& command, const void* record, Visitor&& visit) {
    for (const VELKField& field : command.fields) {
        visit(FieldValue(field, record));
    }
}

// One line for people: "tid=4711 uniqueTaskId=3". Arrays end with their last element that is not
// zero, and reserved fields show only when they are not zero.
std::string describeRecord(const VELKCommand& command, const void* record);

}  // namespace desk

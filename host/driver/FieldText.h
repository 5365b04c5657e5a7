/*
 * What people read about a field of a record: its type and its valid values.
 */
#pragma once

#include <string>

#include "foundation/CommandTable.h"

namespace desk {

// "u32", "s32[3]", "char[10]"
std::string describeType(const VELKField& field);

// "any", "0", "1 or more", "0 or 1", "0..1024", "up to 9 characters"
std::string describeValues(const VELKField& field);

}  // namespace desk

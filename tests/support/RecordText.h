/*
 * The records as a transcript shows them.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace fake {

inline constexpr unsigned kFirstCommand = 27;

// Whether this is the request of a command.
bool isRequest(unsigned long request);

// The fields that are not zero, " uniqueTaskId=1 taskName=SCALE": lists without the zeros at their
// end, "caller" for the id of the calling thread, and bytes of no field by their offset.
std::string describeRecord(unsigned command, const uint8_t* bytes, size_t size);

}  // namespace fake

/*
 * The requests and their records as a transcript shows them. They are spelled out here once more,
 * so that a mistake in the library's own description of them shows.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace fake {

inline constexpr unsigned kFirstCommand = 27;

// Whether this is the request of one of the twelve commands.
bool isRequest(unsigned long request);

// The fields that are not zero, " uniqueTaskId=1 taskName=SCALE": lists without the zeros at their
// end, "caller" for the id of the calling thread, and bytes of no field by their offset.
std::string describeRecord(unsigned command, const uint8_t* bytes, size_t size);

}  // namespace fake

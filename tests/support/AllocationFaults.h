/*
 * Makes allocations of the library fail. A program gets this by having AllocationFaults.cpp, which
 * replaces operator new and delete, among its sources.
 */
#pragma once

namespace fake {

// The n-th allocation that library code makes on this thread from now on fails; 0 is none.
void failAllocation(int n);

}  // namespace fake

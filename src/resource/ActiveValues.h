/*
 * The values that the active single-shot controls ask for in one field of the record: a multiset.
 *
 * It is a sorted array, because few controls are active at once: moving a few words is cheaper than
 * a heap node for each value. Its capacity never shrinks, so removing a value can be undone without
 * allocating.
 */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/Visibility.h"

// Values are wide enough for every signed and unsigned field of a control.
class VELK_INTERNAL ActiveValues {
  public:
    bool empty() const { return mSorted.empty(); }
    // Only while not empty.
    int64_t largest() const { return mSorted.back(); }

    // Makes room for `count` more values; only this may allocate.
    void makeRoom(size_t count) {
        if (count > mSorted.capacity() - mSorted.size()) {
            grow(count);
        }
    }
    // Adds a value for which room was made.
    void insert(int64_t value) noexcept;
    // Puts back values that eraseAll removed, as many as fit without allocating.
    void insertCopies(int64_t value, size_t count) noexcept;
    // Removes one value.
    void eraseOne(int64_t value) noexcept;
    // Removes every equal value and returns how many there were.
    size_t eraseAll(int64_t value) noexcept;

  private:
    void grow(size_t count);
    void moveLastIntoPlace() noexcept;

    std::vector<int64_t> mSorted;
};

// How often each value of a withdrawn control was active, in the order in which a control's values
// are visited. Percent level, limit and levels fit in place; only critical tasks need the heap.
class VELK_INTERNAL WithdrawnCounts {
  public:
    // Makes room for the counts of this many critical tasks.
    void reserve(size_t criticalTasks) { mOverflow.reserve(criticalTasks); }

    void add(size_t count) noexcept {
        if (mSize < mInPlace.size()) {
            mInPlace[mSize] = count;
        } else {
            mOverflow.push_back(count);
        }
        ++mSize;
    }

    size_t operator[](size_t position) const noexcept {
        return position < mInPlace.size() ? mInPlace[position]
                                          : mOverflow[position - mInPlace.size()];
    }

  private:
    size_t mSize = 0;
    std::array<size_t, 10> mInPlace = {};
    std::vector<size_t> mOverflow;
};

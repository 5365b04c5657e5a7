/*
 * The multiset of values that the active single-shot controls ask for at one place.
 *
 * A sorted array: a handful of controls is active at once, so shifting a few words beats one heap
 * node a value, and room that has been made once is never given back, so that taking a value out
 * can always be undone.
 */
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

template <typename Value>
class ActiveValues {
  public:
    bool empty() const { return mSorted.empty(); }
    // Only while not empty.
    Value largest() const { return mSorted.back(); }

    // Makes room for `count` more values; only this may allocate.
    void makeRoom(size_t count) {
        const size_t needed = mSorted.size() + count;
        if (needed > mSorted.capacity()) [[unlikely]] {
            mSorted.reserve(std::max(needed, 2 * mSorted.capacity()));
        }
    }

    // Adds a value for which room was made.
    void insert(Value value) noexcept {
        mSorted.insert(std::upper_bound(mSorted.begin(), mSorted.end(), value), value);
    }

    // Puts back values that eraseAll removed, as far as nobody else has used their room since.
    void insertCopies(Value value, size_t count) noexcept {
        const size_t room = mSorted.capacity() - mSorted.size();
        mSorted.insert(std::upper_bound(mSorted.begin(), mSorted.end(), value),
                       std::min(count, room), value);
    }

    // Removes one value.
    void eraseOne(Value value) noexcept {
        const auto position = std::lower_bound(mSorted.begin(), mSorted.end(), value);
        if (position != mSorted.end() && *position == value) {
            mSorted.erase(position);
        }
    }

    // Removes every equal value and tells how many there were.
    size_t eraseAll(Value value) noexcept {
        const auto [first, last] = std::equal_range(mSorted.begin(), mSorted.end(), value);
        const auto count = static_cast<size_t>(last - first);
        mSorted.erase(first, last);
        return count;
    }

  private:
    std::vector<Value> mSorted;
};

// How often each value of a withdrawn control was active, in the order in which a control's values
// are visited. Percent level, limit and levels fit in place; only critical tasks need the heap.
class WithdrawnCounts {
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

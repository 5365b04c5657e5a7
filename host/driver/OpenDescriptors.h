/*
 * The descriptors of the node that are open. A duplicate shares the open file of its original.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace desk {

class OpenDescriptors {
  public:
    size_t size() const { return mDescriptors.size(); }
    bool contains(int number) const { return find(number) != nullptr; }
    // Whether other descriptors share the open file of this one.
    bool isDuplicate(int number) const;

    // Both expect a number that is not open. False when the original is not open.
    void add(int number);
    bool addDuplicate(int number, int copy);
    // False when it is not open.
    bool remove(int number);

  private:
    struct Descriptor {
        int number = -1;
        uint64_t file = 0;
    };

    const Descriptor* find(int number) const;

    std::vector<Descriptor> mDescriptors;
    uint64_t mLastFile = 0;
};

}  // namespace desk

#include "driver/OpenDescriptors.h"

#include <algorithm>

namespace desk {

const OpenDescriptors::Descriptor* OpenDescriptors::find(int number) const {
    const auto found = std::ranges::find(mDescriptors, number, &Descriptor::number);
    return found != mDescriptors.end() ? &*found : nullptr;
}

bool OpenDescriptors::isDuplicate(int number) const {
    const Descriptor* found = find(number);
    return found != nullptr && std::ranges::count(mDescriptors, found->file, &Descriptor::file) > 1;
}

void OpenDescriptors::add(int number) {
    mDescriptors.push_back({number, ++mLastFile});
}

bool OpenDescriptors::addDuplicate(int number, int copy) {
    const Descriptor* original = find(number);
    if (original == nullptr) {
        return false;
    }
    mDescriptors.push_back({copy, original->file});
    return true;
}

bool OpenDescriptors::remove(int number) {
    return std::erase_if(mDescriptors,
                         [number](const Descriptor& each) { return each.number == number; }) != 0;
}

}  // namespace desk

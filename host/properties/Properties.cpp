#include <android-base/parsebool.h>
#include <android-base/properties.h>
#include <cutils/properties.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <functional>
#include <limits>
#include <mutex>
#include <set>
#include <shared_mutex>
#include <string>
#include <string_view>

namespace {

// Values are kept by libbase, which has no lock and allocates a string for each look-up. This class
// adds the lock, and knows which names were ever set: asking for any other name, the usual case,
// allocates nothing.
class PropertyStore {
  public:
    void set(const char* key, const char* value) {
        const std::unique_lock lock(mMutex);
        android::base::SetProperty(key, value);
        mNames.emplace(key);
    }

    std::string get(const char* key) const {
        const std::shared_lock lock(mMutex);
        const auto name = mNames.find(std::string_view(key));
        return name != mNames.end() ? android::base::GetProperty(*name, "") : std::string();
    }

  private:
    mutable std::shared_mutex mMutex;
    std::set<std::string, std::less<>> mNames;
};

// Never destroyed: the library may still ask while the process exits.
PropertyStore& properties() {
    static PropertyStore& instance = *new PropertyStore;
    return instance;
}

}  // namespace

int property_get(const char* key, char* value, const char* default_value) {
    std::string found = properties().get(key);
    if (found.empty() && default_value != nullptr) {
        found = default_value;
    }
    const size_t length = std::min<size_t>(found.size(), PROPERTY_VALUE_MAX - 1);
    found.copy(value, length);
    value[length] = '\0';
    return static_cast<int>(length);
}

int8_t property_get_bool(const char* key, int8_t default_value) {
    if (key == nullptr) {
        return default_value;
    }
    switch (android::base::ParseBool(properties().get(key))) {
        case android::base::ParseBoolResult::kTrue:
            return 1;
        case android::base::ParseBoolResult::kFalse:
            return 0;
        case android::base::ParseBoolResult::kError:
            break;
    }
    return default_value;
}

int32_t property_get_int32(const char* key, int32_t default_value) {
    if (key == nullptr) {
        return default_value;
    }
    const std::string value = properties().get(key);
    if (value.empty()) {
        return default_value;
    }
    // Not libbase's ParseInt: a device takes the number at the beginning and ignores the rest.
    const int callersErrno = errno;
    char* end = nullptr;
    const intmax_t number = std::strtoimax(value.c_str(), &end, 0);
    errno = callersErrno;
    const bool isNumber = end != value.c_str();
    const bool isInRange = number >= std::numeric_limits<int32_t>::min() &&
                           number <= std::numeric_limits<int32_t>::max();
    return isNumber && isInRange ? static_cast<int32_t>(number) : default_value;
}

int property_set(const char* key, const char* value) {
    const std::string_view text = value != nullptr ? value : "";
    if (key == nullptr || *key == '\0' || text.size() >= PROPERTY_VALUE_MAX) {
        return -1;
    }
    properties().set(key, text.data());
    return 0;
}

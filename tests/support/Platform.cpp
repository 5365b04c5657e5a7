#include "support/Platform.h"

#include <android/log.h>
#include <cutils/properties.h>
#include <cutils/trace.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <list>

#include "support/Recorder.h"

uint32_t ULogger::sNormalDetailsMask = 0;
uint32_t ULogger::sDetailsLevel = 0;
uint32_t ULogger::sMode = 0;
ULogger* ULogger::sULogger = nullptr;

namespace fake {
namespace {

constexpr int64_t kUnset = INT64_MAX;
constexpr const char* kTag = "VELKPerfCtrl";
constexpr uint32_t kModule = 0x1001015;
constexpr std::array<const char*, kProperties> kNames = {
        "vendor.debug.velk.debuglog", "vendor.debug.velk.forceoff",
        "vendor.debug.velk.dumptasktable.enable", "vendor.debug.velk.latencySpec",
        "vendor.debug.velk.jitterSpec"};

class Logger final : public ULogger {
  public:
    void flush() override { recorder().violation("ULogger::flush"); }

    void logMessage(uint32_t moduleId, const char* tag, uint32_t level, const char* text,
                    int32_t length) override {
        const Side side(false);
        if (!recorder().isOn()) {
            return;
        }
        std::string line = text;
        if (moduleId != kModule || std::strcmp(tag, kTag) != 0) {
            line += " [" + std::to_string(moduleId) + ' ' + tag + ']';
        }
        if (static_cast<size_t>(length) != std::strlen(text)) {
            line += " [length " + std::to_string(length) + ']';
        }
        recorder().record(
                {.kind = kLog, .text = std::move(line), .isULogger = true, .level = level});
    }
};

class Convertor final : public VELKJsonConvertor {
  public:
    explicit Convertor(int source) : mSource(source) {
        platform().livingConvertors.fetch_add(1, std::memory_order_relaxed);
    }
    ~Convertor() override {
        const Side side(false);
        platform().livingConvertors.fetch_sub(1, std::memory_order_relaxed);
        recorder().record(kPlatform, "destroy convertor " + std::to_string(mSource));
    }

    void reserved3() override { recorder().violation("reserved3"); }
    void reserved9() override { recorder().violation("reserved9"); }

    int32_t getTaskTargetTime(const int& task) override {
        return figures("getTaskTargetTime", task).targetTime;
    }
    int32_t getTaskDefaultUclamp(const int& task) override {
        return figures("getTaskDefaultUclamp", task).defaultUclamp;
    }
    int32_t getTaskSpecValue(const int& task) override {
        return figures("getTaskSpecValue", task).specValue;
    }
    bool isVIPTask(const int& task) override { return figures("isVIPTask", task).isVip; }
    int getGroupHeadTask(const int& task, const VELKTaskExtraParams& extra) override {
        ask("getGroupHeadTask", std::to_string(task) + ", " + std::to_string(extra.groupHead));
        return find(task).groupHead;
    }
    uint32_t getClusterLevel(int index) override {
        ask("getClusterLevel", std::to_string(index));
        return source().clusterLevels.at(static_cast<size_t>(index));
    }
    uint32_t getClusterDefaultLevel(int cluster) override {
        ask("getClusterDefaultLevel", std::to_string(cluster));
        return source().clusterDefaultLevels.at(static_cast<size_t>(cluster));
    }
    std::string getTaskName(const int& task) override { return figures("getTaskName", task).name; }
    void load() override {
        const Side side(false);
        recorder().record(kPlatform, "load convertor " + std::to_string(mSource));
    }

  private:
    const Source& source() const { return platform().sources.at(static_cast<size_t>(mSource)); }

    void ask(const char* what, const std::string& argument) const {
        if (recorder().isOn()) {
            const Side side(false);
            recorder().record(kQuery, std::to_string(mSource) + '.' + what + '(' + argument + ')');
        }
    }

    const TaskFigures& find(int task) const {
        static const TaskFigures unknown;
        const auto entry = source().tasks.find(task);
        return entry == source().tasks.end() ? unknown : entry->second;
    }

    const TaskFigures& figures(const char* what, int task) const {
        ask(what, std::to_string(task));
        return find(task);
    }

    const int mSource;
};

int readProperty(const char* name, int defaultValue) {
    const Side side(false);
    for (size_t i = 0; i < kProperties; ++i) {
        if (std::strcmp(name, kNames.at(i)) == 0) {
            recorder().record(kProperty, std::string("property ") + name);
            // The message that is about to be logged must keep the errno of the failed call.
            errno = i == kDebugLog ? EILSEQ : errno;
            const int64_t value = platform().properties.at(i).load(std::memory_order_relaxed);
            return value == kUnset ? defaultValue : static_cast<int>(value);
        }
    }
    recorder().violation(std::string("property ") + name);
    return defaultValue;
}

void fetched(const std::string& what) {
    const Side side(false);
    recorder().record(kPlatform, "fetch " + what);
}

}  // namespace

Platform& platform() {
    static auto* const instance = new Platform;
    return *instance;
}

void Platform::reset() {
    Source& own = sources[VELK_JSON_SOURCE_PLATFORM];
    own = {.clusterLevels = {101, 102, 103, 104, 105, 106, 107, 108},
           .clusterDefaultLevels = {31, 32, 33}};
    own.tasks[5] = {16, 200, 50, true, "TASK_SCALE", 6};
    own.tasks[6] = {33, 300, 60, false, "TASK_CONVERT", 0};
    own.tasks[20] = {40, 320, 62, false, "TASK_LAST_OWN", 0};
    own.tasks[21] = {50, 350, 63, true, "TASK_NEITHER", 6};
    Source& customer = sources[VELK_JSON_SOURCE_CUSTOMER];
    customer = {.clusterLevels = {901, 902, 903, 904, 905, 906, 907, 908},
                .clusterDefaultLevels = {91, 92, 93}};
    // Never asked for: a task is described by one source, and 21 by none.
    customer.tasks[5] = customer.tasks[20] = customer.tasks[21] = {9, 90, 99, true, "WRONG", 6};
    customer.tasks[22] = {70, 400, 72, true, "TASK_CUSTOM_FIRST", 23};
    customer.tasks[24] = {3, 500, 74, false, "TASK_CUSTOM_ABCDEFGHIJK", 0};
    anchors = custAnchors = {};
    efficientFreqs = {1100, 1200, 1300};
    singleShots.clear();
    for (auto& property : properties) {
        property = kUnset;
    }
    if (isDebugLogOn()) {
        set(kDebugLog, 1);
    }
    traceTags = 0x400;
    openSections = 0;
    formatterFails = false;
    errorText.clear();
    setLogSwitches(3);
    setLogger(true);
}

void setLogSwitches(uint32_t mode, uint32_t level, uint32_t mask) {
    __atomic_store_n(&ULogger::sMode, mode, __ATOMIC_RELAXED);
    __atomic_store_n(&ULogger::sDetailsLevel, level, __ATOMIC_RELAXED);
    __atomic_store_n(&ULogger::sNormalDetailsMask, mask, __ATOMIC_RELAXED);
}

// A logger that comes back is a new one, so that a race shows when the library does not see it
// whole. None is destroyed: calls may be using it.
void setLogger(bool isPresent) {
    static auto* const loggers = new std::list<Logger>;
    if (isPresent != (ULogger::sULogger != nullptr)) {
        ULogger* const logger = isPresent ? &loggers->emplace_back() : nullptr;
        __atomic_store_n(&ULogger::sULogger, logger, __ATOMIC_RELEASE);
    }
}

}  // namespace fake

using fake::Side;

std::unique_ptr<VELKJsonConvertor> VELKJsonConvertor::createInstance(
        const ENUM_VELK_JSON_SOURCE& source, const VELKScenario& scenario,
        const VELKFeatureCustomization& custom) {
    fake::fetched("convertor " + std::to_string(source) + " scenario " + std::to_string(scenario) +
                  " customization " + std::to_string(custom));
    if (fake::platform().sources.at(static_cast<size_t>(source)).isMissing) {
        return nullptr;
    }
    return std::make_unique<fake::Convertor>(source);
}

VELKAnchorSpecMap VELKSettingsProvider::getAnchorSpecMapProvider(
        const VELKFeatureCustomization& custom) {
    fake::fetched("anchors customization " + std::to_string(custom));
    return fake::platform().anchors;
}

VELKAnchorSpecMap VELKSettingsProvider::getCustAnchorSpecMapProvider(
        const VELKFeatureCustomization& custom) {
    fake::fetched("customer anchors customization " + std::to_string(custom));
    return fake::platform().custAnchors;
}

uint32_t VELKSettingsProvider::getMaxEfficientCPUFreqProvider(int cluster) {
    fake::fetched("frequency " + std::to_string(cluster));
    return fake::platform().efficientFreqs.at(static_cast<size_t>(cluster));
}

std::map<int, std::map<VELKScenario, VELKSingleShotControl>>
VELKSettingsProvider::getSingleShotControlProvider() {
    fake::fetched("single shots");
    return fake::platform().singleShots;
}

extern "C" {

int8_t property_get_bool(const char* key, int8_t default_value) {
    return fake::readProperty(key, default_value) != 0 ? 1 : 0;
}

int32_t property_get_int32(const char* key, int32_t default_value) {
    return fake::readProperty(key, default_value);
}

uint64_t atrace_get_enabled_tags() {
    const Side side(false);
    fake::recorder().record(fake::kTags, "tags");
    return fake::platform().traceTags.load(std::memory_order_relaxed);
}

void atrace_begin_body(const char* name) {
    const Side side(false);
    fake::platform().openSections.fetch_add(1, std::memory_order_relaxed);
    fake::recorder().record(fake::kTrace, std::string("begin ") + name);
}

void atrace_end_body() {
    const Side side(false);
    fake::platform().openSections.fetch_sub(1, std::memory_order_relaxed);
    fake::recorder().record(fake::kTrace, "end");
}

int __android_log_print(int priority, const char* tag, const char* format, ...) {
    const Side side(false);
    if (fake::recorder().isOn()) {
        std::array<char, 4096> text;
        va_list arguments;
        va_start(arguments, format);
        vsnprintf(text.data(), text.size(), format, arguments);
        va_end(arguments);
        std::string line = text.data();
        if (std::strcmp(tag, fake::kTag) != 0) {
            line += std::string(" [") + tag + ']';
        }
        fake::recorder().record({.kind = fake::kLog,
                                 .text = std::move(line),
                                 .level = static_cast<uint32_t>(priority),
                                 .format = format});
    }
    errno = EILSEQ;  // the second sink must see the errno of the failed call all the same
    return 1;
}

int __real_vsnprintf(char* text, size_t size, const char* format, va_list arguments)
        __attribute__((format(printf, 3, 0)));
int __wrap_vsnprintf(char* text, size_t size, const char* format, va_list arguments)
        __attribute__((format(printf, 3, 0)));
int __wrap_vsnprintf(char* text, size_t size, const char* format, va_list arguments) {
    if (fake::tInLibrary && fake::platform().formatterFails) {
        return -1;
    }
    const int length = __real_vsnprintf(text, size, format, arguments);
    if (fake::tInLibrary && length >= static_cast<int>(size)) {
        text[size - 1] = '!';  // some formatters do not terminate a cut text
    }
    return length;
}

char* __real_strerror(int error);
char* __wrap_strerror(int error) {
    std::string& text = fake::platform().errorText;
    return fake::tInLibrary && !text.empty() ? text.data() : __real_strerror(error);
}
}

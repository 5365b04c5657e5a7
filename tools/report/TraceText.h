/*
 * The formats of times, names and arguments in traces.
 */
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace desk {

// All threads belong to one process.
inline constexpr int kTraceProcess = 1;

inline constexpr const char* kNoArguments = "{}";

inline std::string dumpForTrace(const nlohmann::ordered_json& json) {
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

inline std::string quoteForTrace(std::string_view text) {
    return dumpForTrace(nlohmann::ordered_json(text));
}

// The trace's times are in microseconds.
inline std::string traceTime(int64_t ns) {
    constexpr int64_t kNsPerUs = 1000;
    return fmt::format("{}.{:03}", ns / kNsPerUs, ns % kNsPerUs);
}

// The number of a thread in the trace, where 0 is reserved for the idle thread.
constexpr uint32_t traceThread(uint32_t thread) {
    return thread + 1;
}

}  // namespace desk

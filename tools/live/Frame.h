/*
 * The protocol of velk-run and the library that it preloads: frames on a stream socket, each with
 * a head of size and kind. Both ends are of the same build and on the same machine.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace desk {

// The name of the socket, in the namespace of abstract sockets.
inline constexpr const char* kSocketVariable = "VELK_RUN_SOCKET";

enum class FrameKind : uint32_t {
    Setup,  // the only one to the program, and its first: the settings of the desk
    Call,   // a call that has ended, or a command outside of calls
    Log,    // a line of the Android log, with its newline
    Ulog,   // a line of the camera stack's logger, with its newline
    Lost,   // why the calls that follow are not sent
};

struct FrameHead {
    uint32_t size = 0;  // of what follows the head, in bytes
    FrameKind kind = FrameKind::Setup;
};

// Builds a frame piece by piece. Its memory can be reused for the next one.
class FrameWriter {
  public:
    explicit FrameWriter(FrameKind kind) { start(kind); }

    void start(FrameKind kind) {
        mBytes.clear();
        put(FrameHead{0, kind});
    }

    template <typename T>
    void put(const T& value) {
        static_assert(std::is_trivially_copyable_v<T>);
        append({reinterpret_cast<const char*>(&value), sizeof value});
    }
    void put(const std::string& text) { putText(text); }
    template <typename T>
    void put(const std::optional<T>& value) {
        put(value.has_value());
        if (value) {
            put(*value);
        }
    }
    template <typename First, typename Second>
    void put(const std::pair<First, Second>& values) {
        exchange(values.first, values.second);
    }
    template <typename T>
    void put(const std::vector<T>& values) {
        put(static_cast<uint32_t>(values.size()));
        for (const T& value : values) {
            put(value);
        }
    }
    // A function that calls this with all members describes a frame for both directions.
    template <typename... Members>
    void exchange(const Members&... members) {
        (put(members), ...);
    }

    void putText(std::string_view text) {
        put(static_cast<uint32_t>(text.size()));
        append(text);
    }

    // All but the head. Valid until the next write, like the frame.
    std::string_view content() const { return std::string_view(mBytes).substr(sizeof(FrameHead)); }

    // As it is, without its size.
    void append(std::string_view bytes) { mBytes.append(bytes); }

    // The whole frame.
    std::string_view finish() {
        const auto size = static_cast<uint32_t>(mBytes.size() - sizeof(FrameHead));
        std::memcpy(mBytes.data() + offsetof(FrameHead, size), &size, sizeof size);
        return mBytes;
    }

  private:
    std::string mBytes;
};

// Reads the content of a frame. Throws std::runtime_error when it is truncated.
class FrameReader {
  public:
    explicit FrameReader(std::string_view content) : mRest(content) {}

    template <typename T>
    T get() {
        static_assert(std::is_trivially_copyable_v<T>);
        T value;
        std::memcpy(&value, take(sizeof value).data(), sizeof value);
        return value;
    }

    template <typename T>
    void get(T& value) {
        value = get<T>();
    }
    void get(std::string& text) { text = getText(); }
    template <typename T>
    void get(std::optional<T>& value) {
        value.reset();
        if (get<bool>()) {
            get(value.emplace());
        }
    }
    template <typename First, typename Second>
    void get(std::pair<First, Second>& values) {
        exchange(values.first, values.second);
    }
    template <typename T>
    void get(std::vector<T>& values) {
        values.clear();
        for (auto left = get<uint32_t>(); left > 0; --left) {
            get(values.emplace_back());
        }
    }
    template <typename... Members>
    void exchange(Members&... members) {
        (get(members), ...);
    }

    std::string_view getText() { return take(get<uint32_t>()); }

    std::string_view take(size_t size) {
        if (size > mRest.size()) {
            throw std::runtime_error("a message from the program is truncated");
        }
        const std::string_view taken = mRest.substr(0, size);
        mRest.remove_prefix(size);
        return taken;
    }

  private:
    std::string_view mRest;
};

}  // namespace desk

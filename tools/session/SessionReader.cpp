#include "session/SessionReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <system_error>
#include <utility>

namespace desk {

namespace {

bool isBlank(std::string_view line) {
    return line.find_first_not_of(" \t\r") == std::string_view::npos;
}

// A recording that was cut off ends in zeros, the space that the recorder had reserved. One zero is
// enough to notice that, so only the first is kept.
size_t sizeWithOneZero(std::string_view text) {
    const size_t end = text.find_last_not_of('\0');
    const size_t used = end == std::string_view::npos ? 0 : end + 1;
    return std::min(used + 1, text.size());
}

// What a recording ends in that was cut off: zeros, or a line without its end.
bool isCutOff(std::string_view rest) {
    return rest.ends_with('\0') || (rest.starts_with('{') && !rest.ends_with('}'));
}

// The path without the slash ahead of it.
std::string_view fieldOf(const JsonFault& fault) {
    const std::string_view path = fault.path;
    return path.empty() ? "line" : path == "/" ? "\"\"" : path.substr(1);
}

}  // namespace

SessionReader::SessionReader(InputFile& input, AfterFault afterFault)
    : mInput(&input), mAfterFault(afterFault), mBuffer(kChunkSize) {}

SessionBlock SessionReader::next() {
    constexpr size_t kUsualLine = 100;  // bytes
    SessionBlock block;
    block.calls.reserve(kChunkSize / kUsualLine);
    while (block.calls.empty() && block.faults.empty() && !block.isLast) {
        try {
            const bool hasMore = fill();
            const std::string_view text(mBuffer.data(), mUsed);
            size_t start = 0;
            for (size_t stop = text.find('\n'); stop != std::string_view::npos && !block.isLast;
                 stop = text.find('\n', start)) {
                takeLine(text.substr(start, stop - start), block);
                start = stop + 1;
            }
            if (!hasMore && !block.isLast) {
                block.isLast = true;
                takeRest(text.substr(start), block);
                start = mUsed;
            }
            mUsed = start + sizeWithOneZero(text.substr(start));
            std::memmove(mBuffer.data(), mBuffer.data() + start, mUsed - start);
            mUsed -= start;
            if (mUsed > kMaxLineLength && !block.isLast) {
                takeLine({mBuffer.data(), mUsed}, block);  // its end need not be seen
                block.isLast = true;
            }
        } catch (const std::system_error& error) {
            block.isLast = true;
            block.error = fmt::format("{}: {}, expected a readable file", mInput->name(),
                                      error.code().message());
        }
    }
    return block;
}

bool SessionReader::fill() {
    if (mBuffer.size() - mUsed < kChunkSize) {
        mBuffer.resize(mUsed + kChunkSize);
    }
    const size_t count = mInput->read(mBuffer.data() + mUsed, kChunkSize);
    mUsed += count;
    return count > 0;
}

void SessionReader::takeLine(std::string_view line, SessionBlock& block) {
    ++mLine;
    mOffset += line.size() + 1;
    if (line.size() > kMaxLineLength) {
        refuseLine("line", "too long", fmt::format("at most {} bytes", kMaxLineLength), block);
        return;
    }
    if (isBlank(line)) {
        return;
    }
    SessionCall call;
    std::string_view thread;
    if (const auto fault = mLineReader.read(line, call, thread)) {
        refuseLine(fieldOf(*fault), fault->problem, fault->expected, block);
        return;
    }
    if (call.atUs < mLastUs) {
        refuseLine("at_us", fmt::format("found {}, before the call ahead of it", call.atUs),
                   fmt::format("at least {}", mLastUs), block);
        return;
    }
    mLastUs = call.atUs;
    call.line = mLine;
    call.endOffset = mOffset;
    call.thread = threadNumber(thread, block);
    if (call.thread >= kMaxThreads) {
        refuseLine("thread", "one thread too many", fmt::format("at most {} threads", kMaxThreads),
                   block);
        return;
    }
    block.calls.push_back(std::move(call));
}

void SessionReader::takeRest(std::string_view rest, SessionBlock& block) {
    if (isCutOff(rest)) {
        block.cutOff = fmt::format("{}:{}", mInput->name(), mLine + 1);
    } else {
        takeLine(rest, block);
    }
}

void SessionReader::refuseLine(std::string_view field, std::string_view problem,
                               std::string_view expected, SessionBlock& block) const {
    std::string fault = fmt::format("{}:{}: {}: {}, expected {}", mInput->name(), mLine, field,
                                    problem, expected);
    if (mAfterFault == AfterFault::GoOn) {
        block.faults.push_back(std::move(fault));
    } else {
        block.isLast = true;
        block.error = std::move(fault);
    }
}

uint32_t SessionReader::threadNumber(std::string_view name, SessionBlock& block) {
    const auto known = mThreads.find(name);
    if (known != mThreads.end()) {
        return known->second;
    }
    const auto number = static_cast<uint32_t>(mThreads.size());
    mThreads.emplace(name, number);
    block.newThreads.emplace_back(name);
    return number;
}

}  // namespace desk

/*
 * One check that is running: sends records and compares the answers with those documented.
 */
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "nodecheck/Node.h"
#include "nodecheck/Record.h"

namespace nodecheck {

// The first of many, and how many there were.
struct Details {
    static constexpr size_t kKept = 12;

    uint64_t count = 0;
    std::vector<std::string> first;

    void add(std::string detail);
    void add(const Details& others);
};

struct Findings {
    uint64_t commands = 0;
    Details failures;
    Details lenient;  // taken, although the documents say that it is refused

    void add(const Findings& others);
};

// `what` of the members is a function that returns a text: it is called when there is something to
// report.
class Trial {
  public:
    explicit Trial(NodeFile& file) : mFile(file), mTid(ownTid()) {}

    NodeFile& file() const { return mFile; }
    uint32_t tid() const { return mTid; }
    const Findings& findings() const { return mFindings; }

    template <typename What>
    void mustTake(const Record& record, What&& what) {
        if (const int answer = send(record.command->request, record.data())) {
            fail(what(), answer, 0);
        }
    }
    template <typename What>
    void mustRefuse(int error, uint32_t request, const void* record, What&& what) {
        if (const int answer = send(request, record); answer != error) {
            fail(what(), answer, error);
        }
    }
    // As mustRefuse, but a driver may take it as well.
    template <typename What>
    void mayTake(int error, uint32_t request, const void* record, What&& what) {
        if (const int answer = send(request, record); answer != error) {
            expectEither(answer, error, what());
        }
    }
    // Both are documented.
    template <typename What>
    void mayRefuse(int error, const Record& record, What&& what) {
        const int answer = send(record.command->request, record.data());
        if (answer != 0 && answer != error) {
            fail(what(), answer, error);
        }
    }
    // A valid record of the command.
    void mustTakeOne(uint32_t request);
    // A new session in which the task that the record names is registered.
    void prepareFor(const Record& record);

    // Other conditions, and answers that other processes got.
    void expect(bool isTrue, const std::string& failure);
    void expectAnswer(int answer, int expected, const std::string& what);
    // As mayTake.
    void expectEither(int answer, int error, const std::string& what);
    void add(const Findings& others) { mFindings.add(others); }

  private:
    int send(uint32_t request, const void* record);
    void fail(const std::string& what, int answer, int expected);

    NodeFile& mFile;
    uint32_t mTid;
    Findings mFindings;
};

}  // namespace nodecheck

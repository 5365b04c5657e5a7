/*
 * Prints every command that the driver received, and every call that failed, as they come.
 */
#pragma once

#include <cstdio>
#include <functional>
#include <string>

#include "play/PlayedCall.h"

namespace desk {

enum class PrintFormat : uint8_t { Table, JsonLines };

class CommandPrinter : public CallListener {
  public:
    // `beforeRows` is called ahead of the rows of a call.
    CommandPrinter(FILE* output, PrintFormat format, std::function<void()> beforeRows);

    void onCall(const PlayedCall& played) override;
    void onWait() override;

  private:
    void printTableRow(const PlayedCall& played, const ReceivedCommand& command);
    void printTableFailure(const PlayedCall& played);
    void printJsonCommand(const PlayedCall& played, const ReceivedCommand& command);
    void printJsonFailure(const PlayedCall& played);

    FILE* mOutput;
    PrintFormat mFormat;
    std::function<void()> mBeforeRows;
};

}  // namespace desk

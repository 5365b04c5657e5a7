/*
 * Prints every command that the driver received, and every call that failed, as they come.
 */
#pragma once

#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>

#include "log/LineSink.h"
#include "play/PlayedCall.h"

namespace desk {

enum class PrintFormat : uint8_t { Table, JsonLines };

class CommandPrinter : public CallListener {
  public:
    // `beforeRows` is called ahead of the rows of a call.
    CommandPrinter(std::shared_ptr<LineSink> output, PrintFormat format,
                   std::function<void()> beforeRows);

    void onCall(const PlayedCall& played) override;
    void onWait() override;

  private:
    void printJson(const nlohmann::ordered_json& row);
    void printTableRow(const PlayedCall& played, const ReceivedCommand& command);
    void printTableFailure(const PlayedCall& played);
    void printJsonCommand(const PlayedCall& played, const ReceivedCommand& command);
    void printJsonFailure(const PlayedCall& played);

    std::shared_ptr<LineSink> mOutput;
    PrintFormat mFormat;
    std::function<void()> mBeforeRows;
};

}  // namespace desk

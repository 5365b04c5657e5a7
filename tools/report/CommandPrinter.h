/*
 * Prints every command that the driver received, and every call that failed, as they come.
 */
#pragma once

#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "log/LineSink.h"
#include "play/PlayedCall.h"
#include "report/RowFilter.h"

namespace desk {

enum class PrintFormat : uint8_t { Table, JsonLines };

// On a terminal, rows of a table are cut to its width: the fields get the room that the outcome
// leaves.
class CommandPrinter : public CallListener {
  public:
    struct Place {
        int terminal;      // the descriptor behind the output if that may be a terminal, else -1
        const char* unit;  // the unit in which calls are numbered: "line" for a session
    };

    // `beforeRows` is called before the rows of a call.
    CommandPrinter(std::shared_ptr<LineSink> output, Place place, PrintFormat format,
                   RowFilter filter, std::function<void()> beforeRows);

    void onCall(const PlayedCall& played) override;
    void onWait() override;

  private:
    void printJson(const nlohmann::ordered_json& row);
    void printRow(std::string head, std::string_view fields, const std::string& outcome);
    void printTableRow(const PlayedCall& played, const ReceivedCommand& command);
    void printTableFailure(const PlayedCall& played);
    void printJsonCommand(const PlayedCall& played, const ReceivedCommand& command);
    void printJsonFailure(const PlayedCall& played);

    std::shared_ptr<LineSink> mOutput;
    Place mPlace;
    PrintFormat mFormat;
    RowFilter mFilter;
    std::function<void()> mBeforeRows;
    bool mIsTerminal;
    std::optional<size_t> mColumns;
};

}  // namespace desk

/*
 * Which rows are printed.
 */
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "play/PlayedCall.h"

namespace desk {

/*
 * Constructed from a text of items with commas between them:
 *
 *     command=NAME   rows of this command (a number or a name; open and close are commands too)
 *     thread=NAME    rows of this thread
 *     task=TASK      rows of calls about this task (a number, or the name that it registered with)
 *     failures       rows of what was refused, and of calls that returned -1
 *
 * Of items of one kind, one has to match; items of different kinds all have to match. A call that
 * returned -1 is not a command.
 */
class RowFilter {
  public:
    // Throws std::invalid_argument, whose text names the item and what was expected there.
    static RowFilter parse(std::string_view text);

    // To be called for every call, before asking about its rows: it collects the names of tasks.
    void onCall(const PlayedCall& played);
    bool hasCommand(const PlayedCall& played, const ReceivedCommand& command) const;
    bool hasFailure(const PlayedCall& played) const;

  private:
    void addItem(std::string_view item);
    bool hasCall(const PlayedCall& played) const;

    std::set<std::string, std::less<>> mCommands;
    std::set<std::string, std::less<>> mThreads;
    std::set<std::string, std::less<>> mTasks;
    bool mIsOfFailures = false;
    std::map<int32_t, std::string> mTaskNames;  // of the last registration
};

}  // namespace desk

/*
 * What a driver receives under given tuning data while a session is played.
 */
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "analysis/SessionAnalysis.h"
#include "tune/SessionReplay.h"

namespace desk {

/*
 * The result has the members `summary`, as velk-replay prints it, and `records`: for each subject
 * ("task 5", "anchor 1", a call that sends a control) the distinct records that were sent for it,
 * each with the line of the first and a count. `unexpected` says what went wrong, if anything.
 * Thread ids and unique task ids, which depend on the run and not on the tuning, are left out.
 */
class DriverView : public Evaluation {
  public:
    void onCall(const PlayedCall& played) override;
    nlohmann::ordered_json result() const override;

  private:
    struct Sent {
        uint64_t line = 0;
        uint64_t count = 0;
    };

    void takeCommand(const PlayedCall& played, const ReceivedCommand& command);
    void add(const std::string& subject, const nlohmann::ordered_json& record,
             const PlayedCall& played);
    // The critical tasks by name instead of by id.
    void nameTasks(nlohmann::ordered_json& control) const;

    SessionAnalysis mAnalysis;
    std::map<std::string, std::map<std::string, Sent>> mRecords;  // by subject and text
    std::map<uint32_t, std::string> mTaskNames;                   // by unique task id
};

}  // namespace desk

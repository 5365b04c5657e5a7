/*
 * Replays of sessions, each in a process of its own, so that library and desk begin anew.
 */
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "play/PlayedCall.h"
#include "tuning/TuningData.h"

namespace desk {

// What a replay is made for: hears of its calls, and tells what came out.
class Evaluation : public CallListener {
  public:
    virtual nlohmann::ordered_json result() const = 0;
};

/*
 * Plays a session through the library and returns the result of the evaluation, which hears of the
 * calls in the other process alone. To be called while this process has one thread. A signal that
 * ends the replay ends this process too. Throws std::runtime_error when the session is at fault or
 * cannot be played to its end.
 */
nlohmann::ordered_json replayApart(const std::string& session,
                                   const std::shared_ptr<const TuningData>& tuning,
                                   Evaluation& evaluation);

}  // namespace desk

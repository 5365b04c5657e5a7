/*
 * Replays of sessions, each in a process of its own, so that library and desk start fresh.
 */
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "play/PlayedCall.h"
#include "tuning/TuningData.h"

namespace desk {

// Observes the calls of a replay, and returns what it made of them.
class Evaluation : public CallListener {
  public:
    virtual nlohmann::ordered_json result() const = 0;
};

/*
 * Plays a session through the library and returns the result of the evaluation. The calls are only
 * seen by the copy of the evaluation in the other process. This process must have one thread. A
 * signal that ends the replay ends this process too. Throws std::runtime_error when the session is
 * malformed or cannot be played to its end.
 */
nlohmann::ordered_json replayApart(const std::string& session,
                                   const std::shared_ptr<const TuningData>& tuning,
                                   Evaluation& evaluation);

}  // namespace desk

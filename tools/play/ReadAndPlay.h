/*
 * Plays a session while a thread of its own reads it.
 */
#pragma once

#include "play/PlayResult.h"
#include "play/Player.h"
#include "session/InputFile.h"

namespace desk {

// Plays to the end of the input, or until player.stop() is called. `queue` is the player's. What
// ends it early is told by the result.
PlayResult readAndPlay(InputFile& input, BlockQueue& queue, Player& player);

}  // namespace desk

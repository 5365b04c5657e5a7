/*
 * Refuses outputs that would overwrite an input or each other.
 */
#pragma once

#include <string>
#include <vector>

namespace desk {

// A file of the command line. Its path is "-" where `descriptor` is meant.
struct NamedFile {
    std::string role;  // as messages name it: "--log", "the session"
    std::string path;
    int descriptor = -1;
};

/*
 * Throws std::runtime_error when an output is also an input or another output, whatever paths and
 * links they are named by; that would lose one of the two. Opens nothing. Outputs that are both
 * standard streams may be one, and so may terminals and the like.
 */
void refuseSharedFiles(const std::vector<NamedFile>& inputs, const std::vector<NamedFile>& outputs);

}  // namespace desk

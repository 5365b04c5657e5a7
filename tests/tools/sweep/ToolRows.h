/*
 * The tools that the sweep runs, each as a row.
 */
#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace desk {

struct ToolRow {
    std::string name;
    std::string program;
    std::vector<std::string> arguments = {};          // paths are relative to the folder
    std::map<std::string, std::string> inputs = {};   // path and content
    std::string standardInput = {};                   // a path in the folder, or empty
    std::map<std::string, std::string> outputs = {};  // option and the path that it is given here
    std::vector<std::string> madeFiles = {};          // that no option names, whole or not at all
    int status = 0;                                   // of the exit, without faults
    int failure = 2;                                  // when an output cannot be written
    std::vector<int> troubles = {1, 2};               // when it could not do all that it is to do
    std::string speaker = {};  // that begins its messages, by default the program's name
    std::vector<std::string> libraries = {};  // to be preloaded
    std::string environment = {};             // NAME=VALUE
    std::string faulted = {};  // the file name of the program that has the faults, or of all
    int oneByOne = 1000;       // so many calls fail in turn, then every doubling
    bool isUnwatched = false;  // a signal ends it at once, after what it has printed
};

const std::vector<ToolRow>& toolRows();

// For messages of GoogleTest.
void PrintTo(const ToolRow& row, std::ostream* stream);

}  // namespace desk

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
};

const std::vector<ToolRow>& toolRows();

// For messages of GoogleTest.
void PrintTo(const ToolRow& row, std::ostream* stream);

}  // namespace desk

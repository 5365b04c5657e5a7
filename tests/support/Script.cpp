#include "support/Script.h"

#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

#include "support/LibraryTest.h"

namespace fake {
namespace {

bool isCommand(const std::string& text) {
    return text.starts_with("> ") || text.starts_with("T> ") || text.starts_with("! ");
}

void carryOut(const std::string& text, uint32_t& shown) {
    std::istringstream input(text);
    std::string kind;
    input >> kind;
    const Words words(std::istream_iterator<std::string>(input), {});
    if (kind == "!") {
        changeWorld(words, shown);
    } else if (kind == ">") {
        callOperation(words);
    } else {
        std::thread(callOperation, words).join();
    }
}

}  // namespace

std::vector<Script> readScripts(const std::string& file) {
    std::ifstream input(file);
    std::vector<Script> scripts;
    std::string text;
    for (int number = 1; std::getline(input, text); ++number) {
        if (text.starts_with("== ")) {
            scripts.push_back({text.substr(3), {}});
        } else if (!text.empty() && text[0] != '#') {
            scripts.at(scripts.size() - 1).lines.push_back({file, number, text});
        }
    }
    return scripts;
}

void play(const Script& script) {
    uint32_t shown = kUsual;
    std::string expectation;
    for (auto line = script.lines.begin(); line != script.lines.end(); ++line) {
        const ::testing::ScopedTrace trace(line->file.c_str(), line->number, line->text);
        if (isCommand(line->text)) {
            carryOut(line->text, shown);
            continue;
        }
        expectation += line->text == "nothing" ? "" : line->text + '\n';
        if (std::next(line) == script.lines.end() || isCommand(std::next(line)->text)) {
            EXPECT_EQ(expected(expectation), recorder().take(shown));
            expectation.clear();
        }
    }
}

}  // namespace fake

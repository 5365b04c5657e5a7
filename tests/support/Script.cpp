#include "support/Script.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "support/LibraryTest.h"

namespace fake {
namespace {

bool isName(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char letter) {
        return std::isalnum(letter) != 0 || letter == '_';
    });
}

// Calls and changes; all other lines are expectations.
bool isCommand(const std::string& text) {
    return text.starts_with('>') || text.starts_with("T>") || text.starts_with('!') ||
           text.starts_with("==");
}

void readFile(const std::filesystem::path& file, std::vector<Script>& scripts) {
    ScriptLine line{0, ""};
    const auto expect = [&](bool isTrue, const std::string& expected) {
        if (!isTrue) {
            throw Mistake(file.string() + ':' + std::to_string(line.number) + ": '" + line.text +
                          "', expected " + expected);
        }
    };
    expect(file.extension() == ".txt" && isName(file.stem()), "a file NAME.txt or README.md");
    std::ifstream input(file);
    const size_t before = scripts.size();
    for (++line.number; std::getline(input, line.text); ++line.number) {
        if (line.text.starts_with("== ")) {
            line.text.erase(0, 3);
            expect(isName(line.text), "a name of letters and digits");
            scripts.push_back({file, line, {}});
        } else if (!line.text.empty() && line.text[0] != '#') {
            expect(scripts.size() > before, "'== NAME' first");
            scripts.back().lines.push_back(line);
        }
    }
    expect(scripts.size() > before, "a scenario in the file");
}

// Carries out a call or a change. `call` is the last line with a call that nothing has checked yet.
void carryOutLine(const ScriptLine& line, const ScriptLine*& call) {
    std::istringstream input(line.text);
    const Words words(std::istream_iterator<std::string>(input), {});
    if (words[0] != "!") {
        call = &line;
    } else if (line.text == "! forget") {
        call = nullptr;
    } else if (call != nullptr && (line.text == "! up" || line.text == "! down")) {
        throw Mistake("this forgets unchecked calls, expected an expectation or '! forget' first");
    }
    carryOut(words);
}

}  // namespace

std::vector<Script> readScripts(const std::filesystem::path& folder) {
    const std::filesystem::directory_iterator entries(folder);
    const std::set<std::filesystem::path> files(begin(entries), std::filesystem::end(entries));
    std::vector<Script> scripts;
    for (const std::filesystem::path& file : files) {
        if (file.filename() != "README.md") {
            readFile(file, scripts);
        }
    }
    if (scripts.empty()) {
        throw Mistake(folder.string() + ": expected files with scenarios");
    }
    return scripts;
}

uint32_t& shownEvents() {
    static uint32_t shown = kUsual;
    return shown;
}

void play(const Script& script) {
    shownEvents() = kUsual;
    const ScriptLine* call = nullptr;
    bool isChecked = false;
    for (auto line = script.lines.begin(); line != script.lines.end();) {
        const ::testing::ScopedTrace trace(script.file.c_str(), line->number, line->text);
        std::string expectation;
        for (; line != script.lines.end() && !isCommand(line->text); ++line) {
            expectation += line->text + '\n';
        }
        if (!expectation.empty()) {
            EXPECT_EQ(expectation == "nothing\n" ? "" : expected(expectation),
                      recorder().take(shownEvents()));
            call = nullptr;
            isChecked = true;
            continue;
        }
        try {
            carryOutLine(*line, call);
        } catch (const Mistake& mistake) {
            ADD_FAILURE_AT(script.file.c_str(), line->number) << mistake.what();
            return;
        }
        ++line;
    }
    if (recorder().hook) {
        ADD_FAILURE_AT(script.file.c_str(), script.name.number)
                << "'" << script.name.text
                << "' waits for an event that never came, expected one that begins as the last "
                   "'! during' says";
    } else if (call != nullptr || !isChecked) {
        const ScriptLine& last = call != nullptr ? *call : script.name;
        ADD_FAILURE_AT(script.file.c_str(), last.number)
                << "nothing checks '" << last.text << "', expected the lines that follow from it";
    }
}

}  // namespace fake

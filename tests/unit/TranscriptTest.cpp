// The scenarios in tests/transcripts, each of which is a test of its own, and the page about them.
#include <gtest/gtest-spi.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iostream>

#include "support/LibraryTest.h"
#include "support/Script.h"

namespace fake {
namespace {

// A relative folder counts from where the program lies.
std::filesystem::path folder() {
    return std::filesystem::read_symlink("/proc/self/exe").replace_filename(VELK_TRANSCRIPTS);
}

class TranscriptTest : public LibraryTest {
  public:
    explicit TranscriptTest(Script script) : mScript(std::move(script)) {}

  private:
    void TestBody() override { play(mScript); }

    const Script mScript;
};

// Each change has a row of the page that begins with it: | `! missing own/customer` | ...
TEST(TranscriptPage, ListsEveryChange) {
    std::ifstream page(folder() / "README.md");
    std::vector<std::string> listed;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("| `! ")) {
            listed.push_back(line.substr(3, line.find('`', 3) - 3));
        }
    }
    std::vector<std::string> known = changeUsages();
    std::sort(listed.begin(), listed.end());
    std::sort(known.begin(), known.end());
    EXPECT_EQ(known, listed);
}

// Each is one failure of its scenario that names the line.
TEST_F(LibraryTest, MistakesInTranscriptsAreFailures) {
    const std::pair<const char*, const char*> mistakes[] = {
            {"> contrl", "unknown '> contrl', expected a call"},
            {"> ", "unknown '> ', expected a call"},
            {">control", "unknown '>control"},
            {"== X", "unknown '== X'"},
            {"> control percnt=40", "unknown word 'percnt=40'; it is written: > control [cat"},
            {"> control percent=4o", "percent is '4o', expected a whole number from -2147483648"},
            {"> control percent=", "percent is '', expected a whole number"},
            {"> control percent=1 percent=2", "a second 'percent'"},
            {"> control uclamp=1,-2", "uclamp is '-2', expected a whole number from 0 to"},
            {"> control limits=1,2,3,4,5", "limits is '1,2,3,4,5', expected at most 4 numbers"},
            {"> control critical=5", "critical is '5', expected TASK:N"},
            {"> control shared=0", "shared is '0', expected no value"},
            {"T> start 1 5 flag0=256", "flag0 is '256', expected a whole number from 0 to 255"},
            {"> end 1", "TASK is missing; it is written: > end KEY TASK"},
            {"> end 1 5 6", "unknown word '6'"},
            {"> fps 3o", "FPS is '3o', expected a number"},
            {"! show", "usual/node/log/trace/result/platform/query/property/tags/lock... is missi"},
            {"! missing nobody", "word is 'nobody', expected own/customer"},
            {"> vsync", "nothing checks '> vsync', expected the lines that follow from it"},
            {"! forget", "nothing checks 'X'"},
            {"! during never up", "'X' waits for an event that never came"}};
    for (const auto& [line, problem] : mistakes) {
        ::testing::TestPartResultArray failures;
        {
            const ::testing::ScopedFakeTestPartResultReporter reporter(
                    ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &failures);
            play({"x.txt", {1, "X"}, {{2, line}}});
        }
        recorder().reset();
        ASSERT_EQ(1, failures.size()) << line;
        const ::testing::TestPartResult& failure = failures.GetTestPartResult(0);
        EXPECT_STREQ("x.txt", failure.file_name());
        EXPECT_EQ(std::strstr(problem, "'X'") == nullptr ? 2 : 1, failure.line_number());
        EXPECT_NE(nullptr, std::strstr(failure.message(), problem)) << failure.message();
    }
}

}  // namespace
}  // namespace fake

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    try {
        for (const fake::Script& script : fake::readScripts(fake::folder())) {
            ::testing::RegisterTest(
                    script.file.stem().c_str(), script.name.text.c_str(), nullptr, nullptr,
                    script.file.c_str(), script.name.number,
                    [=]() -> ::testing::Test* { return new fake::TranscriptTest(script); });
        }
    } catch (const std::exception& mistake) {
        std::cerr << mistake.what() << '\n';
        return 2;
    }
    const int result = RUN_ALL_TESTS();
    if (::testing::UnitTest::GetInstance()->test_to_run_count() == 0) {
        std::cerr << "no test has such a name\n";
        return 2;
    }
    return result;
}

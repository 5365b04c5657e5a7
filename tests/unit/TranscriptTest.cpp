// The scenarios in tests/transcripts, each of which is a test of its own.
#include <filesystem>

#include "support/LibraryTest.h"
#include "support/Script.h"

namespace fake {
namespace {

class TranscriptTest : public LibraryTest {
  public:
    explicit TranscriptTest(Script script) : mScript(std::move(script)) {}

  private:
    void TestBody() override { play(mScript); }

    const Script mScript;
};

}  // namespace
}  // namespace fake

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    // A relative folder counts from where the program lies.
    const auto folder =
            std::filesystem::read_symlink("/proc/self/exe").replace_filename(VELK_TRANSCRIPTS);
    for (const char* file : {"controls", "critical", "frames", "lifecycle", "locks", "tasks"}) {
        const std::string path = folder / (std::string(file) + ".txt");
        for (const fake::Script& script : fake::readScripts(path)) {
            ::testing::RegisterTest(file, script.name.c_str(), nullptr, nullptr, path.c_str(),
                                    script.lines.front().number, [=]() -> ::testing::Test* {
                                        return new fake::TranscriptTest(script);
                                    });
        }
    }
    return RUN_ALL_TESTS();
}

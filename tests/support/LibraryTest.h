/*
 * The fixture of every test of the library. It resets all fakes before a test, and checks after it
 * that nothing is left over.
 *
 * Tests are independent of order and of process. The debug-log switch is read once in a process, so
 * no test may count on changing it: the whole suite runs once with the environment variable
 * VELK_TEST_DEBUGLOG set and once without, and expected transcripts mark with a star what only
 * appears while it is on.
 */
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "support/LibraryCalls.h"
#include "support/Node.h"
#include "support/Platform.h"
#include "support/Recorder.h"

namespace fake {

class LibraryTest : public ::testing::Test {
  protected:
    LibraryTest() {
        recorder().reset();
        node().reset();
        platform().reset();
    }

    void TearDown() override {
        recorder().hook = nullptr;
        EXPECT_EQ(mOpenSections, platform().openSections);
        bringDown();
        EXPECT_EQ(std::vector<std::string>(), recorder().violations());
        EXPECT_EQ(std::vector<int>(), node().openDescriptors());
        EXPECT_EQ(0, platform().livingConvertors);
    }

    // Whatever a test has done, the library is down afterwards, and has forgotten that the node was
    // absent once.
    static void bringDown() {
        platform().reset();
        for (node().failNothing(); VELKMachine::uninit() == 0;) {
        }
        VELKMachine::init(kParams);
        VELKMachine::uninit();
    }

    int mOpenSections = 0;  // that a test has left open on purpose

    // Brings the library up, silently.
    static void up(const VELKInitParams& params = kParams) {
        ASSERT_EQ(0, init(params));
        takeTranscript();
    }

    static std::string takeTranscript(uint32_t shown = kUsual) { return recorder().take(shown); }

    // Expects the transcript so far to be this, and forgets it.
    static void expectTranscript(std::string_view text, uint32_t shown = kUsual,
                                 const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
        const ::testing::ScopedTrace trace(file, line, "");
        EXPECT_EQ(expected(text), takeTranscript(shown));
    }

    // The lines of the transcript so far that begin like this; all are forgotten.
    static std::string takeLines(std::string_view beginning, uint32_t shown = kUsual) {
        std::istringstream transcript(takeTranscript(shown));
        std::string lines;
        for (std::string line; std::getline(transcript, line);) {
            lines += line.starts_with(beginning) ? line + '\n' : "";
        }
        return lines;
    }

    // Has `action` run once, inside the first event whose text begins like this.
    static void during(std::string beginning, std::function<void()> action) {
        recorder().hook = [beginning = std::move(beginning),
                           action = std::move(action)](const Event& event) {
            if (event.text.starts_with(beginning)) {
                recorder().hook = nullptr;
                action();
            }
        };
    }
};

}  // namespace fake

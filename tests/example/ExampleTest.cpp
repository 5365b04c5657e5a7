// The example that the README shows, built as it stands there, sends its commands.
#include "example/Readme.inc"
#include "support/LibraryTest.h"

namespace fake {
namespace {

TEST_F(LibraryTest, ExampleSendsItsCommands) {
    platform().anchors[kScenario][1] = {4000, 50};
    std::vector<unsigned> sent;
    node().observer = [&](unsigned what, const void* /*record*/, size_t /*size*/, int /*result*/) {
        sent.push_back(what);
    };
    call([] {
        capture(kParams, keyOf(1), 5, 77);
        return 0;
    });
    node().observer = nullptr;
    EXPECT_EQ((std::vector<unsigned>{kOpenNode, 27, 35, 35, 28, 29, 38, 38, 30, 35, 32}), sent);
}

}  // namespace
}  // namespace fake

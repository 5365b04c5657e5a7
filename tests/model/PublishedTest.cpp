// The guard of the published instance, in every order that its operations can take.
#include "foundation/Published.h"

#include <gtest/gtest.h>

#include <memory>

#include "model/Explorer.h"

namespace model {
namespace {

constexpr size_t kThreads = 3;

// Something that exists from one change to the next, and is used in between.
class Object {
  public:
    Object() : mLocation(Explorer::running->addLocation(0)), mReaders(addReaders()) {}
    void createOrDestroy() const { Explorer::running->writePlain(mLocation, mReaders); }
    void use() const { Explorer::running->readPlain(mLocation, mReaders); }

  private:
    static size_t addReaders() {
        const size_t first = Explorer::running->addLocation(0);
        for (size_t i = 1; i < kThreads; ++i) {
            Explorer::running->addLocation(0);
        }
        return first;
    }
    const size_t mLocation, mReaders;
};

struct Shared {
    Object object;
    Published<Object, Atomic> published;

    void call() {
        const Published<Object, Atomic>::Use use(published);
        if (use.object() != nullptr) {
            use.object()->use();
        }
    }
    void liveOnce() {
        object.createOrDestroy();
        published.publish(&object);
        published.hide();
        published.waitForCallsInside();
        object.createOrDestroy();
    }
};

TEST(PublishedTest, NoCallUsesWhatIsNotThere) {
    const struct {
        int calls[2], lives;
    } cases[] = {{{1, 0}, 1}, {{2, 0}, 1}, {{1, 0}, 2}, {{2, 0}, 2}, {{1, 1}, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.calls[0]) + std::to_string(c.calls[1]) +
                     std::to_string(c.lives));
        Explorer explorer;
        EXPECT_EQ("", explorer.explore([&c] {
            const auto shared = std::make_shared<Shared>();
            std::vector<std::function<void()>> threads = {[=] {
                for (int life = 0; life < c.lives; ++life) {
                    Explorer::running->forgetReads(2 + life);
                    shared->liveOnce();
                }
            }};
            for (const int calls : c.calls) {
                threads.emplace_back([=] {
                    for (int call = 0; call < calls; ++call) {
                        Explorer::running->forgetReads(2 + call);
                        shared->call();
                    }
                });
            }
            return threads;
        }));
    }
}

}  // namespace
}  // namespace model

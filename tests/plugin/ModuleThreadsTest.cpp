// What the host's list of modules tells whom, and when.

#include "host/modules/ModuleThreads.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

using Zq::ModuleReason;

std::vector<ModuleReason> heard;
bool refuse = false;

bool notification(ModuleReason reason) {
    heard.push_back(reason);
    return !refuse;
}

bool staysLoaded(ModuleReason reason) {
    if (reason == ModuleReason::processDetach) {
        std::fputs("it left\n", stderr);
    }
    return true;
}
bool isLoaded = false;

// As a module that nobody unloads: it hears of its end when the program is over.
[[gnu::destructor]] void programIsOver() {
    if (isLoaded) {
        Zq::detachModule(&staysLoaded);
    }
}

class ModuleThreads : public testing::Test {
protected:
    ModuleThreads() {
        heard.clear();
        refuse = false;
    }
};

TEST_F(ModuleThreads, AModuleHearsOfItsLifeAndOfTheThreadsBetween) {
    Zq::attachModule(&notification);
    { Zq::ThreadAttachment const thread; }
    Zq::detachModule(&notification);
    EXPECT_EQ(heard, (std::vector{ModuleReason::processAttach, ModuleReason::threadAttach,
                                  ModuleReason::threadDetach, ModuleReason::processDetach}));
    EXPECT_FALSE(Zq::takeRefusal());
}

TEST_F(ModuleThreads, AModuleThatRefusesHearsNoMoreAndTheLoaderIsToldOnce) {
    refuse = true;
    Zq::attachModule(&notification);
    { Zq::ThreadAttachment const thread; }
    Zq::detachModule(&notification);
    EXPECT_EQ(heard, std::vector{ModuleReason::processAttach});
    EXPECT_TRUE(Zq::takeRefusal());
    EXPECT_FALSE(Zq::takeRefusal());
}

TEST_F(ModuleThreads, AThreadThatIsOlderThanTheModuleIsHeardOfOnlyWhenItEnds) {
    {
        Zq::ThreadAttachment const thread;
        Zq::attachModule(&notification);
    }
    Zq::detachModule(&notification);
    EXPECT_EQ(heard, (std::vector{ModuleReason::processAttach, ModuleReason::threadDetach,
                                  ModuleReason::processDetach}));
}

TEST(ModuleThreadsDeathTest, AModuleThatIsStillLoadedAtTheEndOfTheProgramHearsOfIt) {
    EXPECT_EXIT(
        {
            Zq::attachModule(&staysLoaded);
            isLoaded = true;
            std::exit(0);
        },
        testing::ExitedWithCode(0), "it left");
}

} // namespace

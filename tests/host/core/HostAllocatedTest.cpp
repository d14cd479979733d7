#include "host/object/HostAllocated.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "host/object/Ptr.h"
#include "tests/host/core/LimitedMemory.h"

namespace {

int constructed = 0;
class Counted : public virtual iObject {
public:
    Counted() { ++constructed; }
};
class Throwing : public virtual iObject {
public:
    Throwing() { throw std::runtime_error("no"); }
};

TEST(HostAllocated, WithoutMemoryANewExpressionIsNullAndConstructsNothing) {
    LimitedMemory memory;
    constructed = 0;
    memory.allow(0);
    Counted* const object = new Counted;
    EXPECT_EQ(object, nullptr);
    EXPECT_FALSE(Zq::makeShared<Counted>());
    EXPECT_EQ(constructed, 0);
}

TEST(HostAllocated, ObjectsComeFromTheHostAndGoBack) {
    LimitedMemory memory;
    Counted* const object = new Counted;
    EXPECT_EQ(memory.live(), 1);
    delete object;
    EXPECT_EQ(memory.live(), 0);
}

TEST(HostAllocated, AThrowingConstructorGivesTheMemoryBack) {
    LimitedMemory memory;
    EXPECT_THROW((void)new Throwing, std::runtime_error);
    EXPECT_EQ(memory.allocations(), 1);
    EXPECT_EQ(memory.live(), 0);
}

} // namespace

#include "host/object/Ptr.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

#include "tests/host/core/LimitedMemory.h"

namespace {

class Base : public virtual iObject {
public:
    explicit Base(int* ended) : ended_(ended) {}
    ~Base() override { ++*ended_; }
    int number = 7;

private:
    int* ended_;
};

class Side : public virtual iObject {
public:
    int sideNumber = 8;
};

class Derived final : public Base, public Side {
public:
    using Base::Base;
};

std::uint32_t owners(Zq::InternalRefCount& object) {
    return object.refCount().owners.load();
}

TEST(Ptr, NullIsNormal) {
    Zq::Ptr<Base> const none;
    Zq::Ptr<Base> const null(nullptr);
    Zq::Ptr<Base> const nothing(static_cast<Base*>(nullptr));
    Zq::Ptr<Base> copy(none);
    copy = null;
    copy.reset();
    EXPECT_FALSE(none);
    EXPECT_TRUE(none == nullptr);
    EXPECT_TRUE(none == nothing);
    EXPECT_EQ(copy.get(), nullptr);
    EXPECT_FALSE(Zq::dynamicCast<Derived>(none));
}

TEST(Ptr, TheLastOwnerEndsTheObject) {
    int ended = 0;
    {
        Zq::Ptr<Base> const first = Zq::makeShared<Base>(&ended);
        EXPECT_EQ(owners(*first), 1U);
        {
            Zq::Ptr<Base> const second = first;
            EXPECT_EQ(owners(*first), 2U);
            EXPECT_TRUE(first == second);
        }
        EXPECT_EQ(owners(*first), 1U);
        EXPECT_EQ(ended, 0);
        EXPECT_EQ(first->number, 7);
    }
    EXPECT_EQ(ended, 1);
}

TEST(Ptr, TwoPtrsFromOneRawPointerShareItsCount) {
    int ended = 0;
    {
        auto* const object = new Base(&ended);
        Zq::Ptr<Base> const first(object);
        Zq::Ptr<Base> const second(object);
        EXPECT_EQ(owners(*object), 2U);
    }
    EXPECT_EQ(ended, 1);
}

TEST(Ptr, MovingHandsTheOwnershipOver) {
    int ended = 0;
    Zq::Ptr<Base> first = Zq::makeShared<Base>(&ended);
    Zq::Ptr<Base> second(std::move(first));
    EXPECT_FALSE(first); // NOLINT(bugprone-use-after-move): that state is what is tested
    EXPECT_EQ(owners(*second), 1U);
    first = std::move(second);
    EXPECT_TRUE(first);
    EXPECT_EQ(ended, 0);
    first.reset();
    EXPECT_EQ(ended, 1);
}

TEST(Ptr, AssigningItselfKeepsTheObject) {
    int ended = 0;
    Zq::Ptr<Base> pointer = Zq::makeShared<Base>(&ended);
    Zq::Ptr<Base>& same = pointer;
    pointer = same;
    EXPECT_EQ(owners(*pointer), 1U);
    pointer = std::move(same);
    ASSERT_TRUE(pointer);
    EXPECT_EQ(owners(*pointer), 1U);
    EXPECT_EQ(ended, 0);
}

TEST(Ptr, AssigningEndsWhatWasHeldBefore) {
    int first = 0;
    int second = 0;
    Zq::Ptr<Base> pointer = Zq::makeShared<Base>(&first);
    pointer = Zq::makeShared<Base>(&second);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 0);
    pointer = nullptr;
    EXPECT_EQ(second, 1);
}

TEST(Ptr, ADerivedObjectIsItsBases) {
    int ended = 0;
    {
        Zq::Ptr<Derived> derived = Zq::makeShared<Derived>(&ended);
        Zq::Ptr<Base> const base = derived;
        Zq::Ptr<Side> const side = derived;
        Zq::Ptr<iObject> const object = side;
        Zq::Ptr<Base const> const constant = base;
        EXPECT_EQ(owners(*derived), 5U);
        EXPECT_EQ(side->sideNumber, 8);
        EXPECT_TRUE(base == derived);
        Zq::Ptr<Side> const taken = std::move(derived);
        EXPECT_FALSE(derived); // NOLINT(bugprone-use-after-move): that state is what is tested
        EXPECT_EQ(owners(*taken), 5U);
    }
    EXPECT_EQ(ended, 1);
}

TEST(Ptr, TheBaseAloneEndsTheWholeObject) {
    LimitedMemory memory;
    int ended = 0;
    Zq::Ptr<Side> side = Zq::Ptr<Side>(Zq::makeShared<Derived>(&ended));
    EXPECT_EQ(memory.live(), 1);
    side.reset();
    EXPECT_EQ(ended, 1);
    EXPECT_EQ(memory.live(), 0);
}

TEST(Ptr, APointerToConstCountsAsWell) {
    int ended = 0;
    {
        Zq::Ptr<Base const> const pointer(new Base(&ended));
        EXPECT_EQ(pointer->number, 7);
    }
    EXPECT_EQ(ended, 1);
}

TEST(Ptr, APointerToAPartKeepsTheWholeAlive) {
    int ended = 0;
    Zq::Ptr<Side> part;
    {
        Zq::Ptr<Derived> const whole = Zq::makeShared<Derived>(&ended);
        part = Zq::Ptr<Side>(whole, whole.get());
        EXPECT_EQ(owners(*whole), 2U);
    }
    EXPECT_EQ(ended, 0);
    EXPECT_EQ(part->sideNumber, 8);
    part.reset();
    EXPECT_EQ(ended, 1);
}

TEST(Ptr, APointerToAPartNeedNotPointAtACountedObject) {
    int ended = 0;
    Zq::Ptr<int> number;
    {
        Zq::Ptr<Base> const whole = Zq::makeShared<Base>(&ended);
        number = Zq::Ptr<int>(whole, &whole->number);
    }
    Zq::Ptr<int> const copy = number;
    number.reset();
    EXPECT_EQ(*copy, 7);
    EXPECT_EQ(ended, 0);
}

TEST(Ptr, ACastFindsTheTypeOrGivesNull) {
    int ended = 0;
    Zq::Ptr<Base> const derived = Zq::makeShared<Derived>(&ended);
    Zq::Ptr<Base> const plain = Zq::makeShared<Base>(&ended);
    Zq::Ptr<Side> const side = Zq::dynamicCast<Side>(derived);
    ASSERT_TRUE(side);
    EXPECT_EQ(owners(*derived), 2U);
    EXPECT_FALSE(Zq::dynamicCast<Side>(plain));
    EXPECT_EQ(owners(*plain), 1U);
}

int put = 0;
struct CountingDestroy {
    static void destroy(Zq::InternalRefCount* counted) noexcept {
        ++put;
        delete counted;
    }
};
struct Neighbour {
    Base* counted = nullptr;
};
struct CountOfNeighbour {
    [[nodiscard]] static Zq::InternalRefCount* counter(Neighbour* object) noexcept { return object->counted; }
};

TEST(Ptr, TraitsSayHowAnObjectEndsAndWhereItsCountIs) {
    int ended = 0;
    put = 0;
    Neighbour neighbour{new Base(&ended)};
    {
        Zq::Ptr<Neighbour, CountingDestroy, CountOfNeighbour> const first(&neighbour);
        Zq::Ptr<Neighbour, CountingDestroy, CountOfNeighbour> const second = first;
        EXPECT_EQ(owners(*neighbour.counted), 2U);
        EXPECT_EQ(second.get(), &neighbour);
    }
    EXPECT_EQ(put, 1);
    EXPECT_EQ(ended, 1);
}

TEST(Ptr, ACopiedObjectHasNoOwnersYet) {
    int ended = 0;
    Zq::Ptr<Base> const first = Zq::makeShared<Base>(&ended);
    {
        Zq::Ptr<Base> const second = Zq::makeShared<Base>(*first);
        EXPECT_EQ(owners(*second), 1U);
        *second = *first;
        EXPECT_EQ(owners(*second), 1U);
        EXPECT_EQ(owners(*first), 1U);
    }
    EXPECT_EQ(ended, 1);
}

TEST(Ptr, CountsGoThroughTheHost) {
    struct Counts final : iRefCounts {
        void add(Zq::RefCount& handle) noexcept override {
            ++added;
            handle.owners.fetch_add(1);
        }
        std::uint32_t release(Zq::RefCount& handle) noexcept override {
            ++released;
            return handle.owners.fetch_sub(1) - 1;
        }
        int added = 0;
        int released = 0;
    } counts;
    HostServices services;
    services.refCounts = &counts;
    InstalledHost const host(services);
    int ended = 0;
    {
        Zq::Ptr<Base> const first = Zq::makeShared<Base>(&ended);
        Zq::Ptr<Base> const second = first;
    }
    EXPECT_EQ(counts.added, 2);
    EXPECT_EQ(counts.released, 2);
    EXPECT_EQ(ended, 1);
}

} // namespace

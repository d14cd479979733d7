// What every preference store owes, run over the real one and over the fake one.
#include <gtest/gtest.h>

#include "host/engine/preferences/SqlitePreferences.h"
#include "tests/fake_host/FakePreferences.h"
#include "tests/support/TemporaryFolder.h"

namespace {

struct Sqlite {
    test::TemporaryFolder folder;
    engine::SqlitePreferences store{folder.path() / "preferences.sqlite"};
};

struct Fake {
    fake::Preferences store;
};

template <class Kind>
class PreferencesContract : public testing::Test {
protected:
    Kind kind_;
    iPreferenceStore& store_ = kind_.store;
};

using Kinds = testing::Types<Sqlite, Fake>;
TYPED_TEST_SUITE(PreferencesContract, Kinds);

TYPED_TEST(PreferencesContract, AKeyThatWasNeverWrittenHasNoValueOfAnyType) {
    EXPECT_FALSE(this->store_.readBool("T7 HQ Proxies").has_value());
    EXPECT_FALSE(this->store_.readInt("T7 Price").has_value());
    EXPECT_FALSE(this->store_.readText("T7 User").has_value());
}

TYPED_TEST(PreferencesContract, EachTypeIsReadBackAsItWasWritten) {
    this->store_.write("flag", true);
    this->store_.write("other flag", false);
    this->store_.write("least", std::int32_t{-2147483647 - 1});
    this->store_.write("most", std::int32_t{2147483647});
    this->store_.write("text", WideString(L"J\u00f6rg \xd83c\xdfac"));
    EXPECT_EQ(this->store_.readBool("flag"), true);
    EXPECT_EQ(this->store_.readBool("other flag"), false);
    EXPECT_EQ(this->store_.readInt("least"), -2147483647 - 1);
    EXPECT_EQ(this->store_.readInt("most"), 2147483647);
    EXPECT_EQ(this->store_.readText("text"), WideString(L"J\u00f6rg \xd83c\xdfac"));
}

TYPED_TEST(PreferencesContract, AnEmptyTextIsAValueAndNotAnAbsence) {
    this->store_.write("T7 User", WideString());
    ASSERT_TRUE(this->store_.readText("T7 User").has_value());
    EXPECT_TRUE(this->store_.readText("T7 User")->isEmpty());
}

TYPED_TEST(PreferencesContract, AValueIsNotFoundUnderAnotherType) {
    this->store_.write("T7 Price", std::int32_t{1});
    EXPECT_FALSE(this->store_.readBool("T7 Price").has_value());
    EXPECT_FALSE(this->store_.readText("T7 Price").has_value());
}

TYPED_TEST(PreferencesContract, TheLastWriteCountsAlsoWhenItChangesTheType) {
    this->store_.write("key", std::int32_t{5});
    this->store_.write("key", std::int32_t{10});
    EXPECT_EQ(this->store_.readInt("key"), 10);
    this->store_.write("key", WideString(L"ten"));
    EXPECT_FALSE(this->store_.readInt("key").has_value());
    EXPECT_EQ(this->store_.readText("key"), WideString(L"ten"));
}

TYPED_TEST(PreferencesContract, KeysAreTakenAsTheyStand) {
    this->store_.write("key", std::int32_t{1});
    this->store_.write("KEY", std::int32_t{2});
    this->store_.write("'; DROP TABLE preference; --", std::int32_t{3});
    this->store_.write("", std::int32_t{4});
    EXPECT_EQ(this->store_.readInt("key"), 1);
    EXPECT_EQ(this->store_.readInt("KEY"), 2);
    EXPECT_EQ(this->store_.readInt("'; DROP TABLE preference; --"), 3);
    EXPECT_EQ(this->store_.readInt(""), 4);
}

TYPED_TEST(PreferencesContract, TheRevisionChangesWithAWriteAndNotWithARead) {
    std::uint64_t const before = this->store_.revision();
    (void)this->store_.readInt("T7 Price");
    EXPECT_EQ(this->store_.revision(), before);
    this->store_.write("T7 Price", std::int32_t{5});
    EXPECT_NE(this->store_.revision(), before);
}

} // namespace

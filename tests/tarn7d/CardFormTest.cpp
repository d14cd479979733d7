#include "apps/tarn7d/CardForm.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace tarn7d;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::int64_t july2026 = 1'784'000'000; // 14 July 2026

TEST(CardForm, TheDemonstrationCardsAreGood) {
    EXPECT_THAT(checkCard({"4242 4242 4242 4242", "07/26", "123"}, july2026), IsEmpty());
    EXPECT_THAT(checkCard({"4242424242424242", "1/2030", "1234"}, july2026), IsEmpty());
    EXPECT_THAT(checkCard({"4000-0000-0000-0002", "12 / 30", "000"}, july2026), IsEmpty());
    EXPECT_FALSE(isDeclined({"4242 4242 4242 4242", "", ""}));
    EXPECT_TRUE(isDeclined({"4000000000000002", "", ""}));
}

TEST(CardForm, EachFieldSaysWhatIsWrongWithIt) {
    struct {
        CardForm form;
        CardField field;
        char const* text;
    } const cases[] = {
        {{"", "07/26", "123"}, CardField::number, "Enter the number"},
        {{"4242", "07/26", "123"}, CardField::number, "12 to 19 digits"},
        {{"4242 4242 4242 424x", "07/26", "123"}, CardField::number, "12 to 19 digits"},
        {{std::string(5000, '4'), "07/26", "123"}, CardField::number, "12 to 19 digits"},
        {{"4242 4242 4242 4241", "07/26", "123"}, CardField::number, "check digit"},
        {{"5555 5555 5555 4444", "07/26", "123"}, CardField::number, "not a demonstration card"},
        {{"4242 4242 4242 4242", "06/26", "123"}, CardField::expiry, "expired"},
        {{"4242 4242 4242 4242", "12/1999", "123"}, CardField::expiry, "expired"},
        {{"4242 4242 4242 4242", "", "123"}, CardField::expiry, "month and year"},
        {{"4242 4242 4242 4242", "13/30", "123"}, CardField::expiry, "month and year"},
        {{"4242 4242 4242 4242", "00/30", "123"}, CardField::expiry, "month and year"},
        {{"4242 4242 4242 4242", "1/123456789012345678901", "123"}, CardField::expiry, "month and year"},
        {{"4242 4242 4242 4242", "0730", "123"}, CardField::expiry, "month and year"},
        {{"4242 4242 4242 4242", "07/26", ""}, CardField::code, "three or four"},
        {{"4242 4242 4242 4242", "07/26", "12a"}, CardField::code, "three or four"},
        {{"4242 4242 4242 4242", "07/26", "12345"}, CardField::code, "three or four"},
    };
    for (auto const& wrong : cases) {
        auto const problems = checkCard(wrong.form, july2026);
        ASSERT_EQ(problems.size(), 1U) << wrong.text;
        EXPECT_EQ(problems[0].field, wrong.field);
        EXPECT_THAT(problems[0].text, HasSubstr(wrong.text));
    }
    EXPECT_EQ(checkCard({}, july2026).size(), 3U);
}

} // namespace

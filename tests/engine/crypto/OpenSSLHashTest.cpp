#include "host/engine/crypto/OpenSSLHash.h"

#include <string>

#include <gtest/gtest.h>

namespace {

TEST(OpenSSLHash, ComputesSha256AsLowerCaseDigits) {
    Zq::Ptr<iHash> const hash = engine::OpenSSLSecurity().getHash();
    ASSERT_TRUE(hash);
    EXPECT_EQ(hash->computeHash("abc", 3),
              L"ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(hash->computeHash(nullptr, 0),
              L"e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    std::string const million(1'000'000, 'a');
    EXPECT_EQ(hash->computeHash(million.data(), million.size()),
              L"cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(OpenSSLHash, RefusesBytesThatAreNotThere) {
    EXPECT_TRUE(engine::OpenSSLHash().computeHash(nullptr, 1).isEmpty());
}

// Test cases 2 and 6 of RFC 4231.
TEST(OpenSSLHash, ComputesHmacSha256ForSelectorZero) {
    engine::OpenSSLHash hash;
    EXPECT_EQ(hash.computeHmac(0, "Jefe", "what do ya want for nothing?"),
              "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843");
    EXPECT_EQ(hash.computeHmac(0, NarrowString(131, '\xaa'),
                               "Test Using Larger Than Block-Size Key - Hash Key First"),
              "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54");
    EXPECT_EQ(hash.computeHmac(0, "", ""),
              "b613679a0814d9ec772f95d778c35fc5ff1697c493715653c6c712144292c5ad");
}

TEST(OpenSSLHash, KnowsNoOtherSelector) {
    EXPECT_TRUE(engine::OpenSSLHash().computeHmac(1, "key", "text").isEmpty());
    EXPECT_TRUE(engine::OpenSSLHash().computeHmac(-1, "key", "text").isEmpty());
}

} // namespace

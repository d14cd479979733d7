// The signature of a request by other means: the hash function itself, over what the service signs.

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include "tests/framequarry/FrameQuarryFixture.h"

namespace framequarry_tests {
namespace {

std::string hmacOf(std::string_view key, std::string_view message) {
    static constexpr char digits[] = "0123456789abcdef";
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    EXPECT_NE(HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()),
                   reinterpret_cast<unsigned char const*>(message.data()), message.size(), digest, &size),
              nullptr);
    std::string text;
    for (unsigned int i = 0; i < size; ++i) {
        text += {digits[digest[i] >> 4], digits[digest[i] & 15]};
    }
    return text;
}

class Signature : public FrameQuarryTest {
protected:
    void SetUp() override { connect(); }

    // The signature of a search, which ends its request.
    std::string signatureOf(wchar_t const* words, std::uint16_t page = 1, std::uint16_t pageSize = 25) {
        SearchQuery query;
        query.words = words;
        query.page = page;
        query.pageSize = pageSize;
        (void)resource.searchInternal(query);
        std::string const sent = host.network.lastRequest().path;
        std::size_t const at = sent.find("&HMAC=");
        EXPECT_NE(at, std::string::npos);
        return at == std::string::npos ? "(none)" : sent.substr(at + 6);
    }
};

TEST_F(Signature, CoversThePathUnderTheKeyAndTheTime) {
    for (std::uint32_t const now : {0U, 1'700'000'000U, 4'294'967'295U}) {
        host.clock.now = now;
        EXPECT_EQ(signatureOf(L"x"),
                  hmacOf(utf8(FrameQuarryPrivateKey) + std::to_string(now), "/api/v1/stock-items/search/"));
    }
}

TEST_F(Signature, IsTheSameForEverySearchOfASecond) {
    std::string const signature = signatureOf(L"sea");
    EXPECT_EQ(signatureOf(L"sea"), signature);
    EXPECT_EQ(signatureOf(L"rock & roll"), signature);
    EXPECT_EQ(signatureOf(L""), signature);
    EXPECT_EQ(signatureOf(L"sea", 7, 50), signature);
}

TEST_F(Signature, IsAnotherInTheNextSecond) {
    std::string const signature = signatureOf(L"sea");
    ++host.clock.now;
    EXPECT_NE(signatureOf(L"sea"), signature);
    --host.clock.now;
    EXPECT_EQ(signatureOf(L"sea"), signature);
}

// Writes down what it is asked, and answers with a text that no query could hold as it is.
class OtherHash final : public iHash {
public:
    WideString computeHash(void const*, std::size_t) override { return L"unused"; }
    NarrowString computeHmac(int selector, NarrowString const& key, NarrowString const& message) override {
        asked.push_back(std::to_string(selector) + " " + std::string(key.view()) + " " +
                        std::string(message.view()));
        return "A+/= \xc3\xbc";
    }
    std::vector<std::string> asked;
};

TEST_F(Signature, IsTheTextOfTheHostsHashWhateverItIs) {
    auto const hash = Zq::makeShared<OtherHash>();
    resource.digestService = hash;
    EXPECT_EQ(signatureOf(L"x"), "A%2B%2F%3D%20%C3%BC");
    EXPECT_EQ(hash->asked, std::vector<std::string>{"0 " + utf8(FrameQuarryPrivateKey) +
                                                    "1700000000 /api/v1/stock-items/search/"});
}

TEST_F(Signature, WithoutAHashIsEmptyAndTheServiceRefuses) {
    resource.digestService = {};
    EXPECT_EQ(signatureOf(L"x"), "");
}

TEST_F(Signature, TheKeysHaveTheirForm) {
    for (std::string const& key : {utf8(FrameQuarryPublicKey), utf8(FrameQuarryPrivateKey)}) {
        EXPECT_EQ(key.size(), 64U);
        EXPECT_EQ(key.find_first_not_of("0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ", 5),
                  std::string::npos);
    }
    EXPECT_NE(utf8(FrameQuarryPublicKey), utf8(FrameQuarryPrivateKey));
}

} // namespace
} // namespace framequarry_tests

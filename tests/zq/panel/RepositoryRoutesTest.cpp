// What a repository is, its account and its options, with a repository of the tests' own.

#include "tests/zq/panel/PanelFixture.h"

#include "apps/zq/MemoryBlock.h"
#include "apps/zq/Text.h"
#include "host/parameters/BoolParam.h"
#include "host/parameters/ChoiceParam.h"
#include "host/parameters/TextParam.h"
#include "host/web/HTMLUtils.h"
#include "repository/RepositoryDescription.h"

namespace {

using namespace panel_tests;
using namespace zq::panel;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class RepositoryRoutes : public testing::Test {
protected:
    Handlers& handlers() {
        if (!handlers_) {
            handlers_ = std::make_unique<Handlers>(home_.engine(), *repository_, [this] { return network_; });
        }
        return *handlers_;
    }

    EngineHome home_;
    Zq::Ptr<ShelfRepository> const repository_ = Zq::makeShared<ShelfRepository>();
    std::vector<engine::ServerStatistics> network_;

private:
    std::unique_ptr<Handlers> handlers_;
};

TEST_F(RepositoryRoutes, ARepositoryIsDescribedAsItPresentsItself) {
    repository_->description.summary = L"Clips & more";
    repository_->description.legalNotice = makeTermsNotice(L"Read the ", L"https://shelf.example/terms");
    repository_->description.webLink = L"https://shelf.example/";
    repository_->columns = {LogAttribute(LogAttribute::eName), LogAttribute(LogAttribute::ePrice),
                            LogAttribute(UIString(L"Length"), "len", DBFieldTypes::duration, 1, 104,
                                         static_cast<LogAttribute::eType>(1003))};
    auto const told = handlers().json("GET", "");
    EXPECT_EQ(text(told, "shortName"), "SH");
    EXPECT_EQ(text(item(told, "summary", 0), "text"), "Clips & more");
    EXPECT_EQ(text(item(told, "legalNotice", 1), "link"), "https://shelf.example/terms");
    EXPECT_TRUE(item(told, "legalNotice", 1)->getBool("quiet", false));
    EXPECT_TRUE(handlers().links().contains("https://shelf.example/terms"));
    EXPECT_TRUE(handlers().links().contains("https://shelf.example/"));
    EXPECT_EQ(text(told, "user"), "");
    EXPECT_TRUE(told->getBool("needsSignIn", false));
    EXPECT_FALSE(told->hasNum("credits"));
    EXPECT_NEAR(told->getFloat("thumbnailAspect", 0), 16.0 / 9, 0.001);
    auto const price = item(told, "columns", 1);
    EXPECT_EQ(price->getInt("type", 0), 59);
    EXPECT_EQ(text(price, "kind"), "number");
    EXPECT_TRUE(price->getBool("editable", false));
    auto const length = item(told, "columns", 2);
    EXPECT_EQ(text(length, "name"), "Length");
    EXPECT_EQ(text(length, "kind"), "duration");
    EXPECT_EQ(length->getInt("width", 0), 104);
    EXPECT_FALSE(length->getBool("editable", true));
}

TEST_F(RepositoryRoutes, AWebLinkThatLeadsElsewhereIsNone) {
    repository_->description.webLink = L"javascript:alert(1)";
    EXPECT_EQ(text(handlers().json("GET", ""), "webLink"), "");
}

TEST_F(RepositoryRoutes, AFormIsShownFieldByField) {
    repository_->form = L"{\"\":[{\"name\":\"who\",\"legend\":\"<b>Who\",\"type\":\"text\",\"hint\":\"h\","
                        L"\"value\":\"ada\"},{\"name\":\"secret\",\"type\":\"text\",\"obfuscated\":true,"
                        L"\"advance\":true}]}";
    JSON::Builder link;
    link.startChild(nullptr);
    link.startArray(nullptr);
    link.startChild(nullptr);
    link.add("type", L"label", true);
    link.add("legend", L"See " + HTMLUtils::makeLink(L"here", L"https://shelf.example/in"), true);
    link.endChild();
    link.endArray();
    link.endChild();
    repository_->linkForm = link.getOutput();
    auto const forms = handlers().json("GET", "/login");
    auto const who = item(forms, "form", 0);
    EXPECT_EQ(text(who, "name"), "who");
    EXPECT_EQ(text(who, "legend"), "<b>Who") << "the legend of a text field is plain";
    EXPECT_EQ(text(who, "type"), "text");
    EXPECT_EQ(text(who, "hint"), "h");
    EXPECT_EQ(text(who, "value"), "ada");
    EXPECT_FALSE(who->getBool("obfuscated", true));
    EXPECT_TRUE(item(forms, "form", 1)->getBool("obfuscated", false));
    EXPECT_TRUE(item(forms, "form", 1)->getBool("advance", false));
    auto const label = item(forms, "linkForm", 0);
    EXPECT_EQ(text(label, "type"), "label");
    EXPECT_EQ(text(item(label, "rich", 1), "link"), "https://shelf.example/in");
    EXPECT_TRUE(handlers().links().contains("https://shelf.example/in"));
}

TEST_F(RepositoryRoutes, WhatIsNoFormHasNoFields) {
    for (wchar_t const* form : {L"", L"{no json", L"[]", L"{\"a\":1}", L"{\"\":[1,\"x\"]}"}) {
        repository_->form = form;
        auto const forms = handlers().json("GET", "/login");
        EXPECT_EQ(child(forms, "form")->getNumChildren(), 0) << form;
    }
}

TEST_F(RepositoryRoutes, SigningInHandsOverEveryFieldByItsName) {
    configb typed;
    repository_->onLogin = [&](ShelfRepository& self, configb const& form) {
        typed = form;
        self.signedInUser = L"ada";
        return 0;
    };
    auto const result = handlers().json("POST", "/login", {}, {},
                                        R"({"values":{"who":"ada","secret":"op\u00e9n","third":""}})");
    EXPECT_EQ(result->getInt("code", -1), 0);
    EXPECT_EQ(text(result, "user"), "ada");
    EXPECT_EQ(text(result, "text"), "");
    NarrowString value;
    EXPECT_GE(typed.in("secret", value), 0);
    EXPECT_EQ(value.view(), "op\xc3\xa9n");
    EXPECT_GE(typed.in("who", value), 0);
    EXPECT_GE(typed.in("third", value), 0);
    handlers().flush();
    EXPECT_EQ(repository_->ownedReads, 1) << "the clips of a search are marked by that list";
    EXPECT_THAT(handlers().events(), HasSubstr("\"user\":\"ada\""));
}

struct Code {
    std::int32_t code;
    char const* words;
};
class SignInCodes : public RepositoryRoutes, public testing::WithParamInterface<Code> {};

TEST_P(SignInCodes, AreToldInWordsAndThePasswordNowhere) {
    repository_->onLogin = [](ShelfRepository&, configb const&) { return GetParam().code; };
    Response const response = handlers().call(
        "POST", "/login", {}, {}, R"({"values":{"username":"ada","password":"top-secret-word"}})");
    EXPECT_EQ(response.status, 200);
    auto const result = parsed(response.body);
    EXPECT_EQ(result->getInt("code", -1), GetParam().code);
    EXPECT_EQ(text(result, "text"), GetParam().words);
    EXPECT_EQ(text(result, "user"), "");
    handlers().flush();
    EXPECT_THAT(response.body, Not(HasSubstr("top-secret")));
    EXPECT_THAT(handlers().events(), Not(HasSubstr("top-secret")));
    EXPECT_THAT(handlers().desk().description(), Not(HasSubstr("top-secret")));
    EXPECT_THAT(home_.log(), Not(HasSubstr("top-secret")));
}
INSTANTIATE_TEST_SUITE_P(Of, SignInCodes,
                         testing::Values(Code{2, "the service knows no user of that name"},
                                         Code{7, "the password is wrong"},
                                         Code{17, "the service refused the sign-in"}));

TEST_F(RepositoryRoutes, ValuesThatAreNoTextsAreRefusedWithoutRepeatingThem) {
    for (char const* body :
         {"{}", R"({"values":"top-secret"})", R"({"values":{"password":1}})",
          R"({"values":{"password":true}})", R"({"values":{"password":{"a":"top-secret"}}})",
          R"({"values":{"":"top-secret"}})"}) {
        try {
            static_cast<void>(handlers().call("POST", "/login", {}, {}, body));
            FAIL() << body;
        } catch (ApiError const& error) {
            EXPECT_EQ(error.code(), ErrorCode::badRequest);
            EXPECT_THAT(error.what(), Not(HasSubstr("top-secret")));
        }
    }
}

TEST_F(RepositoryRoutes, CreditsAreKnownFromTheFirstAnswerThatTellsThem) {
    auto const hear = [](char const* answer) {
        static_cast<void>(JSON::parse(Zq::makeShared<zq::MemoryBlock>(answer)));
    };
    repository_->onLogin = [&](ShelfRepository& self, configb const&) {
        hear(R"({"commands":[{"e":false,"credits":120}]})");
        self.signedInUser = L"ada";
        return 0;
    };
    repository_->onOwned = [&](ShelfRepository&) {
        hear(R"({"commands":[{"e":false,"credits":110}]})");
        return LightweightVector<RemoteAsset>();
    };
    EXPECT_FALSE(handlers().json("GET", "")->hasNum("credits"));
    static_cast<void>(handlers().call("POST", "/login", {}, {}, R"({"values":{}})"));
    EXPECT_THAT(handlers().events(), HasSubstr(R"("user":"ada","needsSignIn":true,"credits":120)"));
    handlers().flush(); // the list of what is owned is read behind the sign-in
    EXPECT_EQ(handlers().json("GET", "")->getInt("credits", 0), 110);
    EXPECT_THAT(handlers().events(), HasSubstr(R"("credits":110)"));
    static_cast<void>(handlers().call("POST", "/logout"));
    EXPECT_FALSE(handlers().json("GET", "")->hasNum("credits"));
}

TEST_F(RepositoryRoutes, SigningOutSaysSoToAllPages) {
    repository_->signedInUser = L"ada";
    auto const result = handlers().json("POST", "/logout");
    EXPECT_EQ(result->getInt("code", -1), 0);
    EXPECT_EQ(text(result, "user"), "");
    EXPECT_EQ(text(handlers().json("GET", ""), "user"), "");
    EXPECT_EQ(handlers().countEvents("repository"), 1U);
    static_cast<void>(handlers().call("POST", "/logout"));
    EXPECT_EQ(handlers().countEvents("repository"), 1U);
}

class Options : public RepositoryRoutes {
protected:
    Options() {
        repository_->makeOptions = [this](ShelfRepository&) { return groups_; };
        SearchOptionGroup group;
        group.legend = L"Filter";
        group.params.push_back(Zq::makeShared<GenericParam::ChoiceParam>(
            L"Price", "price", L"what it costs", 1U,
            LightweightVector<Choice>{
                {UIString(L"any"), -1}, {UIString(L"low"), 4}, {UIString(L"high"), 9}}));
        group.params.push_back(Zq::makeShared<GenericParam::ChoiceParam>(
            L"Kind", "kind", L"", 0U, LightweightVector<Choice>{{UIString(L"a"), 0}, {UIString(L"b"), 1}}));
        groups_.push_back(group);
        group.legend = L"Preview";
        group.params = {Zq::makeShared<GenericParam::BoolParam>(L"Better", "price", L"", true)};
        groups_.push_back(group);
    }
    static std::string put(std::string const& value) { return "{\"value\":\"" + value + "\"}"; }

    LightweightVector<SearchOptionGroup> groups_;
};

TEST_F(Options, AreListedByGroupWithTheirChoicesByTag) {
    auto const told = handlers().json("GET", "/options");
    auto const filter = item(told, "groups", 0);
    EXPECT_EQ(text(filter, "legend"), "Filter");
    auto const price = item(filter, "options", 0);
    EXPECT_EQ(text(price, "type"), "choice");
    EXPECT_EQ(text(price, "id"), "price");
    EXPECT_EQ(text(price, "tooltip"), "what it costs");
    EXPECT_TRUE(price->getBool("active", false));
    EXPECT_EQ(text(price, "value"), "4");
    EXPECT_EQ(text(price, "initial"), "-1");
    EXPECT_EQ(text(item(price, "choices", 2), "value"), "9");
    EXPECT_EQ(text(item(price, "choices", 2), "text"), "high");
    EXPECT_EQ(text(item(filter, "options", 1), "initial"), "") << "it always filters";
    auto const better = item(item(told, "groups", 1), "options", 0);
    EXPECT_EQ(text(better, "type"), "boolean");
    EXPECT_EQ(text(better, "value"), "true");
}

TEST_F(Options, TellWhichValueOfThemFiltersNothing) {
    groups_[0].params.push_back(
        Zq::makeShared<GenericParam::TextParam>(L"By", "by", L"", WideString(L"Ada")));
    std::string const told = handlers().call("GET", "/options").body;
    EXPECT_THAT(told, HasSubstr(R"("value":"4","initial":"-1")"));
    EXPECT_THAT(told, HasSubstr(R"("value":"0","initial":null)")) << "it always filters";
    EXPECT_THAT(told, HasSubstr(R"("value":"Ada","initial":"")"));
    EXPECT_THAT(told, HasSubstr(R"("value":"true","initial":null)")) << "nobody has seen what it does";
}

// What a person does to the only boolean, and what the pages hear of it.
class BooleanOptions : public Options {
protected:
    class Teller final : public GenericParam::iValueChangeHandler {
    public:
        explicit Teller(ShelfRepository& repository) : repository_(repository) {}
        void valueChanged(WideString const&) override { repository_.tellOptionsChanged(); }

    private:
        ShelfRepository& repository_;
    };
    void makeResultsDependOnIt() {
        groups_[1].params[0]->addChangeHandler(Zq::makeShared<Teller>(*repository_));
    }
    std::string set(std::string const& value) {
        return handlers().call("PUT", "/options/{group}/{index}", {"1", "0"}, {}, put(value)).body;
    }
};

TEST_F(BooleanOptions, OneOnWhichResultsDependIsAFilterOnceThatWasSeen) {
    makeResultsDependOnIt();
    EXPECT_THAT(set("true"), HasSubstr(R"("value":"true","initial":null)")) << "it was so before";
    EXPECT_THAT(set("false"), HasSubstr(R"("value":"false","initial":"false")"));
    EXPECT_THAT(handlers().events(), HasSubstr(R"("repository":"SH","results":true)"));
    EXPECT_THAT(handlers().events(), Not(HasSubstr(R"("results":false)")));
    EXPECT_EQ(PanelMemory(home_.path() / "panel.toml").isFilter("SH", "1/0/price"), true)
        << "for the next run too";
}

TEST_F(BooleanOptions, OneOnWhichNoneDependIsNoneAndItsChangeIsToldToTheOtherPages) {
    EXPECT_THAT(set("false"), HasSubstr(R"("value":"false","initial":null)"));
    EXPECT_EQ(handlers().countEvents("options"), 1U);
    EXPECT_THAT(handlers().events(), HasSubstr(R"("repository":"SH","results":false)"));
    EXPECT_EQ(PanelMemory(home_.path() / "panel.toml").isFilter("SH", "1/0/price"), false);
}

TEST_F(BooleanOptions, WhatIsRefusedTellsNobody) {
    EXPECT_EQ(handlers().failureOf("PUT", "/options/{group}/{index}", {"1", "0"}, {}, put("maybe")),
              "bad_request");
    EXPECT_EQ(handlers().countEvents("options"), 0U);
}

TEST_F(Options, ThatAreHiddenAreSaidToBeAndMayBeActive) {
    auto const price = [this] {
        return item(item(handlers().json("GET", "/options"), "groups", 0), "options", 0);
    };
    EXPECT_FALSE(price()->getBool("hidden", true));
    groups_[0].params[0]->setPresentationHints(GenericParam::hintHidden);
    EXPECT_TRUE(price()->getBool("hidden", false));
    EXPECT_TRUE(price()->getBool("active", false));
}

TEST_F(Options, AreSetByGroupAndPosition) {
    auto const after = handlers().json("PUT", "/options/{group}/{index}", {"0", "0"}, {}, put("9"));
    EXPECT_EQ(text(item(item(after, "groups", 0), "options", 0), "value"), "9");
    auto const again = handlers().json("PUT", "/options/{group}/{index}", {"1", "0"}, {}, put("false"));
    EXPECT_EQ(text(item(item(again, "groups", 1), "options", 0), "value"), "false");
    EXPECT_EQ(text(item(item(again, "groups", 0), "options", 0), "value"), "9");
}

TEST_F(Options, AreNotSetToWhatTheyDoNotTake) {
    auto const failure = [this](char const* group, char const* index, std::string const& body) {
        return handlers().failureOf("PUT", "/options/{group}/{index}", {group, index}, {}, body);
    };
    EXPECT_EQ(failure("2", "0", put("1")), "not_found");
    EXPECT_EQ(failure("0", "2", put("1")), "not_found");
    EXPECT_EQ(failure("x", "0", put("1")), "not_found");
    EXPECT_EQ(failure("-1", "0", put("1")), "not_found");
    EXPECT_EQ(failure("0", "0", put("5")), "bad_request");
    EXPECT_EQ(failure("1", "0", put("maybe")), "bad_request");
    EXPECT_EQ(failure("0", "0", "{}"), "bad_request");
    EXPECT_EQ(failure("0", "0", "{\"value\":9}"), "bad_request");
    groups_[0].params[0]->setActive(false);
    EXPECT_EQ(failure("0", "0", put("9")), "conflict");
    EXPECT_FALSE(
        item(item(handlers().json("GET", "/options"), "groups", 0), "options", 0)->getBool("active", true));
}

} // namespace

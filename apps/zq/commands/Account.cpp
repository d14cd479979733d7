// "login", "logout" and "form": the account at the service.

#include "apps/zq/Command.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/MemoryBlock.h"
#include "apps/zq/RichText.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/signIn.h"
#include "apps/zq/terminal/PlainText.h"
#include "host/json/parse.h"

namespace zq {

namespace {

class Login final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_option("USER", user_, "name of the account")->required();
    }

    Reply run(Session& session) override {
        SignIn const result = signIn(session, user_);
        Reply reply;
        reply.error = result.error;
        reply.text = "signed in as " + plainText(result.user) + "\n";
        reply.members = [result](JSON::Builder& json) {
            json.add("code", result.code);
            addText(json, "user", result.user);
        };
        return reply;
    }

private:
    std::string user_;
};

class Logout final : public Command {
public:
    void declare(CLI::App&) override {}

    Reply run(Session& session) override {
        iMediaFileRepository& repository = session.repository();
        Reply reply;
        if (session.user().empty()) {
            reply.text = "nobody was signed in\n";
            return reply;
        }
        session.endFetches();
        session.forgetCredits();
        ServiceWatch const watch = session.watch();
        repository.logout();
        reply.text = "signed out\n";
        if (auto const failure = watch.failure()) {
            reply.text = "signed out here; " + plainText(*failure) + "\n";
        }
        return reply;
    }
};

Zq::Ptr<JSON::Element> parsed(std::string const& text) {
    return JSON::parse(Zq::makeShared<MemoryBlock>(text));
}

// A form's own JSON goes into the answer as it is, on one line; what is no JSON goes in as a text.
void addForm(JSON::Builder& json, char const* key, WideString const& form) {
    std::string const text = utf8(form);
    if (form.isEmpty() || parsed(text)) {
        json.add(key, form.isEmpty() ? WideString(L"null") : wide(plainText(text)), false);
    } else {
        json.add(key, form, true);
    }
}

std::string describe(WideString const& form) {
    std::string lines;
    Zq::Ptr<JSON::Element> const root = parsed(utf8(form));
    for (JSON::ChildMember const& list : JSON::orEmpty(root).children()) {
        for (JSON::ChildMember const& field : list.element->children()) {
            std::string const name = plainText(field.element->getStringView("name"));
            std::string const value = plainText(field.element->getStringView("value"));
            lines += name + ": " + plainText(plainFromRich(field.element->getStringView("legend")));
            lines += value.empty() ? "\n" : " (" + value + ")\n";
        }
    }
    return lines;
}

class Form final : public Command {
public:
    void declare(CLI::App&) override {}

    Reply run(Session& session) override {
        WideString const login = session.repository().getLoginForm();
        WideString const link = session.repository().getLoginLinkForm();
        Reply reply;
        reply.text = session.needsSignIn() ? describe(login) + describe(link) : "no sign-in is needed\n";
        reply.members = [login, link](JSON::Builder& json) {
            addForm(json, "login", login);
            addForm(json, "link", link);
        };
        return reply;
    }
};

} // namespace

std::unique_ptr<Command> makeLogin() {
    return std::make_unique<Login>();
}
std::unique_ptr<Command> makeLogout() {
    return std::make_unique<Logout>();
}
std::unique_ptr<Command> makeForm() {
    return std::make_unique<Form>();
}

} // namespace zq

// The routes of a repository itself: what it is, its account, its search options.

#include <algorithm>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/optionWords.h"
#include "apps/zq/panel/ApiError.h"
#include "apps/zq/panel/Panel.h"
#include "apps/zq/panel/Purchases.h"
#include "apps/zq/panel/RepositoryJson.h"
#include "apps/zq/panel/RequestValues.h"
#include "apps/zq/signIn.h"

namespace zq::panel {

namespace {

constexpr std::size_t longestName_bytes = 200;
constexpr std::size_t longestValue_bytes = 10'000;
constexpr std::size_t mostFields = 100;

// What was typed into the form. It stays in this record: no failure, event or log line repeats it.
configb formOf(Request const& request) {
    Zq::Ptr<JSON::Element> const values = JSON::orEmpty(request.body).getChild("values");
    if (!values || !values->numbers().empty() || !values->flags().empty() || !values->children().empty()) {
        throw ApiError(ErrorCode::badRequest, "\"values\" is an object of texts by the names of fields");
    }
    auto const isTooLong = [](JSON::StringMember const& member) {
        return member.key.empty() || member.key.size() > longestName_bytes ||
               member.value.size() > longestValue_bytes;
    };
    if (values->strings().size() > mostFields || std::ranges::any_of(values->strings(), isTooLong)) {
        throw ApiError(ErrorCode::badRequest, "a value is too long, or there are too many");
    }
    configb form;
    for (JSON::StringMember const& member : values->strings()) {
        form.set(std::string(member.key).c_str(), NarrowString(member.value));
    }
    return form;
}

std::string signInJson(SignIn const& result) {
    JSON::Builder json;
    json.startChild(nullptr);
    addNumber(json, "code", result.code);
    addText(json, "text", result.error);
    addText(json, "user", result.user);
    addText(json, "reason", wordOf(result.reason));
    json.endChild();
    return utf8(json.getOutput());
}

Response showForms(Panel const& panel, Request const& request) {
    RepositoryDesk& desk = panel.desk(request.captures.at(0));
    return jsonAnswer(desk.ask(Turn::beforeSearches, [&panel](Session& session) {
        iMediaFileRepository& repository = session.repository();
        JSON::Builder json;
        json.startChild(nullptr);
        addFields(json, "form", repository.getLoginForm(), panel.links);
        addFields(json, "linkForm", repository.getLoginLinkForm(), panel.links);
        json.endChild();
        return utf8(json.getOutput());
    }));
}

Response logIn(Panel const& panel, Request const& request) {
    RepositoryDesk& desk = panel.desk(request.captures.at(0));
    configb const form = formOf(request);
    return jsonAnswer(desk.ask([&](Session& session) {
        SignIn const result = signIn(session, form);
        if (result.error.empty() && !result.user.empty()) {
            // The clips of a search are marked by this list; nobody has to wait for it.
            panel.purchases.lookLater(desk);
        }
        return signInJson(result);
    }));
}

Response logOut(Panel const& panel, Request const& request) {
    return jsonAnswer(panel.desk(request.captures.at(0)).ask([](Session& session) {
        SignIn result;
        if (!session.user().empty()) {
            session.endFetches();
            session.forgetCredits();
            ServiceWatch const watch = session.watch();
            session.repository().logout();
            result.error = watch.failure().value_or(std::string());
            result.reason = result.error.empty() ? Reason::none : reasonOf(watch);
            result.user = session.user();
        }
        return signInJson(result);
    }));
}

std::string optionsJson(RepositoryDesk const& desk, Session& session) {
    auto const isFilter = [&](std::size_t group, std::size_t index, GenericParam::iParam const& option) {
        return desk.isFilter(group, index, option);
    };
    JSON::Builder json;
    json.startChild(nullptr);
    addOptions(json, "groups", readOptions(session), isFilter);
    json.endChild();
    return utf8(json.getOutput());
}

Response showOptions(Panel const& panel, Request const& request) {
    RepositoryDesk& desk = panel.desk(request.captures.at(0));
    return jsonAnswer(
        desk.ask(Turn::beforeSearches, [&](Session& session) { return optionsJson(desk, session); }));
}

ErrorCode errorOf(SearchOptionResult result) {
    switch (result) {
    case SearchOptionResult::noSuchGroup:
    case SearchOptionResult::noSuchOption:
        return ErrorCode::notFound;
    case SearchOptionResult::inactive:
        return ErrorCode::conflict;
    default:
        return ErrorCode::badRequest;
    }
}

Response setOption(Panel const& panel, Request const& request) {
    RepositoryDesk& desk = panel.desk(request.captures.at(0));
    std::size_t const group = pathNumber(request, 1);
    std::size_t const index = pathNumber(request, 2);
    std::string const value = bodyText(request, "value", longestValue_bytes);
    return jsonAnswer(desk.ask(Turn::beforeSearches, [&](Session& session) {
        SearchOptionResult const result = desk.setOption(session, group, index, wide(value));
        if (result != SearchOptionResult::set) {
            throw ApiError(errorOf(result), inWords(result),
                           result == SearchOptionResult::inactive ? Reason::optionInactive : Reason::none);
        }
        return optionsJson(desk, session);
    }));
}

} // namespace

void addRepositoryRoutes(Routes& routes, Panel const& panel) {
    routes.push_back({"GET", "/api/repositories/{repository}", [&panel](Request const& request) {
                          return jsonAnswer(panel.desk(request.captures.at(0)).description());
                      }});
    routes.push_back({"GET", "/api/repositories/{repository}/login",
                      [&panel](Request const& request) { return showForms(panel, request); }});
    routes.push_back({"POST", "/api/repositories/{repository}/login",
                      [&panel](Request const& request) { return logIn(panel, request); }});
    routes.push_back({"POST", "/api/repositories/{repository}/logout",
                      [&panel](Request const& request) { return logOut(panel, request); }});
    routes.push_back({"GET", "/api/repositories/{repository}/options",
                      [&panel](Request const& request) { return showOptions(panel, request); }});
    routes.push_back({"PUT", "/api/repositories/{repository}/options/{group}/{index}",
                      [&panel](Request const& request) { return setOption(panel, request); }});
}

} // namespace zq::panel

// The values in the panel's document against those of the program: both have the same members.

#include "tests/tarn7d/TestFootage.h"
#include "tests/zq/panel/WholePanel.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "apps/zq/Text.h"
#include "host/engine/project/Project.h"
#include "host/parameters/ChoiceParam.h"

namespace {

namespace fs = std::filesystem;
using namespace panel_tests;
using Names = std::set<std::string>;

// The members of a JSON value by their paths, as "clips.id"; lists are passed through. Those that are null
// count: the host's reader drops them.
class Members {
public:
    explicit Members(std::string const& json) : json_(json) { value(""); }
    [[nodiscard]] std::set<std::string> paths() const { return paths_; }

private:
    [[nodiscard]] char peek() {
        while (at_ < json_.size() && std::isspace(static_cast<unsigned char>(json_[at_])) != 0) {
            ++at_;
        }
        return at_ < json_.size() ? json_[at_] : '\0';
    }
    std::string quoted() {
        std::string text;
        for (++at_; at_ < json_.size() && json_[at_] != '"'; ++at_) {
            at_ += json_[at_] == '\\' ? 1U : 0U;
            text += json_[at_];
        }
        ++at_;
        return text;
    }
    void value(std::string const& path) {
        char const first = peek();
        if (first == '{' || first == '[') {
            char const last = first == '{' ? '}' : ']';
            for (++at_; peek() != last && at_ < json_.size(); at_ += peek() == ',' ? 1U : 0U) {
                std::string inner = path;
                if (first == '{') {
                    inner += (path.empty() ? "" : ".") + quoted();
                    paths_.insert(inner);
                    static_cast<void>(peek());
                    ++at_; // the colon
                }
                value(inner);
            }
            ++at_;
        } else if (first == '"') {
            static_cast<void>(quoted());
        } else {
            at_ = json_.find_first_of(",]}", at_);
        }
    }

    std::string const json_;
    std::size_t at_ = 0;
    std::set<std::string> paths_;
};

std::string sectionOf(std::string const& title) {
    std::ifstream stream(ZQ_PANEL_DOCUMENT, std::ios::binary);
    std::ostringstream all;
    all << stream.rdbuf();
    std::string const document = all.str();
    std::size_t const begin = document.find("\n### " + title + "\n");
    EXPECT_NE(begin, std::string::npos) << title;
    return document.substr(begin + 5, document.find("\n##", begin + 5) - begin - 5);
}

// The names that stand as code in the section of that title, without those of routes, places and samples; or
// what else the pattern finds there.
Names namesIn(std::string const& title, std::string const& pattern = "`([A-Za-z_]+)`") {
    std::string const section = sectionOf(title);
    std::regex const code(pattern);
    Names names;
    for (std::sregex_iterator found(section.begin(), section.end(), code), end; found != end; ++found) {
        names.insert((*found)[1]);
    }
    return names;
}

// Holds the section against JSON of the program. `inside` is the path below which the value stands in it;
// what stands below the paths of `foreign` is another section's. `words` are names of the section that are no
// members.
struct Row {
    std::string title;
    std::vector<std::string> json;
    std::string inside;
    Names foreign;
    Names words;
};

void hold(Row const& row) {
    Names members;
    for (std::string const& json : row.json) {
        Members const read(json);
        for (std::string const& path : read.paths()) {
            bool const isInside = row.inside.empty() || path.starts_with(row.inside + ".");
            bool const isForeign = std::ranges::any_of(
                row.foreign, [&](std::string const& other) { return path.starts_with(other + "."); });
            if (isInside && !isForeign) {
                members.insert(path.substr(path.rfind('.') + 1));
            }
        }
    }
    Names told = row.words;
    told.insert(members.begin(), members.end());
    EXPECT_FALSE(members.empty()) << row.title;
    EXPECT_EQ(namesIn(row.title), told) << row.title;
}

class PanelValues : public testing::Test {
protected:
    PanelValues() {
        repository_->signedInUser = L"ada";
        repository_->description.connection.server = L"127.0.0.1:1";
        repository_->description.legalNotice =
            L"mine <a href=\"https://a.example/\">there</a> <small>for now</small>";
        repository_->form = L"{\"\":[{\"name\":\"user\",\"type\":\"text\"},"
                            L"{\"name\":\"l\",\"type\":\"label\",\"legend\":\"Hello\"}]}";
        repository_->makeOptions = [](ShelfRepository&) {
            SearchOptionGroup group;
            group.legend = L"Filter";
            group.params.push_back(Zq::makeShared<GenericParam::ChoiceParam>(
                L"Price", "price", L"", 0U,
                LightweightVector<Choice>{{UIString(L"any"), -1}, {UIString(L"low"), 4}}));
            return LightweightVector<SearchOptionGroup>{group};
        };
        SearchResults results;
        results.totalCount = 1;
        results.pageCount = 1;
        results.assets.push_back(ShelfRepository::clip("1", "one", "$5"));
        repository_->onSearch = [results](auto&) { return results; };
        repository_->onOwned = [results](auto&) { return results.assets; };
        repository_->onFetch = [](auto&, LoggerHandle const& log) {
            log.write(L"a line", LoggerBase::ePlain);
            return false;
        };
        repository_->onPurchase = [](auto&, auto&, bool) { return 0; };
        static_cast<void>(get("/repositories/{repository}/search"));
        addEdit("SH", "1");
        addEdit("XX", "2");
        place();
    }
    void addEdit(std::string const& kind, std::string const& id) {
        EditModifier edit(project().makeNewClip(1, 2, 5.0, Zq::FrameRate::f50, Cookie()));
        edit->setTemporary(false);
        project().associate(edit->getCookie(), zq::wide(kind), zq::wide(id));
    }
    void place() {
        for (char const* const kind : {"SH", "XX"}) {
            Cookie const edit = project().findObject(zq::wide(kind), *kind == 'S' ? L"1" : L"2");
            ASSERT_TRUE(project().place("cut", edit, {}, {}));
        }
    }
    // Relinked to what is shorter, slower and smaller than promised.
    void relink() {
        fs::path const film = home_.path() / "film.mov";
        test::putFootage(test::Footage::plain, film);
        ASSERT_TRUE(project().relink(project().findObject(L"SH", L"1"), zq::wide(film.string())));
    }
    engine::Project& project() { return home_.engine().project(); }
    std::string get(std::string const& route, std::vector<Handlers::Query> const& query = {}) {
        std::string const part = route.find("{sequence}") != std::string::npos ? "cut" : "SH";
        return panel_.call("GET", route, {part, "1"}, query).body;
    }
    std::string post(std::string const& route, std::string const& body) {
        return panel_.call("POST", route, {"SH"}, {}, body).body;
    }

    EngineHome home_;
    Zq::Ptr<ShelfRepository> const repository_ = Zq::makeShared<ShelfRepository>();
    WholePanel panel_{
        home_.engine(), {repository_.get()}, [] { return std::vector<engine::ServerStatistics>(); }};
};

TEST_F(PanelValues, OfRepositoriesHaveTheMembersOfTheDocument) {
    std::string const of = "/repositories/{repository}";
    hold({"State", {get("/state")}, "", {"repositories", "project", "tasks"}, {"dark", "light", "system"}});
    hold({"Repository", {get(of)}, "", {"summary", "legalNotice"}, {"text", "number", "duration"}});
    hold({"Field", {get(of + "/login")}, "form", {"form.rich"}, {"text", "label"}});
    hold({"Result of a sign-in", {post(of + "/login", R"({"values":{"user":"ada"}})")}, "", {}, {}});
    hold({"Option", {get(of + "/options")}, "groups", {}, {"choice", "boolean"}});
    hold({"Page of clips", {get(of + "/search")}, "", {"clips"}, {"asker", "turn"}});
    hold({"Clip", {get(of + "/clips/{clip}")}, "", {"attributes"}, {}});
}

TEST_F(PanelValues, OfRichTextHaveTheMembersOfTheDocument) {
    Names members;
    for (std::string const& path : Members(get("/repositories/{repository}")).paths()) {
        if (path.starts_with("legalNotice.")) {
            members.insert(path.substr(path.rfind('.') + 1));
        }
    }
    EXPECT_EQ(namesIn("Rich text", "\"([a-z]+)\":"), members);
}

TEST_F(PanelValues, OfBuyingHaveTheMembersOfTheDocument) {
    std::string const of = "/repositories/{repository}";
    std::string const clips = "\"clips\":[\"1\"]";
    repository_->onOwned = [](auto&) { return LightweightVector<RemoteAsset>(); };
    std::string const basket = panel_.call("PUT", of + "/basket", {"SH"}, {}, "{" + clips + "}").body;
    hold({"Basket", {basket}, "", {}, {}});
    hold({"Purchase",
          {post(of + "/purchases", R"({"key":"k","payment":"credits",)" + clips + "}")},
          "",
          {},
          {"running", "done", "waiting", "doubtful", "refused"}});
}

TEST_F(PanelValues, OfTheProjectHaveTheMembersOfTheDocument) {
    std::string const of = "/sequences/{sequence}";
    std::string const warnings = get(of + "/export", {{"format", "edl"}, {"check", "1"}});
    hold({"Warning", {warnings}, "warnings", {}, {"preview", "other_rate", "too_many_events"}});
    relink();
    hold({"Project", {get("/project")}, "", {}, {"placing", "relinking", "moving", "trimming", "removing"}});
    hold({"Sequence",
          {get(of)},
          "",
          {},
          {"preview", "downloading", "full", "missing", "length", "size", "sound"}});
    hold({"Usage", {get(of + "/usage")}, "", {}, {"unknown"}});
    std::string const checks = post("/repositories/{repository}/checks", R"({"clips":["1"]})");
    Names const usedPiece{"number", "edit",     "name",      "in",       "out",       "start",
                          "length", "sourceIn", "sourceOut", "recordIn", "recordOut", "preview"};
    std::set<std::string> const paths = Members(checks).paths();
    for (std::string const& name : usedPiece) {
        EXPECT_TRUE(paths.contains("checks.uses." + name)) << name;
        EXPECT_TRUE(namesIn("Usage").contains(name)) << name;
    }
    EXPECT_TRUE(paths.contains("checks.uses.cutShort"));
    EXPECT_TRUE(paths.contains("checks.uses.sequence"));
    EXPECT_TRUE(paths.contains("checks.file.container"));
}

TEST_F(PanelValues, OfChecksTasksAndSettingsHaveTheMembersOfTheDocument) {
    std::string const of = "/repositories/{repository}";
    hold({"Check",
          {post(of + "/checks", R"({"clips":["1"]})")},
          "checks",
          {},
          {"sequence", "same", "cut_short", "no_edit", "no_file", "unusable"}});
    std::int64_t const task = parsed(post(of + "/fetches", R"({"clips":["1"]})"))->getInt("task", 0);
    static_cast<void>(panel_.awaitEnd(task));
    hold({"Task",
          {get("/tasks")},
          "tasks",
          {},
          {"fetch", "other", "waiting", "running", "cancelling", "done", "failed", "cancelled", "transfer",
           "refused", "media", "preview"}});
    hold({"Settings", {get("/settings")}, "", {}, {"grid", "list"}});
    hold({"Server",
          {post("/settings/test-connection", "{}")},
          "servers",
          {},
          {"answered", "no_answer", "late", "no_address"}});
    std::string const log = panel_.call("GET", "/tasks/{task}/log", {std::to_string(task)}).body;
    hold({"Log lines", {log, get("/log")}, "lines", {}, {"plain", "starts", "failed"}});
}

} // namespace

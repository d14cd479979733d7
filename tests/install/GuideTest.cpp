// The guide to writing a repository says what the example and the contract say.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

namespace {

namespace fs = std::filesystem;

// A file of the sources.
std::string read(std::string const& name) {
    std::ifstream stream(fs::path(ZQ_ROOT) / name, std::ios::binary);
    EXPECT_TRUE(stream) << name;
    return {std::istreambuf_iterator<char>(stream), {}};
}

struct Snippet {
    std::string language;
    std::string file; // of the example
    std::string text;
};

// The fenced pieces of the guide; behind the language stands the file that each is taken from.
std::vector<Snippet> snippets() {
    std::istringstream lines(read("docs/writing-a-repository.md"));
    std::vector<Snippet> all;
    bool isInside = false;
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("```")) {
            if (isInside) {
                all.back().text += line + "\n";
            }
            continue;
        }
        isInside = !isInside;
        if (isInside) {
            std::istringstream words(line.substr(3));
            Snippet& snippet = all.emplace_back();
            words >> snippet.language >> snippet.file;
        }
    }
    EXPECT_FALSE(isInside) << "a fence is not closed";
    return all;
}

TEST(Guide, QuotesTheExampleWordForWord) {
    std::size_t quoted = 0;
    for (Snippet const& snippet : snippets()) {
        if (snippet.language == "sh") {
            continue;
        }
        ASSERT_NE(snippet.file, "") << "nobody can tell whether this holds:\n" << snippet.text;
        std::string const source = "\n" + read("examples/folder-repository/" + snippet.file);
        EXPECT_NE(source.find("\n" + snippet.text), std::string::npos) << snippet.file << " does not say:\n"
                                                                       << snippet.text;
        ++quoted;
    }
    EXPECT_GE(quoted, 6U);
}

std::set<std::string> namesIn(std::string const& text, char const* pattern) {
    std::set<std::string> names;
    std::regex const expression(pattern);
    for (std::sregex_iterator found(text.begin(), text.end(), expression), end; found != end; ++found) {
        names.insert((*found)[1]);
    }
    return names;
}

// What has no body, neither in the interface nor in the base of all repositories.
std::set<std::string> operationsToAnswer() {
    constexpr char const* withoutBody = R"(virtual\s[^;{}()]*?(\w+)\([^;{}]*\)(?:\s*const)?\s*=\s*0;)";
    std::string const base = read("repository/MediaFileRepositoryBase.h");
    std::set<std::string> names = namesIn(read("repository/iMediaFileRepository.h"), withoutBody);
    for (std::string const& answered : namesIn(base, R"((\w+)\([^;{}]*\)(?:\s*const)?\s*override;)")) {
        names.erase(answered);
    }
    names.merge(namesIn(base, withoutBody));
    return names;
}

TEST(Guide, ListsTheOperationsThatARepositoryMustAnswer) {
    std::string const guide = read("docs/writing-a-repository.md");
    std::size_t const begin = guide.find("These you must answer:");
    std::size_t const end = guide.find("The base answers all others.");
    ASSERT_LT(begin, end);
    ASSERT_NE(end, std::string::npos);
    std::set<std::string> const wanted = operationsToAnswer();
    EXPECT_TRUE(wanted.contains("connect") && wanted.contains("createEdit"));
    EXPECT_EQ(namesIn(guide.substr(begin, end - begin), R"(\n\| `(\w+)` \|)"), wanted);
}

TEST(Guide, NamesFilesThatAreThere) {
    std::set<std::string> const names =
        namesIn(read("docs/writing-a-repository.md"),
                R"(`((?:host|repository|examples|framequarry|tarn7|tests|docs)/[\w./-]+)`)");
    EXPECT_GT(names.size(), 10U);
    for (std::string const& name : names) {
        EXPECT_TRUE(fs::exists(fs::path(ZQ_ROOT) / name)) << name;
    }
}

} // namespace

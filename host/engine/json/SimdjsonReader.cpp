#include "host/engine/json/SimdjsonReader.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <simdjson.h>

#include "host/engine/json/RangeRewrite.h"
#include "host/json/Tree.h"

namespace engine {

namespace {

using simdjson::dom::element;
using simdjson::dom::element_type;

constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";

// What is kept from one text to the next: the working memory of the parser. The texts of the document leave
// it with every answer.
struct Workspace {
    simdjson::dom::parser parser;
    simdjson::dom::document document;
};

// Larger texts bring a workspace of their own, so that one of them does not leave a thread holding its
// memory.
constexpr std::size_t largestKept = std::size_t{1} << 20;
constexpr std::size_t growthStep = std::size_t{64} << 10;

bool makeRoom(Workspace& workspace, std::size_t length) {
    std::size_t const capacity = (length + growthStep - 1) / growthStep * growthStep;
    // One level more than allowed: where an empty innermost array counts is decided while the tree is built.
    if (workspace.parser.capacity() < length &&
        workspace.parser.allocate(capacity, SimdjsonReader::deepestNesting + 1) != simdjson::SUCCESS) {
        return false;
    }
    if (workspace.document.capacity() < length &&
        workspace.document.allocate(capacity) != simdjson::SUCCESS) {
        return false;
    }
    // simdjson sizes this buffer by the largest text it has seen; an answer should keep what it needs only.
    // Three bytes of an empty string and a comma become five: a length, nothing and a terminator.
    std::size_t const textBytes = 5 * length / 3 + 2 * simdjson::SIMDJSON_PADDING;
    workspace.document.string_buf.reset(new (std::nothrow) std::uint8_t[textBytes]);
    return workspace.document.string_buf != nullptr;
}

// `text` is followed by SIMDJSON_PADDING readable bytes.
simdjson::error_code read(Workspace& workspace, std::string_view text) {
    if (!makeRoom(workspace, std::max<std::size_t>(text.size(), 1))) {
        return simdjson::MEMALLOC;
    }
    return workspace.parser.parse_into_document(workspace.document, text.data(), text.size(), false).error();
}

simdjson::error_code readWithRewriting(Workspace& workspace, std::string_view text) {
    simdjson::error_code const error = read(workspace, text);
    if (error != simdjson::NUMBER_ERROR && error != simdjson::STRING_ERROR) {
        return error;
    }
    std::string rewritten = rewriteIntoRange(text);
    rewritten.reserve(rewritten.size() + simdjson::SIMDJSON_PADDING);
    return read(workspace, rewritten);
}

template <class Visitor>
void visitMembers(element const& container, Visitor const& visit) {
    if (container.type() == element_type::OBJECT) {
        for (auto const member : simdjson::dom::object(container)) {
            visit(member.key, member.value);
        }
    } else {
        for (element const item : simdjson::dom::array(container)) {
            visit(std::string_view(), item);
        }
    }
}

bool isContainer(element const& value) {
    return value.type() == element_type::OBJECT || value.type() == element_type::ARRAY;
}

class TreeBuilder {
public:
    explicit TreeBuilder(JSON::Tree& tree) : tree_(tree) {}

    // False when the nesting is too deep. Keeps a list of what is to be done in place of recursion.
    bool build(element const& root) {
        if (!isContainer(root)) {
            addScalar(tree_.root(), {}, root);
            return true;
        }
        pending_.push_back({root, &tree_.root(), 1});
        while (!pending_.empty()) {
            Pending const next = pending_.back();
            pending_.pop_back();
            if (next.depth > SimdjsonReader::deepestNesting) {
                return false;
            }
            fill(next);
        }
        return true;
    }

private:
    struct Pending {
        element value;
        JSON::Element* target;
        std::uint32_t depth;
    };

    void fill(Pending const& next) {
        JSON::Tree::Counts counts;
        visitMembers(next.value, [&counts](std::string_view, element const& value) { count(counts, value); });
        tree_.reserve(*next.target, counts);
        visitMembers(next.value, [this, &next](std::string_view key, element const& value) {
            if (isContainer(value)) {
                pending_.push_back({value, &tree_.addChild(*next.target, key), next.depth + 1});
            } else {
                addScalar(*next.target, key, value);
            }
        });
    }

    static void count(JSON::Tree::Counts& counts, element const& value) {
        switch (value.type()) {
        case element_type::OBJECT:
        case element_type::ARRAY:
            ++counts.children;
            break;
        case element_type::STRING:
            ++counts.strings;
            break;
        case element_type::BOOL:
            ++counts.flags;
            break;
        case element_type::INT64:
        case element_type::UINT64:
        case element_type::DOUBLE:
            ++counts.numbers;
            break;
        case element_type::NULL_VALUE:
            break;
        }
    }

    void addScalar(JSON::Element& target, std::string_view key, element const& value) {
        switch (value.type()) {
        case element_type::STRING:
            tree_.addString(target, key, std::string_view(value));
            break;
        case element_type::BOOL:
            tree_.addFlag(target, key, bool(value));
            break;
        case element_type::INT64:
        case element_type::UINT64:
        case element_type::DOUBLE:
            tree_.addNumber(target, key, double(value));
            break;
        case element_type::OBJECT:
        case element_type::ARRAY:
        case element_type::NULL_VALUE:
            break;
        }
    }

    JSON::Tree& tree_;
    std::vector<Pending> pending_;
};

Zq::Ptr<JSON::Element> parseWith(Workspace& workspace, std::string_view text) {
    if (readWithRewriting(workspace, text) != simdjson::SUCCESS) {
        return {};
    }
    Zq::Ptr<JSON::Tree> const tree = Zq::makeShared<JSON::Tree>();
    if (!tree || !TreeBuilder(*tree).build(workspace.document.root())) {
        return {};
    }
    tree->keepText(std::move(workspace.document.string_buf));
    return JSON::Tree::rootOf(tree);
}

Zq::Ptr<JSON::Element> parsePadded(std::string_view text) {
    if (text.size() > largestKept) {
        Workspace once;
        return parseWith(once, text);
    }
    thread_local Workspace kept;
    return parseWith(kept, text);
}

} // namespace

Zq::Ptr<JSON::Element> SimdjsonReader::parse(iMemHolder const& bytes) {
    try {
        std::string_view text(bytes.getData(), bytes.getSize());
        if (text.empty() || text.size() > largestText) {
            return {};
        }
        if (text.starts_with(byteOrderMark)) {
            text.remove_prefix(byteOrderMark.size());
        }
        if (bytes.getPadding() >= simdjson::SIMDJSON_PADDING) {
            return parsePadded(text);
        }
        simdjson::padded_string const copy(text);
        return parsePadded(std::string_view(copy.data(), copy.size()));
    } catch (std::exception const&) {
        return {}; // no memory
    }
}

} // namespace engine

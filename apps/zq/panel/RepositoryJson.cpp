#include "apps/zq/panel/RepositoryJson.h"

#include <algorithm>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/MemoryBlock.h"
#include "apps/zq/RichText.h"
#include "apps/zq/commands/Labels.h"
#include "apps/zq/panel/RichPieces.h"
#include "host/engine/os/BrowserUrl.h"
#include "host/json/parse.h"
#include "host/parameters/BoolParam.h"
#include "host/parameters/ChoiceParam.h"

namespace zq::panel {

namespace {

using GenericParam::BoolParam;
using GenericParam::ChoiceParam;
using GenericParam::iParam;

constexpr std::int32_t noFilterTag = -1;

char const* kindOf(LogAttribute const& column) {
    if (column.getFieldType() == DBFieldTypes::duration) {
        return "duration";
    }
    bool const isNumber =
        column.getType() == LogAttribute::ePrice || column.getType() == LogAttribute::eFrameRate;
    return isNumber ? "number" : "text";
}

void addColumns(JSON::Builder& json, char const* key, LightweightVector<LogAttribute> const& columns) {
    json.startArray(key);
    for (LogAttribute const& column : columns) {
        json.startChild(nullptr);
        addNumber(json, "type", static_cast<std::int32_t>(column.getType()));
        json.add("name", label(column.getDisplayName()), true);
        addText(json, "kind", kindOf(column));
        addNumber(json, "width", column.preferredWidth);
        json.add("editable", (column.flags & LogAttribute::eEditable) != 0);
        json.endChild();
    }
    json.endArray();
}

// The lists of a form: arrays in an object.
Zq::Ptr<JSON::Element> parsed(WideString const& form) {
    return form.isEmpty() ? Zq::Ptr<JSON::Element>() : JSON::parse(Zq::makeShared<MemoryBlock>(utf8(form)));
}

bool hasFields(WideString const& form) {
    Zq::Ptr<JSON::Element> const root = parsed(form);
    return std::ranges::any_of(JSON::orEmpty(root).children(), [](JSON::ChildMember const& list) {
        return !list.element->children().empty();
    });
}

void addField(JSON::Builder& json, JSON::Element const& field, GivenLinks& links) {
    bool const isLabel = field.getStringView("type") == "label";
    std::string_view const legend = field.getStringView("legend");
    json.startChild(nullptr);
    addText(json, "name", field.getStringView("name"));
    addText(json, "legend", isLabel ? plainFromRich(legend) : std::string(legend));
    addText(json, "type", isLabel ? "label" : "text");
    if (isLabel) {
        addRich(json, "rich", legend, links);
    }
    json.add("obfuscated", field.getBool("obfuscated", false));
    json.add("advance", field.getBool("advance", false));
    addText(json, "hint", field.getStringView("hint"));
    addText(json, "value", field.getStringView("value"));
    json.endChild();
}

void addNull(JSON::Builder& json, char const* key) {
    json.add(key, L"null", false);
}

void addChoice(JSON::Builder& json, ChoiceParam const& choice) {
    addText(json, "value", std::to_string(choice.getTag()));
    bool const canBeOff =
        std::ranges::find(choice.getChoices(), noFilterTag, &Choice::tag) != choice.getChoices().end();
    if (canBeOff) {
        addText(json, "initial", std::to_string(noFilterTag));
    } else {
        addNull(json, "initial");
    }
    json.startArray("choices");
    for (Choice const& entry : choice.getChoices()) {
        json.startChild(nullptr);
        addText(json, "value", std::to_string(entry.tag));
        json.add("text", label(entry.text), true);
        json.endChild();
    }
    json.endArray();
}

void addOption(JSON::Builder& json, iParam const& param, bool isFilter) {
    auto const* const choice = dynamic_cast<ChoiceParam const*>(&param);
    bool const isBoolean = dynamic_cast<BoolParam const*>(&param) != nullptr;
    json.startChild(nullptr);
    json.add("legend", param.getLegend(), true);
    addText(json, "type", choice != nullptr ? "choice" : isBoolean ? "boolean" : "text");
    addText(json, "id", param.getID().view());
    json.add("tooltip", param.getTooltip(), true);
    json.add("active", param.isActive());
    json.add("hidden", (param.getPresentationHints() & GenericParam::hintHidden) != 0);
    if (choice != nullptr) {
        addChoice(json, *choice);
        json.endChild();
        return;
    }
    json.add("value", param.getValueAsString(), true);
    if (!isBoolean) {
        addText(json, "initial", "");
    } else if (isFilter) {
        addText(json, "initial", "false");
    } else {
        addNull(json, "initial");
    }
    json.endChild();
}

} // namespace

std::string repositoryJson(Session& session, GivenLinks& links) {
    iMediaFileRepository& repository = session.repository();
    RepositoryDescription const description = repository.getDescription();
    JSON::Builder json;
    json.startChild(nullptr);
    json.add("shortName", repository.getShortName(), true);
    json.add("name", repository.getName(), true);
    addRich(json, "summary", utf8(description.summary), links);
    addRich(json, "legalNotice", utf8(description.legalNotice), links);
    std::string const webLink = engine::browserUrl(description.webLink).value_or(std::string());
    links.remember(webLink);
    addText(json, "webLink", webLink);
    json.add("user", description.connection.user, true);
    json.add("needsSignIn", hasFields(repository.getLoginForm()));
    if (std::optional<std::int64_t> const credits = session.credits()) {
        addNumber(json, "credits", *credits);
    } else {
        addNull(json, "credits");
    }
    addColumns(json, "columns", repository.getLogAttributes());
    addDecimal(json, "thumbnailAspect", static_cast<double>(description.thumbnailAspect));
    json.endChild();
    return utf8(json.getOutput());
}

void addFields(JSON::Builder& json, char const* key, WideString const& form, GivenLinks& links) {
    Zq::Ptr<JSON::Element> const root = parsed(form);
    json.startArray(key);
    for (JSON::ChildMember const& list : JSON::orEmpty(root).children()) {
        for (JSON::ChildMember const& field : list.element->children()) {
            addField(json, *field.element, links);
        }
    }
    json.endArray();
}

LightweightVector<SearchOptionGroup> readOptions(Session& session) {
    LightweightVector<SearchOptionGroup> groups = session.repository().getSearchOptions();
    for (SearchOptionGroup& group : groups) {
        std::erase_if(group.params, [](Zq::Ptr<iParam> const& param) { return !param; });
    }
    return groups;
}

void addOptions(JSON::Builder& json, char const* key, LightweightVector<SearchOptionGroup> const& groups,
                IsFilter const& isFilter) {
    json.startArray(key);
    for (std::size_t group = 0; group < groups.size(); ++group) {
        json.startChild(nullptr);
        json.add("legend", groups[group].legend, true);
        json.startArray("options");
        LightweightVector<Zq::Ptr<iParam>> const& options = groups[group].params;
        for (std::size_t index = 0; index < options.size(); ++index) {
            addOption(json, *options[index], isFilter(group, index, *options[index]));
        }
        json.endArray();
        json.endChild();
    }
    json.endArray();
}

} // namespace zq::panel

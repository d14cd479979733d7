// "options", "set" and "columns": what a search can be narrowed with, and what its list shows.

#include <algorithm>

#include "apps/zq/Command.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/commands/Labels.h"
#include "apps/zq/optionWords.h"
#include "apps/zq/terminal/PlainText.h"
#include "apps/zq/terminal/Table.h"
#include "host/parameters/BoolParam.h"
#include "host/parameters/ChoiceParam.h"
#include "repository/SearchOptions.h"

namespace zq {

namespace {

using GenericParam::BoolParam;
using GenericParam::ChoiceParam;
using GenericParam::iParam;
using Groups = LightweightVector<SearchOptionGroup>;

// The value in the form that "set" takes, the tag of the chosen entry or true or false, and the place of what
// is chosen. Every parameter has the same members, so that a reader needs no case of its own for a boolean.
void addValue(JSON::Builder& json, iParam const& param) {
    auto const* const choice = dynamic_cast<ChoiceParam const*>(&param);
    auto const* const flag = dynamic_cast<BoolParam const*>(&param);
    if (choice != nullptr) {
        json.add("value", choice->getTag());
        addNumber(json, "position", choice->getValue());
    } else {
        json.add("value", param.getValueAsString(), flag == nullptr);
        addNumber(json, "position", flag != nullptr && flag->getValue() ? 1 : 0);
    }
    json.startArray("choices");
    for (Choice const& entry : choice != nullptr ? choice->getChoices() : LightweightVector<Choice>()) {
        json.startChild(nullptr);
        json.add("text", label(entry.text), true);
        json.add("tag", entry.tag);
        json.endChild();
    }
    json.endArray();
}

void addGroups(JSON::Builder& json, Groups const& groups) {
    json.startArray("groups");
    for (SearchOptionGroup const& group : groups) {
        json.startChild(nullptr);
        json.add("legend", group.legend, true);
        json.startArray("params");
        for (Zq::Ptr<iParam> const& param : group.params) {
            json.startChild(nullptr);
            addText(json, "id", param->getID().view());
            json.add("legend", param->getLegend(), true);
            addText(json, "type", param->getValueType().view());
            addValue(json, *param);
            json.endChild();
        }
        json.endArray();
        json.endChild();
    }
    json.endArray();
}

std::string valueText(iParam const& param) {
    auto const* const choice = dynamic_cast<ChoiceParam const*>(&param);
    if (choice == nullptr || choice->getValue() >= choice->getChoices().size()) {
        return utf8(param.getValueAsString());
    }
    return utf8(label(choice->getChoices()[choice->getValue()].text));
}

std::string valuesText(iParam const& param) {
    if (dynamic_cast<BoolParam const*>(&param) != nullptr) {
        return "true, false";
    }
    auto const* const choice = dynamic_cast<ChoiceParam const*>(&param);
    if (choice == nullptr) {
        return "a text";
    }
    std::string all;
    for (Choice const& entry : choice->getChoices()) {
        all += all.empty() ? "" : ", ";
        all += std::to_string(entry.tag) + "=" + utf8(label(entry.text));
    }
    return all;
}

// A parameter that the repository had no memory for is left out everywhere.
Groups readGroups(Session& session) {
    Groups groups = session.repository().getSearchOptions();
    for (SearchOptionGroup& group : groups) {
        std::erase_if(group.params, [](Zq::Ptr<iParam> const& param) { return !param; });
    }
    return groups;
}

class Options final : public Command {
public:
    void declare(CLI::App&) override {}

    Reply run(Session& session) override {
        Groups const groups = readGroups(session);
        Table table({{"Group"}, {"Index"}, {"Option"}, {"Now"}, {"Values"}});
        for (std::size_t group = 0; group < groups.size(); ++group) {
            for (std::size_t index = 0; index < groups[group].params.size(); ++index) {
                iParam const& param = *groups[group].params[index];
                table.addRow({std::to_string(group), std::to_string(index), utf8(param.getLegend()),
                              valueText(param), valuesText(param)});
            }
        }
        Reply reply;
        reply.text = table.render(session.screen());
        reply.members = [groups](JSON::Builder& json) { addGroups(json, groups); };
        return reply;
    }
};

class Set final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_option("GROUP", group_, "number of the group, from 0")->required();
        options.add_option("INDEX", index_, "number of the option in its group, from 0")->required();
        options.add_option("VALUE", value_, "tag of an entry, -1 for no filter; or true or false; or a text")
            ->required();
    }

    Reply run(Session& session) override {
        Groups const groups = readGroups(session);
        Reply reply;
        reply.error = inWords(setSearchOption(groups, group_, index_, wide(value_)));
        if (reply.ok()) {
            iParam const& param = *groups[group_].params[index_];
            reply.text = plainText(utf8(param.getLegend()) + ": " + valueText(param)) + "\n";
        }
        return reply;
    }

private:
    std::size_t group_ = 0;
    std::size_t index_ = 0;
    std::string value_;
};

class Columns final : public Command {
public:
    void declare(CLI::App&) override {}

    Reply run(Session& session) override {
        LightweightVector<LogAttribute> const columns = session.repository().getLogAttributes();
        Table table({{"Type", Table::Align::right}, {"Title"}});
        for (LogAttribute const& column : columns) {
            table.addRow({std::to_string(column.getType()), utf8(label(column.getDisplayName()))});
        }
        Reply reply;
        reply.text = table.render(session.screen());
        reply.members = [columns](JSON::Builder& json) {
            json.startArray("columns");
            for (LogAttribute const& column : columns) {
                json.startChild(nullptr);
                addNumber(json, "type", static_cast<std::int32_t>(column.getType()));
                json.add("title", label(column.getDisplayName()), true);
                addText(json, "key", column.getKey().view());
                json.add("editable", (column.flags & LogAttribute::eEditable) != 0);
                addNumber(json, "preferredWidth", column.preferredWidth);
                json.endChild();
            }
            json.endArray();
        };
        return reply;
    }
};

} // namespace

std::unique_ptr<Command> makeOptions() {
    return std::make_unique<Options>();
}
std::unique_ptr<Command> makeSet() {
    return std::make_unique<Set>();
}
std::unique_ptr<Command> makeColumns() {
    return std::make_unique<Columns>();
}

} // namespace zq

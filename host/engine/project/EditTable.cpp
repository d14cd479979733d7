#include "host/engine/project/EditTable.h"

#include <map>

#include "host/engine/project/DifferenceTable.h"
#include "host/engine/project/PictureColumns.h"

namespace engine {

namespace {

constexpr std::array<std::string_view, 15> ownColumns{
    "cookie",        "video_channels",  "audio_channels", "duration", "rate",
    "source_medium", "source_duration", "frame_based",    "transfer", "recording",
    "sequence_kind", "bit_rate",        "preview",        "media",    "picture_measured"};

std::vector<std::string_view> columns() {
    std::vector<std::string_view> all(ownColumns.begin(), ownColumns.end());
    all.insert(all.end(), pictureColumns.begin(), pictureColumns.end());
    return all;
}

std::string joined(std::vector<std::string_view> const& names, std::string const& before,
                   std::string const& between, bool twice) {
    std::string text;
    for (std::string_view const name : names) {
        text += text.empty() ? "" : between;
        if (twice) {
            text += name;
        }
        text += before;
        text += name;
    }
    return text;
}

std::string const& selectSql() {
    static std::string const sql = "SELECT number, " + joined(columns(), "", ", ", false) + " FROM edit";
    return sql;
}

std::string const& saveSql() {
    static std::string const sql = [] {
        std::vector<std::string_view> const all = columns();
        std::string marks = "?";
        for (std::size_t i = 1; i < all.size(); ++i) {
            marks += ", ?";
        }
        return "INSERT INTO edit (" + joined(all, "", ", ", false) + ") VALUES (" + marks +
               ") ON CONFLICT (cookie) DO UPDATE SET " + joined(all, " = excluded.", ", ", true);
    }();
    return sql;
}

} // namespace

std::vector<EditRecord> EditTable::all() {
    return load(std::nullopt);
}

std::optional<EditRecord> EditTable::find(Cookie const& cookie) {
    std::vector<EditRecord> found = find(std::set<Cookie>{cookie});
    return found.empty() ? std::nullopt : std::optional(std::move(found.front()));
}

std::vector<EditRecord> EditTable::find(std::set<Cookie> const& cookies) {
    std::string list;
    for (Cookie const& cookie : cookies) {
        list += (list.empty() ? "\"" : ",\"") + cookieText(cookie) + '"';
    }
    return load("[" + list + "]");
}

std::optional<std::int64_t> EditTable::numberOf(Cookie const& cookie) {
    Statement row = database_.prepare("SELECT number FROM edit WHERE cookie = ?");
    row.bind(1, std::string_view(cookieText(cookie)));
    return row.step() ? std::optional(row.integer(0)) : std::nullopt;
}

std::vector<EditRecord> EditTable::load(std::optional<std::string> const& cookies) {
    auto const rowsOf = [this, &cookies](std::string const& select, char const* key, char const* order) {
        std::string const among =
            " IN (SELECT number FROM edit WHERE cookie IN (SELECT value FROM json_each(?)))";
        Statement rows =
            database_.prepare(select + (cookies ? " WHERE " + (key + among) : "") + " ORDER BY " + order);
        if (cookies) {
            rows.bind(1, std::string_view(*cookies));
        }
        return rows;
    };

    std::vector<EditRecord> records;
    std::map<std::int64_t, std::size_t> places;
    Statement edits = rowsOf(selectSql(), "number", "number");
    while (edits.step()) {
        std::int64_t key = 0;
        EditRecord record;
        RowReader row(edits);
        row >> key >> record.cookie >> record.videoChannels >> record.audioChannels >> record.duration_s >>
            record.rate >> record.sourceMedium >> record.sourceDuration_s >> record.frameBased >>
            record.transfer >> record.open >> record.sequenceKind >> record.bitRate >>
            record.previewLocation >> record.mediaLocation >> record.videoMeasured >> record.video;
        if (!record.cookie.isNull()) {
            places.emplace(key, records.size());
            records.push_back(std::move(record));
        }
    }
    auto const recordOf = [&](std::int64_t key) {
        auto const found = places.find(key);
        return found != places.end() ? &records[found->second] : nullptr;
    };

    Statement attributes =
        rowsOf("SELECT edit, type, key, value FROM log_attribute", "edit", "edit, position");
    while (attributes.step()) {
        std::int64_t key = 0;
        auto type = LogAttribute::eName;
        std::string name;
        NarrowString value;
        RowReader(attributes) >> key >> type >> name >> value;
        if (EditRecord* const record = recordOf(key)) {
            record->logAttributes.add(LogAttribute(UIString(), name.c_str(), DBFieldTypes::text, 0, 1, type),
                                      std::move(value));
        }
    }
    Statement labels = rowsOf("SELECT edit, frame, scan, rate, counts_in_1001, source_offset FROM label",
                              "edit", "edit, position");
    while (labels.step()) {
        std::int64_t key = 0;
        EditLabel label;
        RowReader(labels) >> key >> label.position >> label.scanMode >> label.frameRate >>
            label.countsIn1001 >> label.sourceOffset;
        if (EditRecord* const record = recordOf(key)) {
            record->labels.push_back(label);
        }
    }
    Statement relinked = rowsOf("SELECT DISTINCT edit FROM difference", "edit", "edit");
    while (relinked.step()) {
        if (EditRecord* const record = recordOf(relinked.integer(0))) {
            record->differences = loadDifferences(database_, DifferencesOf::edit, relinked.integer(0));
        }
    }
    return records;
}

std::int64_t EditTable::save(EditRecord const& record) {
    Statement save = database_.prepare(saveSql());
    RowWriter row(save);
    row << record.cookie << record.videoChannels << record.audioChannels << record.duration_s << record.rate
        << record.sourceMedium << record.sourceDuration_s << record.frameBased << record.transfer
        << record.open << record.sequenceKind << record.bitRate << record.previewLocation
        << record.mediaLocation << record.videoMeasured << record.video;
    save.run();
    std::int64_t const number = numberOf(record.cookie).value();
    saveLists(number, record);
    return number;
}

void EditTable::saveLists(std::int64_t number, EditRecord const& record) {
    database_.prepare("DELETE FROM log_attribute WHERE edit = ?").bind(1, number).run();
    Statement attribute = database_.prepare("INSERT INTO log_attribute VALUES (?, ?, ?, ?, ?)");
    std::int64_t position = 0;
    for (LogAttributeMap::Entry const& entry : record.logAttributes.entries()) {
        RowWriter(attribute) << number << position++ << entry.type << entry.key << entry.value;
        attribute.run();
    }
    database_.prepare("DELETE FROM label WHERE edit = ?").bind(1, number).run();
    Statement label = database_.prepare("INSERT INTO label VALUES (?, ?, ?, ?, ?, ?, ?)");
    position = 0;
    for (EditLabel const& piece : record.labels) {
        RowWriter(label) << number << position++ << piece.position << piece.scanMode << piece.frameRate
                         << piece.countsIn1001 << piece.sourceOffset;
        label.run();
    }
    saveDifferences(database_, DifferencesOf::edit, number, record.differences);
}

} // namespace engine

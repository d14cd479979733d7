#include "host/engine/project/ExternalIdTable.h"

#include "host/engine/project/Row.h"

namespace engine {

std::vector<KeptId> ExternalIdTable::of(Cookie const& object) {
    Statement rows =
        database_.prepare("SELECT kind, id, serial FROM external_id WHERE object = ? ORDER BY kind");
    RowWriter(rows) << object;
    std::vector<KeptId> ids;
    while (rows.step()) {
        KeptId& id = ids.emplace_back();
        RowReader(rows) >> id.kind >> id.id >> id.serial;
    }
    return ids;
}

std::optional<ExternalIdTable::Owner> ExternalIdTable::findOwner(std::string_view kind, std::string_view id) {
    Statement row = database_.prepare("SELECT object, serial FROM external_id WHERE kind = ? AND id = ? "
                                      "ORDER BY serial DESC LIMIT 1");
    RowWriter(row) << kind << id;
    if (!row.step()) {
        return std::nullopt;
    }
    Owner owner;
    RowReader(row) >> owner.object >> owner.serial;
    return owner;
}

std::int64_t ExternalIdTable::lastSerial() {
    Statement row = database_.prepare("SELECT max(serial) FROM external_id");
    return row.step() ? row.integer(0) : 0;
}

void ExternalIdTable::put(Cookie const& object, KeptId const& id) {
    Statement put = database_.prepare("INSERT INTO external_id (object, kind, id, serial) "
                                      "VALUES (?, ?, ?, ?) ON CONFLICT (object, kind) "
                                      "DO UPDATE SET id = excluded.id, serial = excluded.serial");
    RowWriter(put) << object << std::string_view(id.kind) << std::string_view(id.id) << id.serial;
    put.run();
}

} // namespace engine

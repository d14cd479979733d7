// The external ids of the project's edits in its file.
//
// Errors are exceptions (DatabaseError).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/engine/project/EditRecord.h"
#include "host/engine/storage/Database.h"

namespace engine {

// An id as it is kept, in UTF-8. Of two, the one with the higher serial was associated later.
struct KeptId {
    std::string kind;
    std::string id;
    std::int64_t serial = 0;
};

// Thread: one at a time.
class ExternalIdTable {
public:
    explicit ExternalIdTable(Database& database) : database_(database) {}

    // In the order of the kinds.
    [[nodiscard]] std::vector<KeptId> of(Cookie const& object);
    struct Owner {
        Cookie object;
        std::int64_t serial = 0;
    };
    // The object that was associated with the id last.
    [[nodiscard]] std::optional<Owner> findOwner(std::string_view kind, std::string_view id);
    // 0 where there is none.
    [[nodiscard]] std::int64_t lastSerial();
    // Adds the id, or replaces the object's id of that kind.
    void put(Cookie const& object, KeptId const& id);

private:
    Database& database_;
};

} // namespace engine

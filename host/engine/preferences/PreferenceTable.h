// The preferences' table in its SQLite file.
//
// Errors are exceptions (DatabaseError), damage among them; the store above turns them into behaviour.
#pragma once

#include <functional>
#include <string>
#include <variant>

#include "host/engine/storage/Database.h"
#include "host/text/LightweightString.h"

namespace engine {

using PreferenceValue = std::variant<bool, std::int32_t, WideString>;

// Thread: one at a time.
class PreferenceTable {
public:
    // Opens or makes the file and its table. Throws for a file that is damaged or has another schema.
    explicit PreferenceTable(std::filesystem::path const& file);

    // A number that differs from an earlier one when another connection has committed in between.
    [[nodiscard]] std::int64_t dataVersion();
    // Calls back for each stored value. Rows of a type or range that no preference has are passed over.
    void forEach(std::function<void(std::string key, PreferenceValue value)> const& receiver);
    // On disk on return.
    void write(std::string_view key, PreferenceValue const& value);

private:
    Database database_;
    Statement version_;
    Statement all_;
    Statement put_;
};

} // namespace engine

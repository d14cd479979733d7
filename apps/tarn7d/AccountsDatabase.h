// The database file behind accounts, carts, purchases and payments. They share one file, so that a purchase
// is one transaction: what is charged, what is owned and what is left in the cart change together or not at
// all.
#pragma once

#include <filesystem>

#include "host/engine/storage/Database.h"

namespace tarn7d {

// Opens or makes the file, readable by its owner alone, and brings a file of an earlier version of the
// service up to date; its accounts stay. Every commit is on disk when it returns. Throws std::runtime_error
// when the file is damaged or made by a newer version. Any thread; the result belongs to one at a time.
[[nodiscard]] engine::Database openAccountsDatabase(std::filesystem::path const& file);

} // namespace tarn7d

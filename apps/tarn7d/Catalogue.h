// The catalogue of clips: what the footage folder holds, kept in a database and searched there.
//
// A clip's number belongs to its path below the footage folder for ever: it stays when the file changes, is
// kept when the file goes, comes back with it, and is never given to another file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <vector>

#include "apps/tarn7d/ClipQuery.h"
#include "apps/tarn7d/MediaProbe.h"
#include "apps/tarn7d/SideFile.h"
#include "host/engine/storage/Database.h"

namespace tarn7d {

// What tells a changed file from an unchanged one.
struct FileStamp {
    std::int64_t size_bytes = 0;
    std::int64_t modified_ns = 0; // since the epoch of the file clock

    friend auto operator<=>(FileStamp const&, FileStamp const&) = default;
};

struct Clip {
    std::int64_t id = 0;
    std::filesystem::path path; // below the footage folder; bytes as the file system gives them
    FileStamp stamp;
    ClipDescription description;
    MediaInfo media;
};

struct ClipPage {
    std::vector<Clip> clips;
    std::int64_t total = 0; // clips that match, on all pages
};

class Catalogue {
public:
    // A file that still grows is left for a later scan, or taken as it is.
    enum class Settling { wait, none };

    struct ScanReport {
        int added = 0;   // clips that are new, changed or back
        int removed = 0; // clips whose file is gone
        int skipped = 0; // new or changed files that are no moving pictures
        int waiting = 0; // files left for a later scan

        [[nodiscard]] bool changedClips() const noexcept { return added + removed > 0; }
    };

    // Opens or makes the database. Throws engine::DatabaseError when it cannot be opened or is damaged, and
    // std::runtime_error when a newer version of the service made it.
    Catalogue(std::filesystem::path databaseFile, std::filesystem::path footageFolder);

    // Makes the catalogue agree with the folder and its folders below. Unchanged files (size, time) are not
    // opened. New clips can be found while the scan goes on. Any thread, one scan at a time; ends early when
    // asked to stop. Throws engine::DatabaseError.
    ScanReport scan(Settling settling, std::stop_token const& stop = {});

    // The clips that match, best first and then by number: `count` of them behind the first `first`. Any
    // thread. Throws engine::DatabaseError.
    [[nodiscard]] ClipPage search(ClipQuery const& query, std::int64_t first, std::int64_t count);

    // The clip of that number if its file is there. Any thread. Throws engine::DatabaseError.
    [[nodiscard]] std::optional<Clip> find(std::int64_t id);

    // Clips whose file is there, or also those whose file is gone: they keep what was known of them.
    enum class Presence { there, ever };
    // The clips of these numbers in the order of the numbers; a number without a clip is passed over. Any
    // thread. Throws engine::DatabaseError.
    [[nodiscard]] std::vector<Clip> findAll(std::span<std::int64_t const> ids, Presence presence);

    [[nodiscard]] std::filesystem::path fileOf(Clip const& clip) const { return footage_ / clip.path; }

private:
    // What the scan knows of a file; the stamp of the side file counts as the clip's too.
    struct Known {
        std::int64_t id = 0; // 0 for a file that is no clip
        FileStamp stamp;
        FileStamp side;
        bool present = false;
    };
    struct Found {
        FileStamp stamp;
        FileStamp side;
    };
    // In order of names, so that new clips are numbered in that order.
    using FoundFiles = std::map<std::string, Found>;

    void createTables();
    void loadKnown();
    [[nodiscard]] FoundFiles listFiles() const;
    [[nodiscard]] static bool isUnchanged(Known const& known, Found const& found);
    [[nodiscard]] bool isGrowing(std::string const& path, FileStamp stamp);
    void addFile(std::string const& path, Found const& found, ScanReport& report);
    void storeClip(std::string const& path, Found const& found, MediaInfo const& media);
    void storeSkipped(std::string const& path, Found const& found);
    void removeMissing(FoundFiles const& found, ScanReport& report);
    void dropText(std::int64_t id);

    // A connection of its own for each reader at work: readers wait neither for each other nor for the scan.
    class Reader;
    [[nodiscard]] std::unique_ptr<engine::Database> takeReader();
    void giveReader(std::unique_ptr<engine::Database> reader);

    std::filesystem::path const databaseFile_;
    std::filesystem::path const footage_;

    std::mutex scanMutex_; // guards the three below
    engine::Database database_;
    std::unordered_map<std::string, Known> known_;
    std::unordered_map<std::string, FileStamp> growing_;

    std::mutex readersMutex_;
    std::vector<std::unique_ptr<engine::Database>> readers_;
};

} // namespace tarn7d

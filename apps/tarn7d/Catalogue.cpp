#include "apps/tarn7d/Catalogue.h"

#include <chrono>
#include <stdexcept>

#include "apps/tarn7d/Log.h"
#include "apps/tarn7d/Text.h"

namespace tarn7d {

namespace fs = std::filesystem;

namespace {

constexpr int schemaVersion = 1;

constexpr char const* schema = R"sql(
CREATE TABLE clip (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    path TEXT NOT NULL UNIQUE,
    present INTEGER NOT NULL,
    size INTEGER NOT NULL, modified INTEGER NOT NULL,
    side_size INTEGER NOT NULL, side_modified INTEGER NOT NULL,
    title TEXT NOT NULL, keywords TEXT NOT NULL, price_cents INTEGER NOT NULL,
    codec TEXT NOT NULL, width INTEGER NOT NULL, height INTEGER NOT NULL,
    standard INTEGER NOT NULL, aspect TEXT NOT NULL,
    rate_numerator INTEGER NOT NULL, rate_denominator INTEGER NOT NULL,
    duration_ms INTEGER NOT NULL, sound TEXT NOT NULL);
CREATE INDEX clip_present ON clip (present, id);
CREATE TABLE skipped (
    path TEXT PRIMARY KEY,
    size INTEGER NOT NULL, modified INTEGER NOT NULL) WITHOUT ROWID;
CREATE VIRTUAL TABLE clip_text USING fts5(
    title, keywords, prefix='2 3',
    tokenize="unicode61 remove_diacritics 2 categories 'L* N* Co So'");
)sql";

constexpr char const* clipColumns =
    "c.id, c.path, c.size, c.modified, c.title, c.keywords, c.price_cents, c.codec, c.width, c.height, "
    "c.standard, c.aspect, c.rate_numerator, c.rate_denominator, c.duration_ms, c.sound";

constexpr char const* filterCondition =
    "c.present=1 AND c.price_cents<=?1 AND c.height>?2 AND c.duration_ms>?3";

Clip readClip(engine::Statement const& row) {
    auto const number = [&row](int column) { return static_cast<int>(row.integer(column)); };
    Clip clip;
    clip.id = row.integer(0);
    clip.path = row.text(1);
    clip.stamp = {row.integer(2), row.integer(3)};
    clip.description = {std::string(row.text(4)), std::string(row.text(5)), row.integer(6)};
    clip.media = {.codec = std::string(row.text(7)),
                  .width = number(8),
                  .height = number(9),
                  .standard = number(10),
                  .aspect = std::string(row.text(11)),
                  .rate = {number(12), number(13)},
                  .duration_ms = row.integer(14),
                  .sound = std::string(row.text(15))};
    return clip;
}

FileStamp stampOf(fs::path const& file) {
    std::error_code error;
    auto const size = fs::file_size(file, error);
    if (error) {
        return {};
    }
    auto const modified = fs::last_write_time(file, error);
    if (error) {
        return {};
    }
    using std::chrono::duration_cast;
    using std::chrono::nanoseconds;
    return {static_cast<std::int64_t>(size), duration_cast<nanoseconds>(modified.time_since_epoch()).count()};
}

bool isHidden(fs::path const& name) {
    return name.native().starts_with('.');
}

} // namespace

// Lends a connection for the time of one question.
class Catalogue::Reader {
public:
    explicit Reader(Catalogue& catalogue) : catalogue_(catalogue), database_(catalogue.takeReader()) {}
    ~Reader() { catalogue_.giveReader(std::move(database_)); }
    Reader(Reader const&) = delete;
    Reader& operator=(Reader const&) = delete;

    [[nodiscard]] engine::Database& operator*() const noexcept { return *database_; }

private:
    Catalogue& catalogue_;
    std::unique_ptr<engine::Database> database_;
};

Catalogue::Catalogue(fs::path databaseFile, fs::path footageFolder)
    : databaseFile_(std::move(databaseFile)), footage_(std::move(footageFolder)),
      database_(databaseFile_, engine::Database::Sync::normal) {
    int const version = database_.schemaVersion();
    if (version > schemaVersion) {
        throw std::runtime_error("a newer version of the service made it");
    }
    if (version == 0) {
        createTables();
    }
    if (!database_.isSound()) {
        throw std::runtime_error("it is damaged");
    }
    loadKnown();
}

void Catalogue::createTables() {
    engine::Transaction transaction(database_);
    database_.execute(schema);
    database_.setSchemaVersion(schemaVersion);
    transaction.commit();
}

void Catalogue::loadKnown() {
    engine::Statement clips =
        database_.prepare("SELECT path, id, size, modified, side_size, side_modified, present FROM clip");
    while (clips.step()) {
        known_[std::string(clips.text(0))] = {clips.integer(1),
                                              {clips.integer(2), clips.integer(3)},
                                              {clips.integer(4), clips.integer(5)},
                                              clips.integer(6) != 0};
    }
    engine::Statement skipped = database_.prepare("SELECT path, size, modified FROM skipped");
    while (skipped.step()) {
        // A path that once was a clip counts as none here; its number stays in the table.
        known_[std::string(skipped.text(0))] = {0, {skipped.integer(1), skipped.integer(2)}, {}, false};
    }
}

Catalogue::FoundFiles Catalogue::listFiles() const {
    constexpr int deepest = 16;
    FoundFiles found;
    std::error_code error;
    fs::recursive_directory_iterator at(footage_, fs::directory_options::skip_permission_denied, error);
    for (; !error && at != fs::recursive_directory_iterator(); at.increment(error)) {
        std::error_code unreadable;
        fs::path const& path = at->path();
        bool const hidden = isHidden(path.filename());
        if (at->is_directory(unreadable)) {
            if (hidden || at.depth() >= deepest) {
                at.disable_recursion_pending();
            }
            continue;
        }
        if (hidden || path.extension() == ".toml" || !at->is_regular_file(unreadable)) {
            continue;
        }
        found.emplace(path.lexically_relative(footage_).native(),
                      Found{stampOf(path), stampOf(sideFileOf(path))});
    }
    if (error) {
        throw fs::filesystem_error("cannot read the footage folder", footage_, error);
    }
    return found;
}

bool Catalogue::isGrowing(std::string const& path, FileStamp stamp) {
    auto const [entry, isNew] = growing_.try_emplace(path, stamp);
    if (!isNew && entry->second == stamp) {
        growing_.erase(entry);
        return false;
    }
    entry->second = stamp;
    return true;
}

bool Catalogue::isUnchanged(Known const& known, Found const& found) {
    bool const isClip = known.id != 0;
    return known.stamp == found.stamp && (!isClip || (known.present && known.side == found.side));
}

Catalogue::ScanReport Catalogue::scan(Settling settling, std::stop_token const& stop) {
    std::lock_guard const lock(scanMutex_);
    FoundFiles const found = listFiles();
    ScanReport report;
    for (auto const& [path, file] : found) {
        if (stop.stop_requested()) {
            return report;
        }
        auto const known = known_.find(path);
        if (known != known_.end() && isUnchanged(known->second, file)) {
            continue;
        }
        if (settling == Settling::wait && isGrowing(path, file.stamp)) {
            ++report.waiting;
            continue;
        }
        addFile(path, file, report);
    }
    removeMissing(found, report);
    return report;
}

void Catalogue::addFile(std::string const& path, Found const& found, ScanReport& report) {
    std::optional<MediaInfo> const media = probeMedia(footage_ / path);
    engine::Transaction transaction(database_);
    if (media) {
        storeClip(path, found, *media);
        ++report.added;
    } else {
        logLine("skipped, no moving picture: " + path);
        storeSkipped(path, found);
        ++report.skipped;
    }
    transaction.commit();
}

void Catalogue::storeClip(std::string const& path, Found const& found, MediaInfo const& media) {
    ClipDescription const description = describeClip(footage_, path, media.height);
    engine::Statement store = database_.prepare(R"sql(
INSERT INTO clip (path, present, size, modified, side_size, side_modified, title, keywords, price_cents, codec,
    width, height, standard, aspect, rate_numerator, rate_denominator, duration_ms, sound)
VALUES (?1, 1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16, ?17)
ON CONFLICT (path) DO UPDATE SET present=1, size=?2, modified=?3, side_size=?4, side_modified=?5, title=?6,
    keywords=?7, price_cents=?8, codec=?9, width=?10, height=?11, standard=?12, aspect=?13,
    rate_numerator=?14, rate_denominator=?15, duration_ms=?16, sound=?17
RETURNING id)sql");
    store.bind(1, std::string_view(path));
    store.bind(2, found.stamp.size_bytes).bind(3, found.stamp.modified_ns);
    store.bind(4, found.side.size_bytes).bind(5, found.side.modified_ns);
    store.bind(6, std::string_view(description.title)).bind(7, std::string_view(description.keywords));
    store.bind(8, description.price_cents);
    store.bind(9, std::string_view(media.codec)).bind(10, media.width).bind(11, media.height);
    store.bind(12, media.standard).bind(13, std::string_view(media.aspect));
    store.bind(14, media.rate.numerator).bind(15, media.rate.denominator);
    store.bind(16, media.duration_ms).bind(17, std::string_view(media.sound));
    std::int64_t const id = store.step() ? store.integer(0) : 0;
    store.run();

    dropText(id);
    engine::Statement text =
        database_.prepare("INSERT INTO clip_text (rowid, title, keywords) VALUES (?1, ?2, ?3)");
    text.bind(1, id)
        .bind(2, std::string_view(segmentForSearch(description.title)))
        .bind(3, std::string_view(segmentForSearch(description.keywords)))
        .run();
    database_.prepare("DELETE FROM skipped WHERE path=?1").bind(1, std::string_view(path)).run();
    known_[path] = {id, found.stamp, found.side, true};
}

void Catalogue::storeSkipped(std::string const& path, Found const& found) {
    Known& known = known_[path];
    if (known.id != 0) {
        database_.prepare("UPDATE clip SET present=0 WHERE id=?1").bind(1, known.id).run();
        dropText(known.id);
    }
    database_.prepare("INSERT OR REPLACE INTO skipped (path, size, modified) VALUES (?1, ?2, ?3)")
        .bind(1, std::string_view(path))
        .bind(2, found.stamp.size_bytes)
        .bind(3, found.stamp.modified_ns)
        .run();
    known = {0, found.stamp, found.side, false};
}

void Catalogue::removeMissing(FoundFiles const& found, ScanReport& report) {
    for (auto entry = known_.begin(); entry != known_.end();) {
        if (found.contains(entry->first)) {
            ++entry;
            continue;
        }
        growing_.erase(entry->first);
        if (entry->second.id == 0) {
            database_.prepare("DELETE FROM skipped WHERE path=?1")
                .bind(1, std::string_view(entry->first))
                .run();
            entry = known_.erase(entry);
            continue;
        }
        if (entry->second.present) {
            engine::Transaction transaction(database_);
            database_.prepare("UPDATE clip SET present=0 WHERE id=?1").bind(1, entry->second.id).run();
            dropText(entry->second.id);
            transaction.commit();
            entry->second.present = false;
            ++report.removed;
        }
        ++entry;
    }
}

void Catalogue::dropText(std::int64_t id) {
    database_.prepare("DELETE FROM clip_text WHERE rowid=?1").bind(1, id).run();
}

ClipPage Catalogue::search(ClipQuery const& query, std::int64_t first, std::int64_t count) {
    Reader const reader(*this);
    bool const hasWords = !query.expression.empty();
    std::string const condition =
        hasWords
            ? std::string("FROM clip_text t JOIN clip c ON c.id=t.rowid WHERE t.clip_text MATCH ?4 AND ") +
                  filterCondition
            : std::string("FROM clip c WHERE ") + filterCondition;
    auto const bindFilters = [&](engine::Statement& statement) {
        statement.bind(1, query.highestPrice_cents).bind(2, query.linesAbove).bind(3, query.durationAbove_ms);
        if (hasWords) {
            statement.bind(4, std::string_view(query.expression));
        }
    };
    // Both questions see the same state of the catalogue.
    (*reader).execute("BEGIN");
    ClipPage page;
    try {
        engine::Statement total = (*reader).prepare("SELECT count(*) " + condition);
        bindFilters(total);
        page.total = total.step() ? total.integer(0) : 0;

        // A word in the title weighs more than one among the keywords.
        std::string const order =
            hasWords ? " ORDER BY bm25(t.clip_text, 10.0, 3.0), c.id" : " ORDER BY c.id";
        engine::Statement rows = (*reader).prepare("SELECT " + std::string(clipColumns) + " " + condition +
                                                   order + " LIMIT ?5 OFFSET ?6");
        bindFilters(rows);
        rows.bind(5, count).bind(6, first);
        while (rows.step()) {
            page.clips.push_back(readClip(rows));
        }
    } catch (engine::DatabaseError const&) {
        (*reader).execute("ROLLBACK");
        throw;
    }
    (*reader).execute("COMMIT");
    return page;
}

std::optional<Clip> Catalogue::find(std::int64_t id) {
    Reader const reader(*this);
    engine::Statement row = (*reader).prepare("SELECT " + std::string(clipColumns) +
                                              " FROM clip c WHERE c.id=?1 AND c.present=1");
    row.bind(1, id);
    return row.step() ? std::optional(readClip(row)) : std::nullopt;
}

std::unique_ptr<engine::Database> Catalogue::takeReader() {
    {
        std::lock_guard const lock(readersMutex_);
        if (!readers_.empty()) {
            std::unique_ptr<engine::Database> reader = std::move(readers_.back());
            readers_.pop_back();
            return reader;
        }
    }
    return std::make_unique<engine::Database>(databaseFile_, engine::Database::Sync::normal);
}

void Catalogue::giveReader(std::unique_ptr<engine::Database> reader) {
    constexpr std::size_t mostKept = 16;
    std::lock_guard const lock(readersMutex_);
    if (readers_.size() < mostKept) {
        readers_.push_back(std::move(reader));
    }
}

} // namespace tarn7d

#include "apps/tarn7d/Catalogue.h"

#include <stdexcept>

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

std::vector<Clip> Catalogue::findAll(std::span<std::int64_t const> ids, Presence presence) {
    Reader const reader(*this);
    engine::Statement row = (*reader).prepare("SELECT " + std::string(clipColumns) +
                                              " FROM clip c WHERE c.id=?1 AND c.present>=?2");
    row.bind(2, presence == Presence::there ? 1 : 0);
    std::vector<Clip> clips;
    clips.reserve(ids.size());
    for (std::int64_t const id : ids) {
        row.reset();
        row.bind(1, id);
        if (row.step()) {
            clips.push_back(readClip(row));
        }
    }
    return clips;
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

// The part of the catalogue that looks the footage folder through and stores what it finds.
#include <chrono>

#include "apps/tarn7d/Catalogue.h"
#include "apps/tarn7d/Log.h"
#include "apps/tarn7d/Text.h"

namespace tarn7d {

namespace fs = std::filesystem;

namespace {

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

} // namespace tarn7d

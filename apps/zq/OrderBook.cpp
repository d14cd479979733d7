#include "apps/zq/OrderBook.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <mutex>
#include <system_error>

#include <fcntl.h>

#include "host/engine/files/FileDescriptor.h"
#include "host/engine/storage/Database.h"

namespace zq {

namespace {

using engine::Database;
using engine::Statement;
using engine::Transaction;

constexpr int schema = 2;

constexpr std::array states{OrderState::running, OrderState::done, OrderState::waiting, OrderState::doubtful,
                            OrderState::refused};

// A word that is none of these, as a later version may write, is in doubt: nothing is bought over it.
OrderState stateOf(std::string_view word) {
    auto const found = std::ranges::find_if(states, [&](OrderState state) { return word == wordFor(state); });
    return found != states.end() ? *found : OrderState::doubtful;
}

constexpr char const* createTables =
    "CREATE TABLE IF NOT EXISTS run (number INTEGER PRIMARY KEY AUTOINCREMENT);" // no number twice
    "CREATE TABLE IF NOT EXISTS purchase ("
    " number INTEGER PRIMARY KEY AUTOINCREMENT,"
    " repository TEXT NOT NULL, user TEXT NOT NULL, key TEXT NOT NULL, payment TEXT NOT NULL,"
    " state TEXT NOT NULL, code INTEGER, text TEXT NOT NULL, page TEXT NOT NULL,"
    " awaited INTEGER NOT NULL, sent_s INTEGER NOT NULL,"
    " run INTEGER NOT NULL,"    // that has begun it
    " change INTEGER NOT NULL," // rises with each change of any row
    " ended INTEGER NOT NULL DEFAULT 0,"
    " UNIQUE (repository, key));"
    "CREATE INDEX IF NOT EXISTS purchase_change ON purchase (change);"
    "CREATE TABLE IF NOT EXISTS purchase_clip ("
    " purchase INTEGER NOT NULL REFERENCES purchase ON DELETE CASCADE,"
    " position INTEGER NOT NULL, clip TEXT NOT NULL,"
    " PRIMARY KEY (purchase, position)) WITHOUT ROWID;";

constexpr char const* addEnded = "ALTER TABLE purchase ADD COLUMN ended INTEGER NOT NULL DEFAULT 0";

constexpr std::string_view columns = "SELECT number, repository, user, key, payment, state, code, text, "
                                     "page, awaited, sent_s, run, ended FROM purchase ";
constexpr std::string_view isBlocking =
    "(state NOT IN ('done','waiting','refused') OR (state = 'done' AND awaited))";
constexpr std::string_view nextChange = "(SELECT COALESCE(MAX(change), 0) + 1 FROM purchase)";

// Each program that uses the book holds the byte of its run's number, for as long as it lives, however it
// ends. The locks are of the open file, so that two books in one process do not lift each other's.
class RunLocks {
public:
    explicit RunLocks(std::filesystem::path const& file)
        : file_(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)) {
        if (!file_) {
            fail();
        }
    }

    // False where another holds it.
    [[nodiscard]] bool hold(std::int64_t run) const {
        struct flock lock = byteOf(run);
        if (::fcntl(file_.get(), F_OFD_SETLK, &lock) == 0) {
            return true;
        }
        if (errno != EAGAIN && errno != EACCES) {
            fail();
        }
        return false;
    }

    // Of another run than the own one.
    [[nodiscard]] bool isHeld(std::int64_t run) const {
        struct flock lock = byteOf(run);
        if (::fcntl(file_.get(), F_OFD_GETLK, &lock) != 0) {
            fail();
        }
        return lock.l_type != F_UNLCK;
    }

private:
    static struct flock byteOf(std::int64_t run) {
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        lock.l_start = run;
        lock.l_len = 1;
        return lock;
    }
    [[noreturn]] static void fail() { throw std::system_error(errno, std::generic_category()); }

    engine::FileDescriptor file_;
};

} // namespace

char const* wordFor(OrderState state) {
    switch (state) {
    case OrderState::running:
        return "running";
    case OrderState::done:
        return "done";
    case OrderState::waiting:
        return "waiting";
    case OrderState::doubtful:
        return "doubtful";
    case OrderState::refused:
        break;
    }
    return "refused";
}

class OrderBook::Implementation {
public:
    explicit Implementation(std::filesystem::path file) : file_(std::move(file)) {}

    // Runs the work over the open book, one at a time.
    template <class Work>
    auto use(Work const& work) {
        std::lock_guard const lock(mutex_);
        try {
            if (!database_) {
                open();
            }
            return work();
        } catch (engine::DatabaseError const& error) {
            std::string const why = error.isDamage() ? "it is damaged" : error.what();
            close();
            throw OrderBookError(file_.string() + " cannot be used: " + why);
        } catch (std::system_error const& error) {
            close();
            throw OrderBookError(file_.string() + " cannot be used: " + error.code().message());
        }
    }

    Begun begin(KeptOrder const& order, std::int64_t listed) {
        Transaction transaction(*database_);
        doubtThoseOfGoneRuns();
        Begun begun;
        if (std::optional<KeptOrder> known = find(order.repository, order.key)) {
            begun = {Begun::Kind::known, *std::move(known)};
        } else if (std::optional<KeptOrder> other =
                       inTheWay(order.repository, order.user, order.clips, listed)) {
            begun = {Begun::Kind::blocked, *std::move(other)};
        } else {
            insert(order);
            removeOldest();
            begun = {Begun::Kind::written, order};
        }
        transaction.commit();
        return begun;
    }

    void finish(KeptOrder const& order) { static_cast<void>(write(order, "state = 'running'")); }

    bool settle(KeptOrder const& order) {
        return write(order, order.state == OrderState::refused ? "state IN ('waiting', 'doubtful')"
                                                               : "state <> 'running' AND awaited");
    }

    KeptOrder withdraw(std::string const& repository, std::string const& key, std::string const& text) {
        Transaction transaction(*database_);
        doubtThoseOfGoneRuns();
        std::optional<KeptOrder> order = find(repository, key);
        if (!order) {
            order.emplace();
            order->repository = repository;
            order->key = key;
            order->state = OrderState::refused;
            order->text = text;
            order->isAwaited = false;
            insert(*order);
        }
        transaction.commit();
        return *std::move(order);
    }

    std::optional<KeptOrder> inTheWay(std::string const& repository, std::string const& user,
                                      std::vector<std::string> const& clips,
                                      std::int64_t listed = std::numeric_limits<std::int64_t>::max()) {
        Statement query = database_->prepare(
            std::string(columns) + "WHERE repository = ? AND user = ? AND (" + std::string(isBlocking) +
            " OR (state = 'done' AND change > ?)) AND EXISTS (SELECT 1 FROM purchase_clip"
            " WHERE purchase = purchase.number AND clip = ?) ORDER BY awaited DESC LIMIT 1");
        for (std::string const& clip : clips) {
            query.bind(1, repository).bind(2, user).bind(3, listed).bind(4, clip);
            if (query.step()) {
                return orderOf(query);
            }
            query.reset();
        }
        return std::nullopt;
    }

    std::int64_t newest() { return number("SELECT COALESCE(MAX(change), 0) FROM purchase"); }

    std::vector<KeptOrder> news() {
        std::int64_t const version = number("PRAGMA data_version");
        // A program that ends changes nothing in the file.
        if (version == version_ && goneRuns().empty()) {
            return {};
        }
        bool const isFirst = !seen_;
        Transaction transaction(*database_);
        doubtThoseOfGoneRuns();
        std::vector<KeptOrder> orders;
        Statement query = database_->prepare(
            std::string(columns) + "WHERE change > ? " +
            (isFirst ? "AND (state = 'waiting' OR " + std::string(isBlocking) + ") " : std::string()) +
            "ORDER BY number");
        query.bind(1, seen_.value_or(0));
        while (query.step()) {
            // What runs here is known here, and better: the book may not have been told of its end.
            KeptOrder order = orderOf(query);
            if (order.state != OrderState::running || !isOwnRun(query.integer(11))) {
                orders.push_back(std::move(order));
            }
        }
        std::int64_t const seen = newest();
        transaction.commit();
        seen_ = seen;
        version_ = version;
        return orders;
    }

private:
    void open() {
        auto database = std::make_unique<Database>(file_, Database::Sync::full);
        std::error_code ignored; // the home is its user's alone in any case
        std::filesystem::permissions(
            file_, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write, ignored);
        Transaction transaction(*database);
        int const written = database->schemaVersion();
        if (written > schema) {
            throw OrderBookError(file_.string() + " cannot be used: a later version has written it");
        }
        database->execute(createTables);
        if (written == 1) {
            database->execute(addEnded);
        }
        if (written != schema) {
            database->setSchemaVersion(schema);
        }
        auto locks = locks_ ? nullptr : std::make_unique<RunLocks>(file_.string() + ".runs");
        RunLocks const& held = locks_ ? *locks_ : *locks;
        std::int64_t run = 0;
        do {
            database->execute("DELETE FROM run; INSERT INTO run DEFAULT VALUES");
            run = database->lastInsertId();
        } while (!held.hold(run)); // by a program that has another file of that name open still
        transaction.commit();
        database_ = std::move(database);
        if (locks) {
            locks_ = std::move(locks);
        }
        runs_.push_back(run); // what an earlier opening of this book has begun is its own still
    }

    void close() {
        database_.reset();
        version_.reset();
    }

    [[nodiscard]] std::int64_t number(std::string_view sql) {
        Statement query = database_->prepare(sql);
        return query.step() ? query.integer(0) : 0;
    }

    [[nodiscard]] bool isOwnRun(std::int64_t run) const {
        return std::ranges::find(runs_, run) != runs_.end();
    }
    // Runs that have gone and left something running.
    [[nodiscard]] std::vector<std::int64_t> goneRuns() {
        std::vector<std::int64_t> gone;
        Statement query = database_->prepare("SELECT DISTINCT run FROM purchase WHERE state = 'running'");
        while (query.step()) {
            std::int64_t const run = query.integer(0);
            if (!isOwnRun(run) && !locks_->isHeld(run)) {
                gone.push_back(run);
            }
        }
        return gone;
    }

    void doubtThoseOfGoneRuns() {
        for (std::int64_t const run : goneRuns()) {
            Statement change = database_->prepare(
                "UPDATE purchase SET state = 'doubtful', text = ?, change = " + std::string(nextChange) +
                " WHERE state = 'running' AND run = ?");
            change.bind(1, "the program ended before the answer came; the list of owned clips will tell "
                           "whether they were bought");
            change.bind(2, run).run();
        }
    }

    void insert(KeptOrder const& order) {
        Statement row = database_->prepare(
            "INSERT INTO purchase (repository, user, key, payment, state, code, text, page, awaited, sent_s, "
            "run, change) VALUES (?, ?, ?, ?, ?, NULL, ?, '', ?, ?, ?, " +
            std::string(nextChange) + ")");
        row.bind(1, order.repository).bind(2, order.user).bind(3, order.key);
        row.bind(4, order.payment == Payment::credits ? "credits" : "page").bind(5, wordFor(order.state));
        row.bind(6, order.text).bind(7, order.isAwaited ? 1 : 0);
        row.bind(8, std::chrono::duration_cast<std::chrono::seconds>(order.sent.time_since_epoch()).count());
        row.bind(9, runs_.back()).run();
        std::int64_t const number = database_->lastInsertId();
        Statement clip =
            database_->prepare("INSERT INTO purchase_clip (purchase, position, clip) VALUES (?, ?, ?)");
        for (std::size_t i = 0; i < order.clips.size(); ++i) {
            clip.bind(1, number).bind(2, static_cast<std::int64_t>(i)).bind(3, order.clips[i]).run();
        }
    }

    bool write(KeptOrder const& order, std::string const& condition) {
        Statement row = database_->prepare(
            "UPDATE purchase SET state = ?, code = ?, text = ?, page = ?, awaited = ?, ended = ?, change = " +
            std::string(nextChange) + " WHERE repository = ? AND key = ? AND " + condition);
        row.bind(1, wordFor(order.state));
        if (order.code) {
            row.bind(2, *order.code);
        } else {
            row.bind(2, nullptr);
        }
        row.bind(3, order.text).bind(4, order.page).bind(5, order.isAwaited ? 1 : 0);
        row.bind(6, order.wasEnded ? 1 : 0).bind(7, order.repository).bind(8, order.key).run();
        return database_->changes() != 0;
    }

    // Never the newest change: it counts the next one.
    void removeOldest() {
        database_->execute(
            ("DELETE FROM purchase WHERE number IN (SELECT number FROM purchase WHERE state IN "
             "('done', 'refused') AND NOT (state = 'done' AND awaited) ORDER BY change DESC "
             "LIMIT -1 OFFSET " +
             std::to_string(most) + ")")
                .c_str());
    }

    [[nodiscard]] std::optional<KeptOrder> find(std::string const& repository, std::string const& key) {
        Statement query = database_->prepare(std::string(columns) + "WHERE repository = ? AND key = ?");
        query.bind(1, repository).bind(2, key);
        return query.step() ? std::optional(orderOf(query)) : std::nullopt;
    }

    [[nodiscard]] KeptOrder orderOf(Statement const& row) {
        KeptOrder order;
        order.repository = row.text(1);
        order.user = row.text(2);
        order.key = row.text(3);
        order.payment = row.text(4) == "page" ? Payment::cash : Payment::credits;
        order.state = stateOf(row.text(5));
        if (!row.isNull(6)) {
            order.code = static_cast<std::int32_t>(row.integer(6));
        }
        order.text = row.text(7);
        order.page = row.text(8);
        order.isAwaited = row.integer(9) != 0;
        order.sent = std::chrono::system_clock::time_point(std::chrono::seconds(row.integer(10)));
        order.wasEnded = row.integer(12) != 0;
        Statement clips =
            database_->prepare("SELECT clip FROM purchase_clip WHERE purchase = ? ORDER BY position");
        clips.bind(1, row.integer(0));
        while (clips.step()) {
            order.clips.emplace_back(clips.text(0));
        }
        return order;
    }

    std::filesystem::path const file_;
    std::mutex mutex_;
    std::unique_ptr<RunLocks> locks_;
    std::vector<std::int64_t> runs_; // of this book, one for each time it was opened
    std::unique_ptr<Database> database_;
    std::optional<std::int64_t> seen_;    // the newest change that news() has told
    std::optional<std::int64_t> version_; // of the file, as of then
};

OrderBook::OrderBook(std::filesystem::path file)
    : implementation_(std::make_unique<Implementation>(std::move(file))) {}

OrderBook::~OrderBook() = default;

OrderBook::Begun OrderBook::begin(KeptOrder const& order, std::int64_t listed) {
    return implementation_->use([&] { return implementation_->begin(order, listed); });
}

std::int64_t OrderBook::newest() {
    return implementation_->use([&] { return implementation_->newest(); });
}

void OrderBook::finish(KeptOrder const& order) {
    implementation_->use([&] { implementation_->finish(order); });
}

bool OrderBook::settle(KeptOrder const& order) {
    return implementation_->use([&] { return implementation_->settle(order); });
}

KeptOrder OrderBook::withdraw(std::string const& repository, std::string const& key,
                              std::string const& text) {
    return implementation_->use([&] { return implementation_->withdraw(repository, key, text); });
}

std::optional<KeptOrder> OrderBook::inTheWay(std::string const& repository, std::string const& user,
                                             std::vector<std::string> const& clips) {
    return implementation_->use([&] { return implementation_->inTheWay(repository, user, clips); });
}

std::vector<KeptOrder> OrderBook::news() {
    return implementation_->use([&] { return implementation_->news(); });
}

} // namespace zq

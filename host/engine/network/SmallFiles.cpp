#include "host/engine/network/SmallFiles.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <utility>

#include "host/engine/network/CurlOption.h"
#include "host/engine/os/isTaskCancelled.h"

namespace engine {

namespace {

using Clock = std::chrono::steady_clock;

constexpr long connectionsForOneServer = 6;
constexpr long keptConnections = 12;
constexpr std::size_t mostAtOnce = 100; // the streams that a server of HTTP/2 usually allows
constexpr long bufferSize = 32L << 10;
constexpr int longestPoll_ms = 100; // between two looks at the task's state

constexpr long ok = 200;
constexpr long firstRefusal = 400;
constexpr long tooManyRequests = 429;
constexpr long unavailable = 503;

// Origins that asked for patience in this call of fetch.
using Impatient = std::set<std::string>;

template <class Value>
Value info(CURL* easy, CURLINFO what) {
    Value value{};
    curl_easy_getinfo(easy, what, &value);
    return value;
}

} // namespace

// One request at a time.
class SmallFiles::Get {
public:
    Get(Connector const& connector, curl_slist* headers) : easy_(curl_easy_init()) {
        if (!easy_) {
            throw std::runtime_error("libcurl gives no handle");
        }
        CURL* const easy = easy_.get();
        connector.configure(easy);
        setOption(easy, CURLOPT_ERRORBUFFER, detail_);
        setOption(easy, CURLOPT_HEADERFUNCTION, &Get::header);
        setOption(easy, CURLOPT_HEADERDATA, this);
        setOption(easy, CURLOPT_PREREQFUNCTION, &Get::beforeRequest);
        setOption(easy, CURLOPT_PREREQDATA, this);
        setOption(easy, CURLOPT_WRITEFUNCTION, &Get::write);
        setOption(easy, CURLOPT_WRITEDATA, this);
        setOption(easy, CURLOPT_PRIVATE, this);
        setOption(easy, CURLOPT_HTTPHEADER, headers);
        setOption(easy, CURLOPT_USERAGENT, "zq");
        setOption(easy, CURLOPT_BUFFERSIZE, bufferSize);
        setOption(easy, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(largestFile));
    }

    // `impatient` outlives the request.
    void prepare(Connector const& connector, std::size_t index, ServerAddress server,
                 std::string const& address, Impatient& impatient) {
        index_ = index;
        impatient_ = &impatient;
        server_ = std::move(server);
        body_.clear();
        detail_[0] = '\0';
        CURL* const easy = easy_.get();
        connector.chooseProxy(easy, server_);
        setOption(easy, CURLOPT_URL, address.c_str());
        // A handshake tells whether its connection carries several requests: worth waiting for. Without TLS
        // only a whole answer would.
        setOption(easy, CURLOPT_HTTP_VERSION,
                  server_.secure ? long{CURL_HTTP_VERSION_2TLS} : long{CURL_HTTP_VERSION_1_1});
        setOption(easy, CURLOPT_PIPEWAIT, server_.secure ? 1L : 0L);
    }

    [[nodiscard]] CURL* easy() const noexcept { return easy_.get(); }
    [[nodiscard]] std::size_t index() const noexcept { return index_; }
    [[nodiscard]] ServerAddress const& server() const noexcept { return server_; }
    [[nodiscard]] std::string const& body() const noexcept { return body_; }
    [[nodiscard]] char const* detail() const noexcept { return detail_; }
    [[nodiscard]] bool isEncoded() const {
        curl_header* found = nullptr;
        return curl_easy_header(easy(), "Content-Encoding", 0, CURLH_HEADER, -1, &found) == CURLHE_OK &&
               curl_strequal(found->value, "identity") == 0;
    }
    [[nodiscard]] curl_off_t bytesReceived() const {
        return info<long>(easy(), CURLINFO_HEADER_SIZE) + info<curl_off_t>(easy(), CURLINFO_SIZE_DOWNLOAD_T);
    }

private:
    struct EasyFree {
        void operator()(CURL* easy) const noexcept { curl_easy_cleanup(easy); }
    };

    static std::size_t header(char*, std::size_t size, std::size_t count, void* self) {
        auto* const get = static_cast<Get*>(self);
        auto const status = info<long>(get->easy(), CURLINFO_RESPONSE_CODE);
        try {
            if (status == tooManyRequests || status == unavailable) {
                get->impatient_->insert(get->server_.origin());
            }
        } catch (std::bad_alloc const&) {
            return size * count == 0 ? 1 : 0; // anything but all
        }
        return size * count;
    }

    // libcurl begins a waiting request as soon as a connection is free, before anyone here learns of the
    // answer that came on it.
    static int beforeRequest(void* self, char*, char*, int, int) {
        auto* const get = static_cast<Get*>(self);
        bool const mayAsk = !get->impatient_->contains(get->server_.origin());
        return mayAsk ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
    }

    static std::size_t write(char* bytes, std::size_t size, std::size_t count, void* self) {
        std::string& body = static_cast<Get*>(self)->body_;
        std::size_t const total = size * count;
        if (total > largestFile - body.size()) {
            return total == 0 ? 1 : 0; // anything but `total`
        }
        try {
            body.append(bytes, total);
        } catch (std::bad_alloc const&) {
            return total == 0 ? 1 : 0;
        }
        return total;
    }

    char detail_[CURL_ERROR_SIZE] = {};
    std::unique_ptr<CURL, EasyFree> easy_; // writes to detail_ to its end
    std::size_t index_ = 0;
    Impatient* impatient_ = nullptr;
    ServerAddress server_;
    std::string body_;
};

// One call of fetch. What runs when it ends is ended.
class SmallFiles::Run {
public:
    Run(SmallFiles& owner, std::vector<std::string> const& addresses, Arrival const& arrival)
        : owner_(owner), addresses_(addresses), arrival_(arrival) {}
    ~Run() {
        while (!running_.empty()) {
            curl_multi_remove_handle(owner_.multi_.get(), running_.back()->easy());
            running_.pop_back(); // and its connection with it, which is in the middle of an answer
        }
    }
    Run(Run const&) = delete;
    Run& operator=(Run const&) = delete;

    void drive() {
        auto lastMove = Clock::now();
        curl_off_t moved = -1;
        for (;;) {
            begin();
            int count = 0;
            if (curl_multi_perform(owner_.multi_.get(), &count) != CURLM_OK) {
                throw std::runtime_error("libcurl cannot go on");
            }
            bool const ended = takeEnded();
            if (running_.empty() && next_ == addresses_.size()) {
                return;
            }
            if (isTaskCancelled()) {
                return abandon("cancelled was the task that spoke to ");
            }
            curl_off_t const now = bytesMoved();
            if (ended || now != moved) {
                moved = now;
                lastMove = Clock::now();
            } else if (Clock::now() - lastMove > owner_.connector_.settings().stallTimeout) {
                return abandon("silent for too long was ");
            }
            if (!ended &&
                curl_multi_poll(owner_.multi_.get(), nullptr, 0, longestPoll_ms, nullptr) != CURLM_OK) {
                throw std::runtime_error("libcurl cannot wait");
            }
        }
    }

private:
    void begin() {
        for (; running_.size() < mostAtOnce && next_ < addresses_.size(); ++next_) {
            std::string const& address = addresses_[next_];
            std::optional<ServerAddress> server = ServerAddress::ofUrl(address);
            if (!server || impatient_.contains(server->origin())) {
                continue;
            }
            if (owner_.resting_.empty()) {
                owner_.resting_.push_back(std::make_unique<Get>(owner_.connector_, owner_.headers_.get()));
            }
            running_.reserve(running_.size() + 1);
            Get& get = *owner_.resting_.back();
            get.prepare(owner_.connector_, next_, std::move(*server), address, impatient_);
            if (curl_multi_add_handle(owner_.multi_.get(), get.easy()) != CURLM_OK) {
                throw std::runtime_error("libcurl takes no request");
            }
            running_.push_back(std::move(owner_.resting_.back()));
            owner_.resting_.pop_back();
        }
    }

    [[nodiscard]] bool takeEnded() {
        bool any = false;
        int left = 0;
        while (CURLMsg const* const message = curl_multi_info_read(owner_.multi_.get(), &left)) {
            if (message->msg != CURLMSG_DONE) {
                continue;
            }
            any = true;
            CURLcode const code = message->data.result; // gone with the handle's removal
            CURL* const easy = message->easy_handle;
            auto const place = std::ranges::find(running_, easy, [](auto const& get) { return get->easy(); });
            curl_multi_remove_handle(owner_.multi_.get(), easy);
            owner_.resting_.push_back(std::move(*place));
            running_.erase(place);
            conclude(*owner_.resting_.back(), code);
        }
        return any;
    }

    void conclude(Get const& get, CURLcode code) {
        if (code == CURLE_ABORTED_BY_CALLBACK) {
            return; // nothing was asked
        }
        CURL* const easy = get.easy();
        auto const status = info<long>(easy, CURLINFO_RESPONSE_CODE);
        ServerStatistics call = figures(get);
        if (code != CURLE_OK) {
            bool const connected = info<curl_off_t>(easy, CURLINFO_PRETRANSFER_TIME_T) > 0;
            call.failures = 1;
            call.lastError = owner_.connector_.explain(code, get.detail(), connected, get.server());
        } else if (status >= firstRefusal) {
            call.countStatus(static_cast<int>(status));
            call.lastError =
                get.server().name() + " answered with the error status " + std::to_string(status);
        }
        owner_.statistics_.add(call);
        if (impatient_.contains(get.server().origin())) {
            dropUnsent(get.server());
        }
        if (code == CURLE_OK && status == ok && !get.body().empty() && !get.isEncoded()) {
            arrival_(get.index(), get.body());
        }
    }

    // Requests that still wait for a connection to that server.
    void dropUnsent(ServerAddress const& server) {
        auto const first = std::partition(running_.begin(), running_.end(), [&](auto const& get) {
            return get->server() != server || info<long>(get->easy(), CURLINFO_REQUEST_SIZE) > 0;
        });
        for (auto place = first; place != running_.end(); ++place) {
            curl_multi_remove_handle(owner_.multi_.get(), (*place)->easy());
        }
        running_.erase(first, running_.end());
    }

    // Counts what has begun and will not end.
    void abandon(std::string const& reason) const {
        for (auto const& get : running_) {
            if (info<long>(get->easy(), CURLINFO_REQUEST_SIZE) > 0) {
                ServerStatistics call = figures(*get);
                call.failures = 1;
                call.lastError = reason + get->server().name();
                owner_.statistics_.add(call);
            }
        }
    }

    [[nodiscard]] static ServerStatistics figures(Get const& get) {
        CURL* const easy = get.easy();
        ServerStatistics call;
        call.server = get.server().origin();
        call.requests = 1;
        call.bytesSent = static_cast<std::uint64_t>(info<long>(easy, CURLINFO_REQUEST_SIZE));
        call.bytesReceived = static_cast<std::uint64_t>(get.bytesReceived());
        call.totalTime = std::chrono::microseconds(info<curl_off_t>(easy, CURLINFO_TOTAL_TIME_T));
        return call;
    }

    [[nodiscard]] curl_off_t bytesMoved() const {
        curl_off_t sum = 0;
        for (auto const& get : running_) {
            sum += get->bytesReceived();
        }
        return sum;
    }

    SmallFiles& owner_;
    std::vector<std::string> const& addresses_;
    Arrival const& arrival_;
    std::size_t next_ = 0;
    std::vector<std::unique_ptr<Get>> running_;
    Impatient impatient_;
};

SmallFiles::SmallFiles(Connector const& connector, StatisticsTable& statistics)
    : connector_(connector), statistics_(statistics), multi_(curl_multi_init()) {
    if (!multi_) {
        throw std::runtime_error("libcurl gives no handle");
    }
    append(headers_, "Accept-Encoding: identity");
    curl_multi_setopt(multi_.get(), CURLMOPT_PIPELINING, long{CURLPIPE_MULTIPLEX});
    curl_multi_setopt(multi_.get(), CURLMOPT_MAX_HOST_CONNECTIONS, connectionsForOneServer);
    curl_multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, keptConnections);
}

SmallFiles::~SmallFiles() = default;

void SmallFiles::fetch(std::vector<std::string> const& addresses, Arrival const& arrival) {
    if (!isTaskCancelled()) {
        Run(*this, addresses, arrival).drive();
    }
}

} // namespace engine

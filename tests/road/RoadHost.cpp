#include "tests/road/RoadHost.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <ostream>
#include <stdexcept>

#include "host/engine/project/Project.h"
#include "host/engine/tasks/TaskQueue.h"
#include "host/files/iFileManager.h"
#include "host/os/OS.h"
#include "host/text/Unicode.h"

namespace road_tests {

namespace fs = std::filesystem;

std::string utf8(WideString const& text) {
    return std::string(toUTF8(text).view());
}

WideString wide(std::string_view text) {
    return fromUTF8(text);
}

std::string bytesOf(fs::path const& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

bool same(std::string_view some, std::string_view others) {
    return some == others;
}

void FetchLog::write(WideString const& text, eOutputType type) {
    std::lock_guard const lock(mutex_);
    lines_.push_back({utf8(text), type, indent_});
}

void FetchLog::incIndent() {
    std::lock_guard const lock(mutex_);
    ++indent_;
}

void FetchLog::decIndent() {
    std::lock_guard const lock(mutex_);
    --indent_;
}

void FetchLog::reportProgress(double, WideString const&) {}

std::vector<FetchLog::Line> FetchLog::lines() const {
    std::lock_guard const lock(mutex_);
    return lines_;
}

int FetchLog::indent() const {
    std::lock_guard const lock(mutex_);
    return indent_;
}

void PrintTo(FetchLog::Line const& line, std::ostream* out) {
    *out << line.indent << " " << line.type << " \"" << line.text << "\"";
}

RoadHost::RoadHost(fs::path const& folder, std::string const& server, fs::path const& ca) : folder_(folder) {
    fs::create_directories(home());
    std::ofstream(home() / "host.toml")
        << "[network]\nconnect = { \"www.tarn7.example:443\" = \"" << server
        << "\", \"api.framequarry.example:443\" = \"" << server << "\" }\nca_file = \"" << ca.string()
        << "\"\n[folders]\nmedia = \"" << mediaFolder().string() << "\"\n";
    start();
}

RoadHost::~RoadHost() {
    end();
}

void RoadHost::start() {
    engine::EngineOptions options;
    options.home = home();
    options.language = "en";
    options.stringsFolder = ZQ_STRINGS;
    auto engine = engine::Engine::start(options);
    if (!engine) {
        throw std::runtime_error(engine.error());
    }
    engine_ = std::move(*engine);
    HostServices services = installedHost();
    desktop_.real = services.shell;
    services.shell = &desktop_;
    services.log = &log_;
    (void)installHost(services);
    client_ = std::make_unique<RoadResource>();
}

void RoadHost::end() {
    if (engine_) {
        engine_->tasks().shutDown();
        client_.reset();
        engine_.reset();
    }
}

void RoadHost::restart() {
    end();
    start();
}

void RoadHost::connect() {
    if (client_->connect(client_->getDescription().connection, LoggerHandle()) != 0) {
        throw std::runtime_error("no connection");
    }
}

std::int32_t RoadHost::signIn(std::string_view user, std::string_view password) {
    configb form;
    form.set("username", NarrowString(user));
    form.set("password", NarrowString(password));
    return client_->login(form);
}

SearchResults RoadHost::search(std::string_view words) {
    SearchQuery query;
    query.words = wide(words);
    return client_->search(query);
}

RemoteAsset RoadHost::owned(std::string_view id) {
    LightweightVector<RemoteAsset> const all = client_->getPurchasedAssets();
    auto const found = std::ranges::find(all, wide(id), &RemoteAsset::id);
    return found != all.end() ? *found : RemoteAsset();
}

void RoadHost::asTask(std::function<void()> work) {
    engine::TaskQueue& tasks = engine_->tasks();
    std::uint64_t const number = tasks.add("work", [&work](engine::iTaskMonitor&) -> engine::TaskResult {
        work();
        return {};
    });
    while (!tasks.waitFor(number, std::chrono::seconds(1))->ended) {
    }
}

RoadHost::Fetch RoadHost::fetch(RemoteAsset const& asset) {
    EditModifier const edit = client_->openEdit(asset, iMediaFileRepository::eOpenNormally);
    auto const log = Zq::makeShared<FetchLog>();
    LightweightVector<RemoteAsset> assets;
    assets.push_back(asset);
    Fetch done;
    asTask([&] { done.result = client_->fetchFullMedia(assets, 0, LoggerHandle(Zq::Ptr<LoggerBase>(log))); });
    done.lines = log->lines();
    done.isIndentBack = log->indent() == 0;
    return done;
}

fs::path RoadHost::fullFile(RemoteAsset const& asset) {
    return utf8(client_->describeLocalMediaLocation(asset, MediaFileRepositoryBase::eFullMedia));
}

std::string RoadHost::playedMedia(RemoteAsset const& asset) {
    auto const edit = engine_->project().edit(client_->findLocalItem(asset));
    return edit ? utf8(edit->mediaLocation) : "no edit";
}

std::string RoadHost::readThroughHost(WideString const& path) {
    Zq::Ptr<iFile> const file = OS().fileManager().openForRead(path);
    std::string all;
    std::string part(64 << 10, '\0');
    if (!file || file->getSize() == 0) {
        return "(failed)";
    }
    for (;;) {
        std::int64_t const count = file->read(part.data(), static_cast<std::uint32_t>(part.size()));
        if (count < 0) {
            return "(failed)";
        }
        all.append(part, 0, static_cast<std::size_t>(count));
        if (static_cast<std::size_t>(count) < part.size()) {
            return all;
        }
    }
}

std::vector<std::string> RoadHost::mediaFiles() const {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_entry const& entry : fs::recursive_directory_iterator(mediaFolder(), error)) {
        if (!entry.is_directory()) {
            names.push_back(entry.path().lexically_relative(mediaFolder()).string());
        }
    }
    std::ranges::sort(names);
    return names;
}

std::vector<std::string> RoadHost::openedPages() const {
    return desktop_.opened;
}

} // namespace road_tests

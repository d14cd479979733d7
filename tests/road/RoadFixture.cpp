#include "tests/road/RoadFixture.h"

#include <httplib.h>

#include <thread>

#include "host/engine/tasks/TaskQueue.h"
#include "tarn7/Command.h"

namespace road_tests {

Road::Road() {
    test::putFootage(test::Footage::plain, folder.path() / "footage" / "car.mov");
    test::putFootage(test::Footage::interlaced, folder.path() / "footage" / "tape.mov");
    tarn7d::ServerOptions options;
    options.data = folder.path() / "data";
    options.footage = folder.path() / "footage";
    options.rescanInterval = std::chrono::seconds(10);
    service_ = std::make_unique<tarn7d::Server>(options);
    (void)service_->addAccount("ada", "secret", credits);
    port_ = service_->start();
    host_ =
        std::make_unique<RoadHost>(folder.path(), "127.0.0.1:" + std::to_string(port_), service_->caFile());
    host_->connect();
    EXPECT_EQ(host_->signIn("ada", "secret"), 0);
}

void Road::startAnew() {
    host_->restart();
    host_->connect();
    EXPECT_EQ(host_->signIn("ada", "secret"), 0);
}

void Road::addFootage(test::Footage footage, std::string const& file) {
    test::putFootage(footage, folder.path() / "footage" / file);
    service_->rescan();
}

RemoteAsset Road::clip(std::string_view word) {
    SearchResults const found = host().search(word);
    EXPECT_EQ(found.assets.size(), 1u);
    return found.assets.empty() ? RemoteAsset() : found.assets[0];
}

RemoteAsset Road::bought(std::string_view word) {
    RemoteAsset const asset = clip(word);
    EXPECT_EQ(host().client().requestCreditPurchase(listOf(asset)), 2);
    return host().owned(utf8(asset.id));
}

LightweightVector<RemoteAsset> Road::listOf(RemoteAsset const& asset) {
    LightweightVector<RemoteAsset> list;
    list.push_back(asset);
    return list;
}

std::int64_t Road::creditsLeft() {
    auto const answer = host().client().sendCommand(Tarn7Resource::Command(L"get_cart_formatted"));
    return JSON::orEmpty(Tarn7Resource::commandReply(answer, 0)).getInt("credits", -1);
}

std::string Road::footageBytes(std::string const& file) const {
    return bytesOf(folder.path() / "footage" / file);
}

std::string Road::sentBytes(std::string const& path) const {
    httplib::SSLClient client("127.0.0.1", port_);
    client.set_ca_cert_path(service_->caFile().c_str());
    client.set_read_timeout(30);
    auto const answer = client.Get(path);
    EXPECT_TRUE(answer && answer->status == 200) << path;
    return answer ? answer->body : std::string();
}

void Road::waitForFault() {
    auto const patience = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (desk().list().at(0).met == 0) {
        if (std::chrono::steady_clock::now() > patience) {
            FAIL() << "nobody asked for what is spoilt";
        }
        std::this_thread::yield();
    }
}

std::chrono::milliseconds Road::cancelledAtFault(std::function<void()> work) {
    engine::TaskQueue& tasks = host().engine().tasks();
    std::uint64_t const number = tasks.add("work", [&work](engine::iTaskMonitor&) -> engine::TaskResult {
        work();
        return {};
    });
    waitForFault();
    auto const begin = std::chrono::steady_clock::now();
    tasks.cancel(number);
    while (!tasks.waitFor(number, std::chrono::seconds(1))->ended) {
    }
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
}

} // namespace road_tests

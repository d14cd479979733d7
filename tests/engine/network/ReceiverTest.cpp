#include <future>
#include <stdexcept>

#include "tests/engine/network/NetworkFixture.h"
#include "tests/support/RawServer.h"

namespace {

using test::RawConnection;
using test::RawServer;
using test::RecordingReceiver;

class Receiver : public test::NetworkFixture {};

std::string pattern(std::size_t size) {
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        text[i] = static_cast<char>((i * 31 + (i >> 8)) & 0xff);
    }
    return text;
}

RawServer::Script serves(std::string body, int status = 200, std::string headers = {}) {
    return [=](RawConnection& connection) {
        while (connection.readRequest()) {
            connection.answer(status, body, headers);
        }
    };
}

TEST_F(Receiver, GetsAFileInBlocksInOrder) {
    std::string const file = pattern((5u << 20) + 777);
    RawServer const raw(serves(file));
    RecordingReceiver receiver;
    EXPECT_EQ(server(raw.name())->httpGetToReceiver(L"clip.mov", receiver), 200);
    EXPECT_EQ(raw.requests()[0].line, "GET /clip.mov HTTP/1.1");
    EXPECT_EQ(raw.requests()[0].header("Accept-Encoding"), "identity");
    EXPECT_EQ(receiver.begins, 1);
    EXPECT_EQ(receiver.ends, 1);
    EXPECT_EQ(receiver.total, file.size());
    EXPECT_TRUE(receiver.inOrder);
    EXPECT_TRUE(receiver.data == file);
    EXPECT_EQ(receiver.sizes.front(), std::size_t{256} << 10);
    EXPECT_EQ(receiver.sizes.size(), 21u);
}

TEST_F(Receiver, GetsAnEmptyFile) {
    RawServer const raw(serves(""));
    RecordingReceiver receiver;
    EXPECT_EQ(server(raw.name())->httpGetToReceiver(L"/", receiver), 200);
    EXPECT_EQ(receiver.begins, 1);
    EXPECT_EQ(receiver.ends, 1);
    EXPECT_EQ(receiver.total, 0u);
    EXPECT_TRUE(receiver.sizes.empty());
}

TEST_F(Receiver, LearnsNoLengthWhereNoneIsAnnounced) {
    std::string const file = pattern(300'000);
    RawServer const raw([&file](RawConnection& connection) {
        if (connection.readRequest()) {
            connection.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n493e0\r\n" + file +
                            "\r\n0\r\n\r\n");
        }
    });
    RecordingReceiver receiver;
    EXPECT_EQ(server(raw.name())->httpGetToReceiver(L"/", receiver), 200);
    EXPECT_EQ(receiver.total, 0u);
    EXPECT_TRUE(receiver.data == file);
}

TEST_F(Receiver, IsNotCalledForAnotherStatus) {
    for (int const status : {201, 206, 304, 403, 404, 500, 503}) {
        RawServer const raw([status](RawConnection& connection) {
            while (connection.readRequest()) {
                if (status == 304) {
                    connection.send("HTTP/1.1 304 Not Modified\r\n\r\n");
                } else {
                    connection.answer(status, "an explanation");
                }
            }
        });
        RecordingReceiver receiver;
        EXPECT_EQ(server(raw.name())->httpGetToReceiver(L"/", receiver), status);
        EXPECT_EQ(receiver.begins + receiver.ends, 0) << status;
        EXPECT_TRUE(receiver.data.empty()) << status;
    }
}

TEST_F(Receiver, IsToldTheEndOfAFileThatIsCutShort) {
    RawServer const raw([](RawConnection& connection) {
        if (connection.readRequest()) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n" + pattern(999'999));
        }
    });
    RecordingReceiver receiver;
    EXPECT_EQ(server(raw.name())->httpGetToReceiver(L"/", receiver), 0);
    EXPECT_EQ(receiver.begins, 1);
    EXPECT_EQ(receiver.ends, 1);
    EXPECT_EQ(receiver.total, 1'000'000u);
}

TEST_F(Receiver, ACutExplanationOfAnotherStatusGivesZero) {
    RawServer const raw([](RawConnection& connection) {
        if (connection.readRequest()) {
            connection.send("HTTP/1.1 404 Not Found\r\nContent-Length: 100\r\n\r\nshort");
        }
    });
    RecordingReceiver receiver;
    EXPECT_EQ(server(raw.name())->httpGetToReceiver(L"/", receiver), 0);
    EXPECT_EQ(receiver.begins + receiver.ends, 0);
}

TEST_F(Receiver, APackedFileIsRefused) {
    for (char const* const encoding : {"gzip", "br", "x-unknown"}) {
        RawServer const raw(
            serves("packed bytes", 200, "Content-Encoding: " + std::string(encoding) + "\r\n"));
        RecordingReceiver receiver;
        EXPECT_EQ(server(raw.name())->httpGetToReceiver(L"/", receiver), 0) << encoding;
        EXPECT_EQ(receiver.begins + receiver.ends, 0) << encoding;
    }
    RawServer const raw(serves("plain", 200, "Content-Encoding: Identity\r\n"));
    RecordingReceiver receiver;
    EXPECT_EQ(server(raw.name())->httpGetToReceiver(L"/", receiver), 200);
}

TEST_F(Receiver, ARefusedBeginningEndsTheTransfer) {
    RawServer const raw(serves(pattern(1u << 20)));
    RecordingReceiver receiver;
    receiver.takesBegin = false;
    EXPECT_EQ(server(raw.name())->httpGetToReceiver(L"/", receiver), 0);
    EXPECT_EQ(receiver.begins, 1);
    EXPECT_EQ(receiver.ends, 1);
    EXPECT_TRUE(receiver.sizes.empty());
}

TEST_F(Receiver, ARefusedBlockEndsTheTransfer) {
    RawServer const raw(serves(pattern(3u << 20)));
    RecordingReceiver receiver;
    receiver.mostBytes = 300'000;
    EXPECT_EQ(server(raw.name())->httpGetToReceiver(L"/", receiver), 0);
    EXPECT_EQ(receiver.ends, 1);
    EXPECT_EQ(receiver.sizes.size(), 2u);
}

TEST_F(Receiver, ARefusedLastBlockGivesZero) {
    RawServer const raw(serves("the whole file"));
    RecordingReceiver receiver;
    receiver.mostBytes = 5;
    EXPECT_EQ(server(raw.name())->httpGetToReceiver(L"/", receiver), 0);
    EXPECT_EQ(receiver.sizes.size(), 1u);
    EXPECT_EQ(receiver.ends, 1);
}

TEST_F(Receiver, ThatThrowsEndsTheTransferAndNothingElse) {
    class Throwing final : public RecordingReceiver {
    public:
        [[nodiscard]] bool receiveData(std::uint64_t, Zq::Ptr<iMemHolder> const&) override {
            throw std::runtime_error("from a receiver");
        }
    };
    RawServer const raw(serves(pattern(1u << 20)));
    auto const one = server(raw.name());
    Throwing receiver;
    EXPECT_EQ(one->httpGetToReceiver(L"/", receiver), 0);
    EXPECT_EQ(receiver.ends, 1);
    RecordingReceiver next;
    EXPECT_EQ(one->httpGetToReceiver(L"/", next), 200);
}

TEST_F(Receiver, MayKeepItsBlocks) {
    class Keeping final : public iHTTPServer::iDataReceiver {
    public:
        [[nodiscard]] bool receiveData(std::uint64_t, Zq::Ptr<iMemHolder> const& block) override {
            blocks.push_back(block);
            return true;
        }
        std::vector<Zq::Ptr<iMemHolder>> blocks;
    };
    std::string const file = pattern(2u << 20);
    RawServer const raw(serves(file));
    Keeping receiver;
    EXPECT_EQ(server(raw.name())->httpGetToReceiver(L"/", receiver), 200);
    std::string together;
    for (auto const& block : receiver.blocks) {
        together.append(block->getData(), block->getSize());
    }
    EXPECT_TRUE(together == file);
}

TEST_F(Receiver, SeesASlowFileMove) {
    class Signalling final : public RecordingReceiver {
    public:
        [[nodiscard]] bool receiveData(std::uint64_t offset, Zq::Ptr<iMemHolder> const& block) override {
            if (sizes.empty()) {
                firstBlock.set_value();
            }
            return RecordingReceiver::receiveData(offset, block);
        }
        std::promise<void> firstBlock;
    };
    Signalling receiver;
    RawServer const raw([&receiver](RawConnection& connection) {
        if (connection.readRequest()) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nfirst");
            receiver.firstBlock.get_future().wait(); // a block far from full is handed on
            connection.send("-last");
        }
    });
    EXPECT_EQ(server(raw.name())->httpGetToReceiver(L"/", receiver), 200);
    EXPECT_EQ(receiver.data, "first-last");
    EXPECT_EQ(receiver.sizes.size(), 2u);
    EXPECT_TRUE(receiver.inOrder);
}

} // namespace

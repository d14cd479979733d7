// Servers that misbehave, and files that change: the reader gets the file's bytes or an error, never others.

#include <gmock/gmock.h>

#include "tests/engine/streaming/StreamingFixture.h"

namespace {

using namespace std::chrono_literals;
using engine::StreamError;
using test::askedPart;
using test::MediaServer;
using test::RawConnection;
using test::RawRequest;
using test::same;

class StreamFault : public test::StreamingFixture {
protected:
    StreamFault() : bytes(test::mediaBytes(3 * mib + 777, 2)), other(test::mediaBytes(3 * mib + 777, 3)) {
        media.put("/clip.mov", {bytes});
        options.connectTimeout = 10s;
        options.stallTimeout = 30s;
    }

    // Waited for in whole by tests of silence, and longer than a busy machine keeps a server of ours from
    // answering.
    static constexpr auto shortStall = 1500ms;

    // Of requests that are neither the first nor for the end.
    static bool isLater(RawRequest const& request) {
        std::string const range = request.header("Range");
        return range != "bytes=0-524287" && range != "bytes=-65536";
    }
    [[nodiscard]] std::string part(RawRequest const& request) const {
        auto const asked = askedPart(request, bytes.size());
        return asked ? bytes.substr(asked->begin, asked->end - asked->begin) : std::string();
    }
    // Lets the file be opened, and has every later request answered in this way.
    void misbehaveLater(MediaServer::Fault fault) {
        media.setFault([fault = std::move(fault)](RawConnection& connection, RawRequest const& request) {
            return isLater(request) && fault(connection, request);
        });
    }
    // Reads in the middle with the fault, then without it: an error, then the bytes.
    void expectErrorThenBytes(MediaServer::Fault fault, StreamError::Kind kind) {
        misbehaveLater(std::move(fault));
        auto const file = open("clip.mov");
        EXPECT_EQ(file->getSize(), bytes.size());
        EXPECT_TRUE(same(read(file, 2 * mib, 100), "(failed)"));
        EXPECT_EQ(errorOf(file), kind);
        EXPECT_EQ(file->getPosition(), 2 * mib);
        media.setFault({});
        EXPECT_TRUE(same(read(file, 2 * mib, 100), bytes.substr(2 * mib, 100)));
        EXPECT_TRUE(same(readAll(file), bytes));
    }

    std::string const bytes;
    std::string const other;
};

TEST_F(StreamFault, AWholeAnswerInPlaceOfAPartIsNeverTakenForThePart) {
    misbehaveLater([this](RawConnection& connection, RawRequest const&) {
        return connection.answer(200, other, "ETag: \"two\"\r\n");
    });
    auto const file = open("clip.mov");
    EXPECT_TRUE(same(read(file, 100, 100), bytes.substr(100, 100)));
    EXPECT_TRUE(same(read(file, 2 * mib, 100), "(failed)"));
    EXPECT_EQ(errorOf(file), StreamError::Kind::changed);
    // What was read before is of the old file: it does not come any more either.
    EXPECT_TRUE(same(read(file, 100, 100), "(failed)"));
}

TEST_F(StreamFault, APartThatStartsElsewhereIsRefused) {
    expectErrorThenBytes(
        [this](RawConnection& connection, RawRequest const& request) {
            auto asked = *askedPart(request, bytes.size());
            asked.begin -= 1000;
            MediaServer::answerPart(connection, asked, bytes.size(),
                                    bytes.substr(asked.begin, asked.end - asked.begin));
            return true;
        },
        StreamError::Kind::protocol);
}

TEST_F(StreamFault, APartWithoutItsPlaceIsRefused) {
    expectErrorThenBytes([this](RawConnection& connection,
                                RawRequest const& request) { return connection.answer(206, part(request)); },
                         StreamError::Kind::protocol);
}

TEST_F(StreamFault, APartOfAnotherLengthThanItSaysIsRefused) {
    expectErrorThenBytes(
        [this](RawConnection& connection, RawRequest const& request) {
            MediaServer::answerPart(connection, *askedPart(request, bytes.size()), bytes.size(),
                                    part(request).substr(10));
            return true;
        },
        StreamError::Kind::protocol);
}

TEST_F(StreamFault, APartOfAnotherTotalMeansThatTheFileHasChanged) {
    misbehaveLater([this](RawConnection& connection, RawRequest const& request) {
        MediaServer::answerPart(connection, *askedPart(request, bytes.size()), bytes.size() + 1,
                                part(request), "ETag: \"one\"\r\n");
        return true;
    });
    auto const file = open("clip.mov");
    EXPECT_EQ(file->getSize(), bytes.size());
    EXPECT_TRUE(same(read(file, 2 * mib, 100), "(failed)"));
    EXPECT_EQ(errorOf(file), StreamError::Kind::changed);
}

TEST_F(StreamFault, AnotherETagMeansThatTheFileHasChanged) {
    misbehaveLater([this](RawConnection& connection, RawRequest const& request) {
        MediaServer::answerPart(connection, *askedPart(request, bytes.size()), bytes.size(),
                                std::string(part(request).size(), 'x'), "ETag: \"two\"\r\n");
        return true;
    });
    auto const file = open("clip.mov");
    EXPECT_EQ(file->getSize(), bytes.size());
    EXPECT_TRUE(same(read(file, 2 * mib, 100), "(failed)"));
    EXPECT_EQ(errorOf(file), StreamError::Kind::changed);
}

TEST_F(StreamFault, ACompressedPartIsRefused) {
    expectErrorThenBytes(
        [this](RawConnection& connection, RawRequest const& request) {
            MediaServer::answerPart(connection, *askedPart(request, bytes.size()), bytes.size(),
                                    part(request), "Content-Encoding: gzip\r\n");
            return true;
        },
        StreamError::Kind::protocol);
}

TEST_F(StreamFault, APartThatEndsSoonerIsAskedForFurther) {
    auto const short_ = std::make_shared<std::atomic<int>>(0);
    misbehaveLater([this, short_](RawConnection& connection, RawRequest const& request) {
        auto asked = *askedPart(request, bytes.size());
        if (asked.end - asked.begin < 100 * kib) {
            return false;
        }
        ++*short_;
        asked.end = asked.begin + 70'000;
        MediaServer::answerPart(connection, asked, bytes.size(),
                                bytes.substr(asked.begin, asked.end - asked.begin));
        return true;
    });
    EXPECT_TRUE(same(readAll(open("clip.mov"), 256 * kib), bytes));
    EXPECT_GT(*short_, 0);
}

TEST_F(StreamFault, AServerThatNeverGivesAWholeBlockIsGivenUp) {
    auto const answers = std::make_shared<std::atomic<int>>(0);
    expectErrorThenBytes(
        [this, answers](RawConnection& connection, RawRequest const& request) {
            ++*answers;
            auto asked = *askedPart(request, bytes.size());
            asked.end = asked.begin + 1;
            MediaServer::answerPart(connection, asked, bytes.size(), bytes.substr(asked.begin, 1));
            return true;
        },
        StreamError::Kind::cut);
    // One that gives a byte of use, and one that is repeated once.
    EXPECT_LE(*answers, 4);
}

TEST_F(StreamFault, AConnectionThatIsCutOnceCostsARequest) {
    auto const cuts = std::make_shared<std::atomic<int>>(0);
    misbehaveLater([this, cuts](RawConnection& connection, RawRequest const& request) {
        if (++*cuts > 1) {
            return false;
        }
        connection.send("HTTP/1.1 206 Part\r\nContent-Range: bytes 2097152-2129919/" +
                        std::to_string(bytes.size()) + "\r\nContent-Length: 32768\r\n\r\n" +
                        part(request).substr(0, 50));
        connection.close();
        return true;
    });
    auto const file = open("clip.mov");
    EXPECT_TRUE(same(read(file, 2 * mib, 100), bytes.substr(2 * mib, 100)));
    EXPECT_EQ(*cuts, 2);
}

TEST_F(StreamFault, AnEarlyEndIsNeverTakenForTheEndOfTheFile) {
    expectErrorThenBytes(
        [this](RawConnection& connection, RawRequest const&) {
            connection.send("HTTP/1.1 206 Part\r\nContent-Range: bytes 2097152-2129919/" +
                            std::to_string(bytes.size()) + "\r\nConnection: close\r\n\r\nonly this");
            connection.close();
            return true;
        },
        StreamError::Kind::cut);
}

TEST_F(StreamFault, ASilentServerIsLeftAtItsDeadline) {
    options.stallTimeout = shortStall;
    expectErrorThenBytes(
        [](RawConnection& connection, RawRequest const&) {
            connection.waitForEnd();
            return true;
        },
        StreamError::Kind::stalled);
}

TEST_F(StreamFault, AnAnswerThatStopsIsLeftAtItsDeadline) {
    options.stallTimeout = shortStall;
    expectErrorThenBytes(
        [this](RawConnection& connection, RawRequest const& request) {
            connection.send("HTTP/1.1 206 Part\r\nContent-Range: bytes 2097152-2129919/" +
                            std::to_string(bytes.size()) + "\r\nContent-Length: 32768\r\n\r\n" +
                            part(request).substr(0, 50));
            connection.waitForEnd();
            return true;
        },
        StreamError::Kind::stalled);
}

TEST_F(StreamFault, StatusesAreTypedErrorsAndLeaveTheFileUsable) {
    for (auto const& [status, kind] :
         {std::pair(404, StreamError::Kind::missing), std::pair(410, StreamError::Kind::missing),
          std::pair(403, StreamError::Kind::refused), std::pair(500, StreamError::Kind::server),
          std::pair(416, StreamError::Kind::refused)}) {
        SCOPED_TRACE(status);
        std::filesystem::remove(cachePath());
        std::filesystem::remove(cachePath("clip.partial.idx"));
        expectErrorThenBytes([status = status](RawConnection& connection,
                                               RawRequest const&) { return connection.answer(status, "no"); },
                             kind);
    }
}

TEST_F(StreamFault, A416WithAnotherTotalMeansThatTheFileHasChanged) {
    misbehaveLater([](RawConnection& connection, RawRequest const&) {
        return connection.answer(416, "", "Content-Range: bytes */100\r\n");
    });
    auto const file = open("clip.mov");
    EXPECT_TRUE(same(read(file, 2 * mib, 100), "(failed)"));
    EXPECT_EQ(errorOf(file), StreamError::Kind::changed);
}

TEST_F(StreamFault, AServerWithoutPartsIsReadAsOneStream) {
    media.givesParts = false;
    {
        auto const file = open("clip.mov");
        EXPECT_EQ(file->getSize(), bytes.size());
        EXPECT_TRUE(same(read(file, 2 * mib, 1000), bytes.substr(2 * mib, 1000)));
        EXPECT_TRUE(same(readAll(file), bytes));
        EXPECT_EQ(streams().statistics().requests, 2u);
    }
    restart();
    EXPECT_TRUE(same(readAll(open("clip.mov")), bytes));
    EXPECT_EQ(streams().statistics().requests, 0u);
}

TEST_F(StreamFault, AStreamWithoutAStoreWaitsForItsReaderAndBeginsAnewForWhatHasGoneBy) {
    options.memoryStore_bytes = 1 * mib;
    std::string const large = test::mediaBytes(12 * mib, 9);
    media.put("/large.mov", {large});
    media.givesParts = false;
    auto const file = open("large.mov", "");
    EXPECT_TRUE(same(read(file, 0, 1000), large.substr(0, 1000)));
    EXPECT_TRUE(same(readAll(file), large));
    EXPECT_TRUE(same(read(file, 5, 1000), large.substr(5, 1000)));
}

TEST_F(StreamFault, AStreamThatIsCutAtTheSamePlaceEachTimeIsGivenUp) {
    options.memoryStore_bytes = 1 * mib;
    for (char const* const store : {"clip.partial", ""}) {
        SCOPED_TRACE(store);
        auto const streams = std::make_shared<std::atomic<int>>(0);
        media.setFault([this, streams](RawConnection& connection, RawRequest const&) {
            ++*streams;
            connection.send("HTTP/1.1 200 OK\r\nETag: \"one\"\r\nContent-Length: " +
                            std::to_string(bytes.size()) + "\r\n\r\n" + bytes.substr(0, 2 * mib + 5));
            connection.close();
            return true;
        });
        auto const file = open("clip.mov", store);
        EXPECT_TRUE(same(read(file, mib, 100), bytes.substr(mib, 100)));
        EXPECT_TRUE(same(read(file, 3 * mib, 100), "(failed)"));
        EXPECT_EQ(errorOf(file), StreamError::Kind::cut);
        EXPECT_LE(*streams, 6);
    }
}

TEST_F(StreamFault, AnAnswerWithoutEndIsLeftAlsoWhenItsFileIsLetGo) {
    auto const isLetGo = std::make_shared<std::atomic<bool>>(false);
    auto const isLeft = std::make_shared<std::atomic<int>>(-1);
    misbehaveLater([this, isLetGo, isLeft](RawConnection& connection, RawRequest const& request) {
        connection.send("HTTP/1.1 206 Part\r\nContent-Range: bytes 2097152-2129919/" +
                        std::to_string(bytes.size()) + "\r\nConnection: close\r\n\r\n" +
                        part(request).substr(0, 50));
        isLetGo->wait(false);
        std::string const more(64 * kib, 'x');
        bool taken = true;
        for (int i = 0; taken && i < 1024; ++i) {
            taken = connection.send(more);
        }
        *isLeft = taken ? 0 : 1;
        isLeft->notify_all();
        return true;
    });
    EXPECT_TRUE(same(read(open("clip.mov"), 2 * mib, 10), bytes.substr(2 * mib, 10)));
    *isLetGo = true;
    isLetGo->notify_all();
    isLeft->wait(-1);
    EXPECT_EQ(*isLeft, 1);
}

TEST_F(StreamFault, AServerThatRefusesPartsIsAskedForTheWhole) {
    for (int const status : {400, 416, 501}) {
        media.setFault([status](RawConnection& connection, RawRequest const& request) {
            return !request.header("Range").empty() && connection.answer(status, "no parts");
        });
        EXPECT_TRUE(same(readAll(open("clip.mov", std::to_string(status) + ".partial")), bytes));
    }
}

TEST_F(StreamFault, AServerThatKnowsNoSuffixIsReadAllTheSame) {
    for (int const status : {200, 416, 501}) {
        media.setFault([this, status](RawConnection& connection, RawRequest const& request) {
            return request.header("Range") == "bytes=-65536" &&
                   connection.answer(status, status == 200 ? bytes : "", "ETag: \"one\"\r\n");
        });
        EXPECT_TRUE(same(readAll(open("clip.mov", std::to_string(status) + ".partial")), bytes));
    }
}

TEST_F(StreamFault, ARedirectKeepsThePartAndIsFollowedFiveTimes) {
    auto const most = std::make_shared<std::atomic<int>>(5);
    media.setFault([most](RawConnection& connection, RawRequest const& request) {
        std::size_t const hop = request.line.find("/hop");
        int const number = hop == std::string::npos ? 0 : request.line[hop + 4] - '0';
        if (number >= *most) {
            return false;
        }
        std::string const next = number + 1 == *most ? "/clip.mov" : "/hop" + std::to_string(number + 1);
        return hop != std::string::npos && connection.answer(302, "elsewhere", "Location: " + next + "\r\n");
    });
    EXPECT_TRUE(same(readAll(open("hop0", "five.partial")), bytes));
    for (test::RawRequest const& request : media.requests()) {
        EXPECT_FALSE(request.header("Range").empty());
    }
    *most = 6;
    auto const file = open("hop0", "six.partial");
    EXPECT_EQ(file->getSize(), 0u);
    EXPECT_EQ(errorOf(file), StreamError::Kind::protocol);
}

TEST_F(StreamFault, AnUnreachableServerIsAnErrorAndNoEmptyFile) {
    std::string const name = "127.0.0.1:" + std::to_string(test::closedPort());
    Zq::Ptr<StreamingFile> const file = streams().create(server(name), L"clip.mov", L"", L"");
    EXPECT_EQ(file->getSize(), 0u);
    EXPECT_EQ(errorOf(file), StreamError::Kind::unreachable);
    char byte = 0;
    EXPECT_EQ(file->read(&byte, 1), -1);
}

TEST_F(StreamFault, AFailedProbeIsRepeatedOnceAndAgainForALaterRead) {
    auto const broken = std::make_shared<std::atomic<bool>>(true);
    media.setFault([broken](RawConnection& connection, RawRequest const&) {
        return *broken && connection.answer(500, "broken");
    });
    auto const file = open("clip.mov");
    EXPECT_EQ(file->getSize(), 0u);
    EXPECT_EQ(errorOf(file), StreamError::Kind::server);
    EXPECT_EQ(streams().statistics().requests, 4u);
    EXPECT_EQ(file->getSize(), 0u);
    EXPECT_EQ(streams().statistics().requests, 4u);
    *broken = false;
    char byte = 0;
    EXPECT_EQ(file->read(&byte, 1), 1);
    EXPECT_EQ(file->getSize(), bytes.size());
}

TEST_F(StreamFault, AProbeThatFailsOnceIsNotNoticed) {
    auto const failures = std::make_shared<std::atomic<int>>(0);
    media.setFault([failures](RawConnection& connection, RawRequest const&) {
        return (*failures)++ < 2 && connection.answer(503, "busy");
    });
    EXPECT_EQ(open("clip.mov")->getSize(), bytes.size());
}

TEST_F(StreamFault, ACompressedFileIsNotRead) {
    media.setFault([this](RawConnection& connection, RawRequest const&) {
        return connection.answer(200, bytes, "Content-Encoding: gzip\r\n");
    });
    auto const file = open("clip.mov");
    EXPECT_EQ(file->getSize(), 0u);
    EXPECT_EQ(errorOf(file), StreamError::Kind::protocol);
}

TEST_F(StreamFault, APageInThePlaceOfTheFileIsNeitherReadNorKept) {
    media.setFault([](RawConnection& connection, RawRequest const&) {
        return connection.answer(200, "<!doctype html>", "Content-Type: text/html; charset=utf-8\r\n");
    });
    {
        auto const file = open("clip.mov");
        EXPECT_EQ(file->getSize(), 0u);
        EXPECT_EQ(errorOf(file), StreamError::Kind::protocol);
    }
    media.setFault({});
    EXPECT_TRUE(same(readAll(open("clip.mov")), bytes));
}

TEST_F(StreamFault, APageInThePlaceOfALaterPartIsRefused) {
    expectErrorThenBytes(
        [](RawConnection& connection, RawRequest const&) {
            return connection.answer(200, "<!doctype html>", "Content-Type: text/html\r\n");
        },
        StreamError::Kind::protocol);
}

TEST_F(StreamFault, AnAbsurdLengthIsNotBelieved) {
    media.setFault([](RawConnection& connection, RawRequest const& request) {
        bool const tail = request.header("Range") == "bytes=-65536";
        return connection.answer(206, tail ? std::string(100, 'x') : std::string(524'288, 'x'),
                                 tail ? "Content-Range: bytes 18446744073709551515-18446744073709551614/"
                                        "18446744073709551615\r\n"
                                      : "Content-Range: bytes 0-524287/18446744073709551615\r\n");
    });
    auto const file = open("clip.mov");
    EXPECT_EQ(file->getSize(), 0u);
    EXPECT_EQ(errorOf(file), StreamError::Kind::protocol);
}

TEST_F(StreamFault, ACancelledReadReturnsAtOnceWhileTheServerIsSilent) {
    options.stallTimeout = 60s;
    misbehaveLater([](RawConnection& connection, RawRequest const&) {
        connection.waitForEnd();
        return true;
    });
    auto const file = open("clip.mov");
    ASSERT_EQ(file->getSize(), bytes.size());
    std::chrono::steady_clock::time_point cancelled;
    std::thread person([&] {
        media.waitForRequests(3);
        cancelled = std::chrono::steady_clock::now();
        task.cancel();
    });
    EXPECT_TRUE(same(read(file, 2 * mib, 100), "(failed)"));
    auto const left = std::chrono::steady_clock::now();
    person.join();
    EXPECT_EQ(errorOf(file), StreamError::Kind::cancelled);
    // Ten milliseconds by design; the rest is what a busy machine may add, far from the deadline of silence.
    EXPECT_LT(left - cancelled, 10s);
}

} // namespace

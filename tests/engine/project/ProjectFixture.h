// A project in a folder of its own, and media files that are what a test says they are.
#pragma once

#include <fstream>
#include <map>
#include <mutex>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/edit/EditManager.h"
#include "host/engine/files/LocalPath.h"
#include "host/engine/project/Project.h"
#include "host/text/Unicode.h"
#include "tests/engine/local/InstalledLog.h"
#include "tests/support/TemporaryFolder.h"

namespace test {

// A file of one picture size with a length in frames.
inline engine::MediaFacts facts(Zq::FrameRate rate, std::int64_t frames, std::int32_t audioChannels = 2) {
    Zq::ExactRate const exact = Zq::getExactRate(rate);
    engine::MediaFacts facts;
    facts.container = "mov";
    facts.videoCodec = "prores";
    facts.width = 1920;
    facts.height = 1080;
    facts.rate = rate;
    facts.rateNumerator = exact.numerator;
    facts.rateDenominator = exact.denominator;
    facts.frames = frames;
    facts.duration_s = static_cast<double>(frames) * exact.denominator / exact.numerator;
    facts.audioChannels = audioChannels;
    facts.bitRate = 50'000'000;
    return facts;
}

// Knows the media files by path, and no others. Thread: any.
class MediaShelf {
public:
    void put(WideString const& path, engine::MediaFacts const& media) {
        std::lock_guard const lock(mutex_);
        media_.insert_or_assign(path, media);
    }
    [[nodiscard]] engine::Result<engine::MediaFacts> inspect(WideString const& path) {
        std::lock_guard const lock(mutex_);
        ++looks_;
        auto const found = media_.find(path);
        if (found == media_.end()) {
            return engine::Failure{"no decoder opens it"};
        }
        return found->second;
    }
    [[nodiscard]] int looks() const {
        std::lock_guard const lock(mutex_);
        return looks_;
    }

private:
    mutable std::mutex mutex_;
    std::map<WideString, engine::MediaFacts> media_;
    int looks_ = 0;
};

inline Cookie cookieOf(std::uint8_t number) {
    Cookie cookie;
    cookie.uuid.bytes[0] = 0xc1;
    cookie.uuid.bytes[15] = number;
    cookie.kind = {1, 2, 3};
    return cookie;
}

inline LogAttributeMap named(WideString const& name) {
    LogAttributeMap attributes;
    attributes.add(LogAttribute(LogAttribute::eName), name);
    return attributes;
}

class ProjectTest : public testing::Test {
protected:
    ProjectTest() { reopen(); }

    // Closes the project and opens it again, as the next run of the host does.
    void reopen() {
        project_.reset();
        project_ = openAnother();
    }
    [[nodiscard]] std::unique_ptr<engine::Project> openAnother() {
        auto opened =
            engine::Project::open(file(), [this](WideString const& path) { return shelf.inspect(path); });
        EXPECT_TRUE(opened) << opened.error();
        return opened ? std::move(*opened) : nullptr;
    }
    [[nodiscard]] std::filesystem::path file() const { return folder.path() / "project.sqlite"; }
    [[nodiscard]] engine::Project& project() { return *project_; }
    void closeProject() { project_.reset(); }

    // A temporary clip of ten seconds at 25 frames a second with two channels, and that name.
    Cookie makeClip(std::uint8_t number, WideString const& name, Zq::FrameRate rate = Zq::FrameRate::f25,
                    double duration_s = 10) {
        EditPtr const edit(project().makeNewClip(1, 2, duration_s, rate, cookieOf(number)));
        EXPECT_TRUE(edit) << "no clip was made";
        if (edit) {
            edit->setLogAttributes(named(name));
        }
        return cookieOf(number);
    }
    Cookie makeKeptClip(std::uint8_t number, WideString const& name, Zq::FrameRate rate = Zq::FrameRate::f25,
                        double duration_s = 10) {
        Cookie const cookie = makeClip(number, name, rate, duration_s);
        EditPtr(project().open(cookie))->setTemporary(false);
        return cookie;
    }
    // A real file in the folder, which the shelf knows as that media.
    WideString makeMedia(char const* name, engine::MediaFacts const& media) {
        WideString path = makeFile(name);
        shelf.put(path, media);
        return path;
    }
    // One that no decoder opens.
    WideString makeFile(char const* name) {
        std::filesystem::path const path = folder.path() / name;
        std::ofstream(path) << "bytes of " << name;
        return engine::wideText(path);
    }
    [[nodiscard]] WideString mediaOf(Cookie const& cookie) {
        return project().edit(cookie).value_or(engine::EditRecord()).mediaLocation;
    }

    TemporaryFolder folder;
    InstalledLog log;
    MediaShelf shelf;

private:
    std::unique_ptr<engine::Project> project_;
};

// Equality of records that a test compares as a whole.
inline std::vector<std::string> inWords(std::vector<engine::MediaDifference> const& differences) {
    std::vector<std::string> words;
    for (engine::MediaDifference const& difference : differences) {
        static constexpr char const* names[] = {"rate", "length", "size", "sound"};
        words.push_back(std::string(names[static_cast<int>(difference.what)]) + ": " + difference.promised +
                        " -> " + difference.found);
    }
    return words;
}

} // namespace test

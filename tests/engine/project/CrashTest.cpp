// The host is killed at any moment: what is found afterwards is the state after a commit, and never one
// before the last that was reported done.

#include <chrono>
#include <random>

#include "host/engine/storage/Database.h"
#include "tests/engine/project/ChildProcess.h"
#include "tests/engine/project/ProjectFixture.h"

namespace test {
namespace {

using enum Zq::FrameRate;
namespace fs = std::filesystem;

constexpr int kills = 120;

Cookie numbered(int number) {
    Cookie cookie;
    cookie.uuid.bytes[0] = 1;
    cookie.uuid.bytes[1] = static_cast<std::uint8_t>(number >> 8);
    cookie.uuid.bytes[2] = static_cast<std::uint8_t>(number);
    return cookie;
}

engine::Result<engine::MediaFacts> inspect(WideString const& path) {
    return facts(path.endsWith(L"1.mov") ? f25 : f50, path.endsWith(L"2.mov") ? 90 : 250);
}

class Crash : public testing::Test {
protected:
    Crash() {
        for (int i = 0; i < 3; ++i) {
            std::ofstream(media(i)) << i;
        }
    }
    [[nodiscard]] fs::path media(int number) const {
        return folder.path() / ("media" + std::to_string(number) + ".mov");
    }

    // Does the one change that the number stands for. Each is one commit, or none where it changes nothing.
    void perform(engine::Project& project, int number) {
        Cookie const clip = numbered(number - number % 11);
        auto const inA = [&project] { return project.sequence("A").value_or(engine::Sequence()).placements; };
        switch (number % 11) {
        case 0: {
            EditPtr const edit(project.makeNewClip(1, 2, 10, f25, clip));
            LogAttributeMap attributes = named(fromUTF8("clip " + std::to_string(number)));
            attributes.add(LogAttribute(LogAttribute::ePrice), WideString(L"12"));
            edit->setLogAttributes(attributes);
            edit->addLabel(editLabFrom(0, Zq::Image::ScanMode::progressive, f25, false), true);
            project.associate(clip, L"T7", fromUTF8(std::to_string(number)));
            edit->setTemporary(false);
            break;
        }
        case 1:
            done(project.place("A", clip, {}, {}));
            break;
        case 2:
        case 3:
        case 5:
            done(project.relink(clip, engine::wideText(media(number % 3))));
            break;
        case 4:
            done(project.place("B " + std::to_string(number / 33), clip, 0.4, 2.2, 0));
            break;
        case 6:
            done(project.undo());
            break;
        case 7:
            done(project.redo());
            break;
        case 8:
            done(project.move(inA().back().number, 0));
            break;
        case 9:
            done(project.trim(inA().front().number, 0.04 * (number % 5), 4.0));
            break;
        default:
            // Every second time, so that the sequence grows.
            done(number % 2 == 0 ? project.remove(inA().back().number)
                                 : project.trim(inA().back().number, {}, 5.0));
        }
    }
    template <class Value>
    static void done(engine::Result<Value> const& result) {
        if (!result) {
            throw std::runtime_error(result.error());
        }
    }

    // All that the project has, in words.
    static std::string stateOf(engine::Project& project, fs::path const& file) {
        std::string text = "revision " + std::to_string(project.revision()) + "\n";
        for (engine::EditRecord const& edit : project.edits()) {
            text += engine::cookieText(edit.cookie) + " " + std::string(toUTF8(edit.mediaLocation).view()) +
                    " " + std::to_string(edit.bitRate) + " " + std::to_string(edit.labels.size());
            for (auto const& attribute : edit.logAttributes.entries()) {
                text += " " + std::string(attribute.value.view());
            }
            for (auto const& id : edit.externalIds) {
                text += " " + std::string(toUTF8(id.id).view());
            }
            for (std::string const& difference : inWords(edit.differences)) {
                text += " " + difference;
            }
            text += "\n";
        }
        for (std::string const& name : project.sequenceNames()) {
            text += name + ":";
            engine::Sequence const sequence = project.sequence(name).value();
            for (engine::Placement const& placement : sequence.placements) {
                for (std::int64_t const value :
                     {placement.number, placement.in, placement.out, placement.start, placement.length}) {
                    text += " " + std::to_string(value);
                }
                text += ";";
            }
            text += "\n";
        }
        engine::Database database(file);
        for (engine::Statement row = database.prepare(
                 "SELECT words, placement, media, bit_rate, undone, sequence, rate, position, clip_in, "
                 "clip_out, length, "
                 "(SELECT count(*) FROM step_difference WHERE step = number) FROM step ORDER BY number");
             row.step();) {
            for (int column = 0; column < 12; ++column) {
                text += std::string(row.text(column)) + " ";
            }
            text += "\n";
        }
        return text;
    }

    // What the project is after so many changes, from one that nobody kills.
    std::string const& stateAfter(int changes) {
        if (undisturbed_ == nullptr) {
            auto opened = engine::Project::open(folder.path() / "undisturbed.sqlite", inspect);
            undisturbed_ = std::move(*opened);
            states_.push_back(stateOf(*undisturbed_, folder.path() / "undisturbed.sqlite"));
        }
        while (static_cast<int>(states_.size()) <= changes) {
            perform(*undisturbed_, static_cast<int>(states_.size()) - 1);
            states_.push_back(stateOf(*undisturbed_, folder.path() / "undisturbed.sqlite"));
        }
        return states_[static_cast<std::size_t>(changes)];
    }

    TemporaryFolder folder;
    InstalledLog log;

private:
    std::unique_ptr<engine::Project> undisturbed_;
    std::vector<std::string> states_;
};

TEST_F(Crash, EveryStateThatIsFoundIsOneThatACommitMade) {
    fs::path const file = folder.path() / "project.sqlite";
    std::mt19937 random(4711);
    int changes = 0;
    int between = 0;
    for (int kill = 0; kill < kills; ++kill) {
        ChildProcess child([&](ParentLine const& line) {
            auto opened = engine::Project::open(file, inspect);
            for (int number = changes; opened; ++number) {
                perform(**opened, number);
                line.tell('d');
            }
        });
        int reported = 0;
        for (int const wanted = static_cast<int>(random() % 5); reported < wanted && child.hear() == 'd';) {
            ++reported;
        }
        // Somewhere in the work that comes next.
        auto const moment = std::chrono::steady_clock::now() + std::chrono::microseconds(random() % 4000);
        while (std::chrono::steady_clock::now() < moment) {
        }
        child.kill();
        while (child.hear() == 'd') {
            ++reported;
        }

        auto opened = engine::Project::open(file, inspect);
        ASSERT_TRUE(opened) << opened.error();
        ASSERT_TRUE((*opened)->canWrite());
        std::string const found = stateOf(**opened, file);
        changes += reported;
        if (found != stateAfter(changes)) {
            ASSERT_EQ(found, stateAfter(changes + 1)) << "after kill " << kill;
            ++changes;
            ++between;
        }
    }
    EXPECT_GT(changes, kills);
    EXPECT_EQ(log.count("damaged"), 0);
    RecordProperty("changes", changes);
    RecordProperty("committed_but_not_reported", between);
}

TEST_F(Crash, AProjectWhoseMakingWasKilledIsMadeByTheNext) {
    std::mt19937 random(815);
    for (int kill = 0; kill < 40; ++kill) {
        fs::path const file = folder.path() / ("new" + std::to_string(kill) + ".sqlite");
        {
            ChildProcess child([&](ParentLine const& line) {
                line.tell('s');
                auto const opened = engine::Project::open(file, inspect);
                line.tell('o');
                (void)line.hear();
            });
            ASSERT_EQ(child.hear(), 's');
            auto const moment = std::chrono::steady_clock::now() + std::chrono::microseconds(random() % 8000);
            while (std::chrono::steady_clock::now() < moment) {
            }
            child.kill();
        }
        auto opened = engine::Project::open(file, inspect);
        ASSERT_TRUE(opened) << opened.error();
        perform(**opened, 0);
        EXPECT_EQ((*opened)->edits().size(), 1U);
    }
    EXPECT_EQ(log.count("damaged"), 0);
}

} // namespace
} // namespace test

#include "host/edit/EditPtr.h"

#include <utility>

#include <gtest/gtest.h>

#include "tests/fake_host/FakeHost.h"

namespace {

using Calls = std::vector<std::string>;

class EditPointer : public testing::Test {
protected:
    EditPointer() {
        made = host.edits.makeNewClip(1, 2, 10, Zq::FrameRate::f25, {});
        cookie = host.edits.cookies().front();
        host.edits.record.forget();
    }
    int openings() { return host.edits.stateOf(cookie).openings; }

    fake::Host host;
    Zq::Ptr<Edit> made;
    Cookie cookie;
};

TEST_F(EditPointer, AnEditIsOpenAsLongAsItLives) {
    {
        EditPtr const edit(made);
        EXPECT_TRUE(edit);
        EXPECT_EQ(openings(), 1);
    }
    EXPECT_EQ(openings(), 0);
    EXPECT_EQ(host.edits.record.calls(), (Calls{"opened", "closed"}));
}

TEST_F(EditPointer, ACopyOpensTheEditOnceMore) {
    EditPtr const edit(made);
    {
        EditPtr const copy(edit); // NOLINT(performance-unnecessary-copy-initialization): it is under test
        EXPECT_EQ(openings(), 2);
    }
    EXPECT_EQ(openings(), 1);
}

TEST_F(EditPointer, AMoveHandsTheOpeningOn) {
    EditPtr first(made);
    EditPtr const second(std::move(first));
    EXPECT_FALSE(first); // NOLINT(bugprone-use-after-move): that it is empty now is what matters
    EXPECT_TRUE(second);
    EXPECT_EQ(host.edits.record.calls(), Calls{"opened"});
}

TEST_F(EditPointer, AnAssignmentClosesWhatWasOpenBefore) {
    Zq::Ptr<Edit> const other = host.edits.makeNewClip(1, 2, 10, Zq::FrameRate::f25, {});
    EditPtr edit(made);
    edit = EditPtr(other);
    EXPECT_EQ(openings(), 0);
    EXPECT_EQ(host.edits.stateOf(host.edits.cookies()[1]).openings, 1);
    edit = EditPtr();
    EXPECT_FALSE(edit);
    EXPECT_EQ(host.edits.stateOf(host.edits.cookies()[1]).openings, 0);
}

TEST_F(EditPointer, AnAssignmentToItselfKeepsTheEditOpen) {
    EditPtr edit(made);
    EditPtr const& same = edit;
    edit = same;
    EXPECT_TRUE(edit);
    EXPECT_EQ(openings(), 1);
}

TEST_F(EditPointer, AnEmptyOneOpensNothing) {
    EditPtr const none;
    EditPtr const copy(none); // NOLINT(performance-unnecessary-copy-initialization): it is under test
    EXPECT_FALSE(none);
    EXPECT_FALSE(copy);
    EXPECT_FALSE(EditPtr(Zq::Ptr<Edit>()));
    EXPECT_TRUE(host.edits.record.calls().empty());
}

TEST_F(EditPointer, ItKeepsTheEditAlive) {
    EditPtr edit(std::move(made));
    host.edits.remove(cookie);
    EXPECT_EQ(edit->getCookie(), cookie);
}

TEST_F(EditPointer, AnIdentityOpensItsEdit) {
    EXPECT_EQ(EditPtr::i_open(cookie, 0)->getCookie(), cookie);
    EXPECT_EQ(openings(), 0);
    EXPECT_FALSE(EditPtr::i_open({}, 0));
    host.edits.remove(cookie);
    EXPECT_FALSE(EditPtr::i_open(cookie, 0));
}

TEST_F(EditPointer, AModifierOpensTheEditAnewForEachCall) {
    EditModifier const edit(made);
    EXPECT_FALSE(edit.isEmpty());
    EXPECT_EQ(openings(), 0);
    edit->setTemporary(true);
    EXPECT_TRUE(edit->isTemporary());
    EXPECT_EQ(host.edits.record.calls(),
              (Calls{"opened", "setTemporary true", "closed", "opened", "isTemporary", "closed"}));
}

TEST_F(EditPointer, AModifierWithoutAnEditIsEmpty) {
    EditModifier const none;
    EXPECT_TRUE(none.isEmpty());
    EXPECT_FALSE(none);
    EXPECT_FALSE(none.open());
}

} // namespace

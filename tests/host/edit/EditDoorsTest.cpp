#include <gtest/gtest.h>

#include "tests/fake_host/FakeHost.h"

namespace {

using Calls = std::vector<std::string>;

// The doors to edits, external ids and actions.
class EditDoors : public testing::Test {
protected:
    fake::Host host;
};

TEST_F(EditDoors, TheManagerHandsOnWhatItIsGiven) {
    Cookie cookie;
    cookie.uuid.bytes[0] = 5;
    EditModifier const edit = EditManager::makeNewClip(1, 6, 12.5, Zq::FrameRate::f50, cookie);
    ASSERT_FALSE(edit.isEmpty());
    EXPECT_EQ(host.edits.record.calls(), Calls{"make 1 6 12.5 8"});
    EXPECT_EQ(edit->getCookie(), cookie);
}

TEST_F(EditDoors, AnActionReachesTheRecordWithItsNumber) {
    UIStateManager::instance().recordAction(eUIActionType::downloadMedia);
    UIStateManager::instance().recordAction(static_cast<eUIActionType>(7));
    EXPECT_EQ(host.actions.record.calls(), (Calls{"action 34", "action 7"}));
}

TEST_F(EditDoors, AnObjectHasOneIdOfAKind) {
    Cookie const object = EditManager::makeNewClip(1, 0, 1, Zq::FrameRate::f25, {})->getCookie();
    ExtIDMgr& ids = ExtIDMgr::instance();
    EXPECT_TRUE(ids.getAssociatedID(object, L"T7").isEmpty());
    ids.setAssociatedID(object, L"T7", L"1");
    ids.setAssociatedID(object, L"FQ", L"2");
    ids.setAssociatedID(object, L"T7", L"3");
    EXPECT_EQ(ids.getAssociatedID(object, L"T7"), L"3");
    EXPECT_EQ(ids.getAssociatedID(object, L"FQ"), L"2");
    EXPECT_EQ(ids.findAssociatedObject(L"T7", L"3"), object);
    EXPECT_TRUE(ids.findAssociatedObject(L"T7", L"1").isNull());
    EXPECT_TRUE(ids.findAssociatedObject(L"T7", L"2").isNull());
}

TEST_F(EditDoors, OfTwoObjectsWithOneIdTheLatestIsFound) {
    Cookie const first = EditManager::makeNewClip(1, 0, 1, Zq::FrameRate::f25, {})->getCookie();
    Cookie const second = EditManager::makeNewClip(1, 0, 1, Zq::FrameRate::f25, {})->getCookie();
    ExtIDMgr& ids = ExtIDMgr::instance();
    ids.setAssociatedID(first, L"T7", L"1");
    ids.setAssociatedID(second, L"T7", L"1");
    EXPECT_EQ(ids.findAssociatedObject(L"T7", L"1"), second);
    EXPECT_EQ(ids.getAssociatedID(first, L"T7"), L"1");
    ids.setAssociatedID(first, L"T7", L"1");
    EXPECT_EQ(ids.findAssociatedObject(L"T7", L"1"), first);
}

TEST_F(EditDoors, WithoutServicesTheyLeadNowhere) {
    HostServices const before = installHost({});
    EXPECT_TRUE(EditManager::makeNewClip(1, 0, 1, Zq::FrameRate::f25, {}).isEmpty());
    EXPECT_FALSE(EditPtr::i_open({}, 0));
    UIStateManager::instance().recordAction(eUIActionType::downloadMedia);
    ExtIDMgr::instance().setAssociatedID({}, L"T7", L"1");
    EXPECT_TRUE(ExtIDMgr::instance().getAssociatedID({}, L"T7").isEmpty());
    EXPECT_TRUE(ExtIDMgr::instance().findAssociatedObject(L"T7", L"1").isNull());
    installHost(before);
}

} // namespace

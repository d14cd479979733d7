// The doors that lead to preferences, configuration, strings, clock, tasks and the platform, with and without
// a host behind.

#include <gtest/gtest.h>

#include "host/network/OSPrivate.h"
#include "host/object/Identity.h"
#include "host/os/OS.h"
#include "host/os/getTime32.h"
#include "host/os/iShell.h"
#include "host/preferences/EditorPreferences.h"
#include "host/preferences/config_int.h"
#include "host/preferences/configb.h"
#include "host/resources/resourceStr.h"
#include "host/tasks/BackgroundTaskQueueBase.h"
#include "host/tasks/CriticalSection.h"
#include "tests/fake_host/FakePreferences.h"
#include "tests/host/core/InstalledHost.h"
#include "tests/host/core/PrintText.h"

namespace {

class Preferences : public testing::Test {
protected:
    static HostServices services(iPreferenceStore& store) {
        HostServices services;
        services.preferences = &store;
        return services;
    }
    fake::Preferences store_;
    InstalledHost host_{services(store_)};
};

TEST_F(Preferences, AStoredValueIsRead) {
    prefs().setPreference("T7 HQ Proxies", false);
    prefs().setPreference("T7 Price", 3);
    prefs().setPreference("T7 User", L"user");
    EXPECT_FALSE(prefs().getPreference("T7 HQ Proxies", true));
    EXPECT_EQ(prefs().getPreference("T7 Price", 0), 3);
    EXPECT_EQ(prefs().getPreference("T7 User", L""), L"user");
    ASSERT_EQ(store_.writes().size(), 3U);
    EXPECT_EQ(store_.writes()[1].key, "T7 Price");
}

TEST_F(Preferences, AMissingValueHasTheDefault) {
    EXPECT_TRUE(prefs().getPreference("T7 HQ Proxies", true));
    EXPECT_FALSE(prefs().getPreference("T7 HQ Proxies", false));
    EXPECT_EQ(prefs().getPreference("T7 Price", 7), 7);
    EXPECT_EQ(prefs().getPreference("T7 User", WideString(L"none")), L"none");
}

TEST_F(Preferences, AValueOfAnotherTypeIsNone) {
    prefs().setPreference("k", 1);
    EXPECT_FALSE(prefs().getPreference("k", false));
    EXPECT_EQ(prefs().getPreference("k", L"text"), L"text");
}

TEST_F(Preferences, AnEmptyTextIsAValue) {
    prefs().setPreference("T7 User", L"");
    EXPECT_EQ(prefs().getPreference("T7 User", L"default"), L"");
}

TEST_F(Preferences, TheRevisionChangesWithEveryWrite) {
    std::uint64_t const before = prefs().revision();
    prefs().setPreference("k", 1);
    EXPECT_NE(prefs().revision(), before);
}

TEST(PreferencesWithoutAHost, HaveTheirDefaultsAndKeepNothing) {
    InstalledHost const none{HostServices()};
    prefs().setPreference("k", 1);
    prefs().setPreference("k", true);
    prefs().setPreference("k", L"text");
    EXPECT_EQ(prefs().getPreference("k", 5), 5);
    EXPECT_FALSE(prefs().getPreference("k", false));
    EXPECT_EQ(prefs().getPreference("k", L"d"), L"d");
    EXPECT_EQ(prefs().revision(), 0U);
}

TEST(Configuration, AKeyHasItsValueOrTheDefault) {
    fake::Configuration configuration;
    configuration.values["t7"] = 0;
    HostServices services;
    services.configuration = &configuration;
    InstalledHost const host(services);
    EXPECT_EQ(config_int("t7", 1), 0);
    EXPECT_EQ(config_int("other", 1), 1);
}

TEST(Configuration, WithoutAHostEveryKeyHasTheDefault) {
    InstalledHost const none{HostServices()};
    EXPECT_EQ(config_int("t7", 1), 1);
}

TEST(FormRecord, GivesTheIndexAndTheValueOfAKey) {
    configb record;
    record.set("username", "user");
    record.set("password", "word");
    NarrowString value;
    EXPECT_EQ(record.in("username", value), 0);
    EXPECT_EQ(value, "user");
    EXPECT_EQ(record.in("password", value), 1);
    EXPECT_EQ(value, "word");
}

TEST(FormRecord, AnAbsentKeyLeavesTheTextAlone) {
    configb const record;
    NarrowString value("before");
    EXPECT_EQ(record.in("username", value), -1);
    EXPECT_EQ(value, "before");
}

TEST(FormRecord, SettingAKeyAgainReplacesItsValue) {
    configb record;
    record.set("a", "1");
    record.set("b", "2");
    record.set("a", "3");
    NarrowString value;
    EXPECT_EQ(record.in("a", value), 0);
    EXPECT_EQ(value, "3");
    EXPECT_EQ(record.in("b", value), 1);
}

TEST(FormRecord, ACopyIsIndependent) {
    configb first;
    first.set("a", "1");
    configb second;
    second = first;
    second.set("a", "2");
    NarrowString value;
    (void)first.in("a", value);
    EXPECT_EQ(value, "1");
    (void)second.in("a", value);
    EXPECT_EQ(value, "2");
}

TEST(ResourceStrings, AreReadByNumberAndPadded) {
    fake::Strings strings;
    strings.texts[13771] = L"Download failed";
    HostServices services;
    services.strings = &strings;
    InstalledHost const host(services);
    EXPECT_EQ(resourceStrW(13771), L"Download failed");
    EXPECT_EQ(paddedResourceStrW(13771, nullptr, L" : ", ResStrFmt::plain), L"Download failed : ");
    EXPECT_EQ(paddedResourceStrW(13771, L"> ", nullptr, ResStrFmt::plain), L"> Download failed");
    EXPECT_EQ(paddedResourceStrW(13771, nullptr, nullptr, ResStrFmt::plain), L"Download failed");
}

TEST(ResourceStrings, AreEmptyWithoutAHost) {
    InstalledHost const none{HostServices()};
    EXPECT_TRUE(resourceStrW(13771).isEmpty());
    EXPECT_EQ(paddedResourceStrW(13771, L"(", L")", ResStrFmt::plain), L"()");
}

TEST(Time, IsTheHostsClock) {
    struct Clock final : iClock {
        std::uint32_t seconds() override { return 4000000000U; }
    } clock;
    HostServices services;
    services.clock = &clock;
    InstalledHost const host(services);
    EXPECT_EQ(getTime32(), 4000000000U);
}

TEST(Time, IsZeroWithoutAHost) {
    InstalledHost const none{HostServices()};
    EXPECT_EQ(getTime32(), 0U);
}

TEST(TaskStatus, IsWhatTheHostSaysOfThisThread) {
    struct Context final : iTaskContext {
        iBackgroundTask::eStatus currentTaskStatus() override { return iBackgroundTask::eCancelling; }
    } context;
    HostServices services;
    services.tasks = &context;
    InstalledHost const host(services);
    EXPECT_EQ(BackgroundTaskQueueBase::getCurrentTaskStatus(), iBackgroundTask::eCancelling);
}

TEST(TaskStatus, IsRunningOnAThreadWithoutATask) {
    InstalledHost const none{HostServices()};
    EXPECT_EQ(BackgroundTaskQueueBase::getCurrentTaskStatus(), iBackgroundTask::eRunning);
}

TEST(Identity, TheDefaultCookieIsTheNullIdentity) {
    Cookie cookie;
    EXPECT_TRUE(cookie.isNull());
    cookie.kind[2] = 1;
    EXPECT_FALSE(cookie.isNull());
    EXPECT_NE(cookie, Cookie());
    cookie = Cookie();
    cookie.uuid.bytes[15] = 1;
    EXPECT_FALSE(cookie.isNull());
    EXPECT_LT(Cookie(), cookie);
}

TEST(CriticalSection, TheSameThreadMayEnterAgain) {
    CriticalSection section;
    section.enter();
    section.enter();
    section.leave();
    section.leave();
    section.enter();
    section.leave();
}

TEST(HostServices, InstallingGivesBackWhatWasThere) {
    fake::Strings strings;
    HostServices first;
    first.strings = &strings;
    HostServices const before = installHost(first);
    EXPECT_EQ(installedHost().strings, &strings);
    HostServices const returned = installHost(before);
    EXPECT_EQ(returned.strings, &strings);
    EXPECT_EQ(installedHost().strings, before.strings);
}

TEST(HostServices, TheRootsLeadToTheInstalledServices) {
    struct Shell final : iShell {
        bool openInBrowser(WideString const&) override { return true; }
        WideString getStandardFolder(int number) override { return number == mediaFolder ? L"/m/" : L""; }
    } shell;
    struct Security final : iSecurity {
        Zq::Ptr<iHash> getHash() override { return {}; }
    } security;
    HostServices services;
    services.shell = &shell;
    services.security = &security;
    InstalledHost const host(services);
    EXPECT_EQ(OS().shell().getStandardFolder(5), L"/m/");
    EXPECT_EQ(&OS().shell(), &shell);
    EXPECT_EQ(&OSPrivate().security(), &security);
}

TEST(HostServices, MemoryAndCountsNeedNoHost) {
    InstalledHost const none{HostServices()};
    void* const memory = OS().memory().allocate(16);
    ASSERT_NE(memory, nullptr);
    OS().memory().free(memory);
    OS().memory().free(nullptr);
    Zq::RefCount count;
    OS().refCounts().add(count);
    OS().refCounts().add(count);
    EXPECT_EQ(OS().refCounts().release(count), 1U);
    EXPECT_EQ(OS().refCounts().release(count), 0U);
}

} // namespace

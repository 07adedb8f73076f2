// The update check against a local HTTP server: a newer version, the same or an
// older one, answers that are no version file, an HTTP error, a server that never
// answers (the check ends within five seconds while the event loop keeps running),
// and addresses that are no web address. Version numbers as builds name them.

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QTimer>
#include <optional>

#include "base/string_table.h"
#include "support/event_loop.h"
#include "support/local_http_server.h"
#include "support/support_texts.h"
#include "support/update_check.h"
#include "support/version_number.h"

using namespace kestrel;

namespace {

VersionNumber V(const char *text) { return *ParseVersionNumber(text); }

// Runs one check to its end (or 8 s, which fails the test).
std::optional<UpdateCheckResult> Check(const std::string &url, const VersionNumber &running)
{
    test::TestApp();
    UpdateCheck check;
    std::optional<UpdateCheckResult> got;
    QObject::connect(&check, &UpdateCheck::finished, [&](const UpdateCheckResult &r) { got = r; });
    check.start(url, running);
    EXPECT_FALSE(got.has_value()) << "the answer must come through the event loop";
    test::SpinUntil([&] { return got.has_value(); }, 8000);
    return got;
}

} // namespace

TEST(UpdateCheck, TellsNewerFromSameAndOlder)
{
    SetGlobalLang(kLangEnglish);
    test::TestApp();
    test::LocalHttpServer server;
    server.answer("/newer", 200, "# Kestrel\r\nversion=0.10\r\nurl=https://kestrel.example.org/get\r\nnotes=Faster grid.\r\n");
    server.answer("/same", 200, "url=https://kestrel.example.org/get\nversion=v0.9.0\n");
    server.answer("/older", 200, "version=0.8.12\nurl=http://kestrel.example.org/get\n");

    // 0.10 is after 0.9, though "0.10" < "0.9" as text.
    auto r = Check(server.url("/newer"), V("0.9"));
    ASSERT_TRUE(r);
    EXPECT_EQ(r->outcome, UpdateOutcome::Newer);
    EXPECT_EQ(r->file.version.text(), "0.10");
    EXPECT_EQ(r->file.url, "https://kestrel.example.org/get");
    const std::string message = UpdateMessageText(*r);
    EXPECT_NE(message.find("0.10"), std::string::npos) << message;
    EXPECT_NE(message.find("https://kestrel.example.org/get"), std::string::npos) << message;
    EXPECT_NE(message.find("Faster grid."), std::string::npos) << message;
    EXPECT_NE(UpdateStatusLine(*r).find("0.10"), std::string::npos);

    for (const char *path : {"/same", "/older"}) {
        r = Check(server.url(path), V("0.9"));
        ASSERT_TRUE(r) << path;
        EXPECT_EQ(r->outcome, UpdateOutcome::UpToDate) << path;
        EXPECT_EQ(UpdateMessageText(*r), StrArg(support_txt::kUpToDate, "0.9"));
        EXPECT_EQ(UpdateStatusLine(*r), "") << "up to date at start-up says nothing";
    }
}

TEST(UpdateCheck, AnswersThatAreNoVersionFileAreBadFiles)
{
    SetGlobalLang(kLangEnglish);
    test::TestApp();
    test::LocalHttpServer server;
    server.answer("/portal", 200, "<html><body>Welcome to the guest network. Sign in first.</body></html>");
    server.answer("/words", 200, "version=soon\nurl=https://kestrel.example.org/get\n");
    server.answer("/nourl", 200, "version=2.0\nurl=ftp://kestrel.example.org/get\n");
    server.answer("/huge", 200, QByteArray(kMaxVersionFileSize + 100, '#'));
    const std::pair<const char *, int> cases[] = {
        {"/portal", support_txt::kNoVersionLine}, {"/nourl", support_txt::kNoDownloadAddress}, {"/huge", support_txt::kTooLarge}};
    for (const auto &[path, reason] : cases) {
        const auto r = Check(server.url(path), V("1.0"));
        ASSERT_TRUE(r) << path;
        EXPECT_EQ(r->outcome, UpdateOutcome::BadFile) << path;
        EXPECT_EQ(r->problem.code, support_txt::kBadFile) << path;
        EXPECT_EQ(r->problem.detail, Str(reason)) << path;
    }
    const auto r = Check(server.url("/words"), V("1.0"));
    ASSERT_TRUE(r);
    EXPECT_EQ(r->outcome, UpdateOutcome::BadFile);
    EXPECT_NE(UpdateMessageText(*r).find("\"soon\""), std::string::npos) << UpdateMessageText(*r);
}

TEST(UpdateCheck, HttpErrorsAndBadAddressesFail)
{
    SetGlobalLang(kLangEnglish);
    test::TestApp();
    test::LocalHttpServer server;
    server.answer("/broken", 500, "version=9.9\nurl=https://kestrel.example.org/get\n");
    for (const auto &[path, status] : {std::pair{"/gone", "404"}, {"/broken", "500"}}) {
        const auto r = Check(server.url(path), V("1.0"));
        ASSERT_TRUE(r) << path;
        EXPECT_EQ(r->outcome, UpdateOutcome::Failed) << path << ": an error page is no version file, whatever it says";
        EXPECT_EQ(r->problem.code, support_txt::kNoAnswer);
        EXPECT_NE(UpdateStatusLine(*r).find(status), std::string::npos) << UpdateStatusLine(*r);
    }
    const int asked = server.requests();
    for (const char *url : {"", "kestrel.example.org/version.txt", "file:///etc/passwd", "http://", "http://exa mple.org/v"}) {
        const auto r = Check(url, V("1.0"));
        ASSERT_TRUE(r) << url;
        EXPECT_EQ(r->outcome, UpdateOutcome::Failed) << url;
        EXPECT_EQ(r->problem.code, support_txt::kBadAddress) << url;
    }
    EXPECT_EQ(server.requests(), asked);
}

TEST(UpdateCheck, AServerThatNeverAnswersEndsWithinFiveSecondsAndTheLoopRuns)
{
    SetGlobalLang(kLangEnglish);
    test::TestApp();
    test::LocalHttpServer server;
    server.silent("/silent");
    UpdateCheck check; // the default time-out
    std::optional<UpdateCheckResult> got;
    QObject::connect(&check, &UpdateCheck::finished, [&](const UpdateCheckResult &r) { got = r; });
    int ticks = 0;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, [&] { ++ticks; });
    tick.start(50);

    QElapsedTimer clock;
    clock.start();
    check.start(server.url("/silent"), V("1.0"));
    EXPECT_LT(clock.elapsed(), 200) << "start() must not wait for the network";
    ASSERT_TRUE(test::SpinUntil([&] { return got.has_value(); }, 8000));
    const qint64 took = clock.elapsed();
    EXPECT_EQ(server.requests(), 1);
    EXPECT_GE(took, 4500);
    EXPECT_LE(took, 5300); // five seconds and the time to say so
    // A timer every 50 ms kept firing while the check waited.
    EXPECT_GE(ticks, static_cast<int>(took / 50) - 20);
    EXPECT_EQ(got->outcome, UpdateOutcome::Failed);
    EXPECT_EQ(got->problem.detail, StrArg(support_txt::kTimedOut, "5"));
}

TEST(VersionNumber, BuildNamesCompareByTheirNumbers)
{
    // git describe after a tag: the tag's numbers count, the rest does not.
    ASSERT_TRUE(LeadingVersionNumber("v0.3-12-gabcdef-dirty"));
    EXPECT_EQ(LeadingVersionNumber("v0.3-12-gabcdef-dirty")->text(), "0.3");
    EXPECT_EQ(LeadingVersionNumber("1.4.2")->text(), "1.4.2");
    // A bare commit hash, even one of digits only, is no version: the project's number stands in.
    for (const char *hash : {"804b3f0", "1234567-dirty", "abc1234", ""})
        EXPECT_FALSE(LeadingVersionNumber(hash)) << hash;
    EXPECT_EQ(RunningVersionNumber("1234567-dirty", "0.1.0").text(), "0.1.0");
    EXPECT_EQ(RunningVersionNumber("v2.1-3-g1234567", "0.1.0").text(), "2.1");

    EXPECT_EQ(CompareVersions(V("0.3"), V("0.3.0")), std::strong_ordering::equal);
    EXPECT_EQ(CompareVersions(V("0.10"), V("0.9.9")), std::strong_ordering::greater);
    EXPECT_EQ(CompareVersions(V("1.2.3"), V("1.3")), std::strong_ordering::less);
    for (const char *bad : {"1.", ".1", "1..2", "1.2a", "v", "-1", "1.99999999999"})
        EXPECT_FALSE(ParseVersionNumber(bad)) << bad;
}

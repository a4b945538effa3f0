#include "core/errors.h"
#include "platform/doubles/fakealerts.h"
#include "platform/service.h"
#include "resources/statusmessages.h"
#include "tests/support/installed.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

namespace {

class ErrorsTest : public ::testing::Test {
protected:
    ~ErrorsTest() override {
        while (firstHiding != nullptr)
            ShowErrors();
        while (firstContext != nullptr)
            RemoveErrorContext();
    }

    static void PushContext(const std::string &text) {
        Str255 context;
        SetPString(context, text);
        ASSERT_TRUE(AddErrorContext(context));
    }

    Installed<platform::FakeAlerts, platform::Alerts> alerts;
};

TEST_F(ErrorsTest, NoErrorShowsStoresAndBeepsNothing) {
    OSErr store = fnfErr;
    ASSERT_TRUE(HideErrors(&store));
    EXPECT_EQ(store, noErr) << "hiding starts from a clean status";
    store = ioErr;
    TestError(noErr);
    EXPECT_EQ(store, ioErr);
    EXPECT_EQ(alerts.beeps, 0);
    ShowErrors();
    TestError(noErr);
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

TEST_F(ErrorsTest, HiddenErrorsReachEveryLevelWithOneBeep) {
    OSErr outer = noErr;
    OSErr inner = noErr;
    ASSERT_TRUE(HideErrors(&outer));
    ASSERT_TRUE(HideErrors(&inner));
    TestError(fnfErr);
    EXPECT_EQ(outer, fnfErr);
    EXPECT_EQ(inner, fnfErr);
    EXPECT_EQ(alerts.beeps, 1);
    TestError(ioErr); // a later error overwrites an earlier one
    EXPECT_EQ(outer, ioErr);
    EXPECT_EQ(alerts.beeps, 2);
    EXPECT_TRUE(alerts.alerts.isEmpty());

    ShowErrors();
    TestError(eofErr);
    EXPECT_EQ(inner, ioErr) << "a popped record is no longer written";
    EXPECT_EQ(outer, eofErr);
    ShowErrors();
    TestError(eofErr);
    EXPECT_EQ(alerts.alerts.size(), 1) << "with no hiding left the alert shows";
}

TEST_F(ErrorsTest, PoppingEmptyStacksIsHarmless) {
    ShowErrors();
    RemoveErrorContext();
    EXPECT_EQ(firstHiding, nullptr);
    EXPECT_EQ(firstContext, nullptr);
}

TEST_F(ErrorsTest, ContextsRunNewestFirstAndStopAt255Bytes) {
    PushContext("A");
    PushContext("B");
    TestError(fnfErr);
    ASSERT_EQ(alerts.alerts.size(), 1);
    EXPECT_EQ(alerts.alerts[0].headline.left(3), QStringLiteral("BA "));
    RemoveErrorContext();
    RemoveErrorContext();

    PushContext(std::string(200, 'x'));
    PushContext(std::string(200, 'y'));
    PushContext(std::string(200, 'z'));
    PushContext(""); // an empty context adds nothing
    const QString context = MakeErrorAlertTexts(fnfErr).context;
    EXPECT_EQ(context.size(), 255);
    EXPECT_EQ(context, QString(200, u'z') + QString(55, u'y'));
}

TEST_F(ErrorsTest, AlertCarriesNumberMessageAndExplanation) {
    TestError(userCanceledErr); // a cancel that reaches the reporter is reported too
    ASSERT_EQ(alerts.alerts.size(), 1);
    EXPECT_EQ(alerts.alerts[0].status, -128);
    EXPECT_FALSE(alerts.alerts[0].headline.isEmpty());
    EXPECT_NE(alerts.alerts[0].headline, FallbackErrorText());
    EXPECT_NE(alerts.alerts[0].explanation, FallbackErrorText());

    TestError(-12345);
    ASSERT_EQ(alerts.alerts.size(), 2);
    EXPECT_EQ(alerts.alerts[1].status, -12345);
    EXPECT_EQ(alerts.alerts[1].headline, FallbackErrorText());
    EXPECT_EQ(alerts.alerts[1].explanation, FallbackErrorText());
}

TEST_F(ErrorsTest, ManagerStatusWinsOverTheNullResult) {
    int block = 0;
    EXPECT_EQ(TestMemError(nullptr), memFullErr);
    EXPECT_EQ(TestMemError(&block), noErr);
    EXPECT_EQ(TestMemError(&block, ioErr), ioErr);
    EXPECT_EQ(TestResError(&block), noErr);
    EXPECT_EQ(TestResError(nullptr), resNotFound);
    EXPECT_EQ(TestResError(nullptr, fnfErr), fnfErr);
    ASSERT_EQ(alerts.alerts.size(), 4);
    EXPECT_EQ(alerts.alerts[0].status, -108);
    EXPECT_EQ(alerts.alerts[1].status, -36);
    EXPECT_EQ(alerts.alerts[2].status, -192);
    EXPECT_EQ(alerts.alerts[3].status, -43);
}

// The errno table as users and the preferences file see it, and a real message
// for every status it can produce.
TEST(ErrnoMapping, EveryMappedStatusHasItsOwnMessage) {
    const std::pair<int, OSErr> mapping[] = {
        {ENOENT, fnfErr},         {ENOTDIR, dirNFErr}, {EACCES, afpAccessDenied},
        {EPERM, afpAccessDenied}, {EEXIST, dupFNErr},  {ENOSPC, dskFulErr},
        {EROFS, wPrErr},          {EIO, ioErr},        {ENAMETOOLONG, bdNamErr},
        {ENOMEM, memFullErr},     {EBUSY, fBsyErr},    {EMFILE, tmfoErr},
        {ENFILE, tmfoErr},        {ELOOP, ioErr},      {EPROTO, ioErr},
    };
    for (const auto &[error, status] : mapping)
        EXPECT_EQ(OSErrFromErrno(error), status) << "errno " << error;

    for (int error = 1; error < 134; ++error) {
        const ErrorAlertTexts texts = MakeErrorAlertTexts(OSErrFromErrno(error));
        EXPECT_NE(texts.message, FallbackErrorText()) << "errno " << error;
    }
    for (OSErr status :
         {memFullErr, procNotFound, connectionInvalid, errAEEventNotHandled, dragNotAcceptedErr,
          kLSApplicationNotFoundErr, eofErr, posErr, paramErr, resNotFound})
        EXPECT_NE(MakeErrorAlertTexts(status).message, FallbackErrorText()) << status;
}

} // namespace

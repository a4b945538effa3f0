#include "core/errors.h"
#include "platform/doubles/fakealerts.h"
#include "resources/statusmessages.h"
#include "tests/support/installed.h"

#include <gtest/gtest.h>

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

TEST_F(ErrorsTest, HiddenErrorsReachEveryLevelWithOneBeepEach) {
    OSErr outer = fnfErr, inner = fnfErr;
    ASSERT_TRUE(HideErrors(&outer));
    ASSERT_TRUE(HideErrors(&inner));
    EXPECT_EQ(outer, noErr) << "hiding starts from a clean status";
    TestError(noErr);
    EXPECT_EQ(alerts.beeps, 0);
    ErrorOffer offer(QStringLiteral("About “x”"), {QStringLiteral("Act")});
    TestError(fnfErr); // no alert: nothing chosen
    TestError(ioErr);  // a later error overwrites an earlier one
    EXPECT_EQ(outer, ioErr);
    EXPECT_EQ(inner, ioErr);
    EXPECT_EQ(alerts.beeps, 2);
    EXPECT_EQ(offer.chosen, -1);
    ShowErrors();
    TestError(eofErr);
    EXPECT_EQ(inner, ioErr) << "a popped record is no longer written";
    EXPECT_EQ(outer, eofErr);
    ShowErrors();
    ShowErrors(); // popping empty stacks is harmless
    RemoveErrorContext();
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

TEST_F(ErrorsTest, TheAlertSaysWhatHappenedFirstAndTheNumberInItsDetails) {
    PushContext("A");
    PushContext("B");
    TestError(userCanceledErr); // a cancel that reaches the reporter is reported too
    TestError(-12345);
    ASSERT_EQ(alerts.alerts.size(), 2);
    const platform::Alert &known = alerts.alerts[0];
    EXPECT_EQ(known.status, -128);
    EXPECT_EQ(known.headline, QStringLiteral("BA ") + MakeErrorAlertTexts(-128).message);
    EXPECT_FALSE(known.headline.contains(QStringLiteral("128")));
    EXPECT_TRUE(known.details.contains(QStringLiteral("-128")));
    EXPECT_NE(known.explanation, FallbackErrorText());
    EXPECT_EQ(alerts.alerts[1].headline, QStringLiteral("BA ") + FallbackErrorText());
    EXPECT_EQ(alerts.alerts[1].explanation, FallbackErrorText());
    RemoveErrorContext();
    RemoveErrorContext();

    for (const char c : {'x', 'y', 'z'})
        PushContext(std::string(200, c));
    PushContext(""); // an empty context adds nothing
    EXPECT_EQ(MakeErrorAlertTexts(fnfErr).context, QString(200, u'z') + QString(55, u'y'));
}

TEST_F(ErrorsTest, AnOfferNamesTheItemAndReportsTheChoice) {
    ErrorOffer outer(QStringLiteral("outer"), {QStringLiteral("Never shown")});
    ErrorOffer offer(QStringLiteral("No application is set to open “x.foo”."),
                     {QStringLiteral("Open With…"), QStringLiteral("Show in Folder")});
    alerts.answers = {1, 2};
    TestError(kLSApplicationNotFoundErr);
    EXPECT_EQ(offer.chosen, 1);
    TestError(kLSApplicationNotFoundErr); // OK
    EXPECT_EQ(offer.chosen, -1);
    const platform::Alert &alert = alerts.alerts.first();
    EXPECT_EQ(alert.headline, offer.headline);
    EXPECT_EQ(alert.buttons, offer.actions + QStringList{QStringLiteral("OK")});
    EXPECT_EQ(alert.defaultButton, 2);
    EXPECT_EQ(alert.escapeButton, 2);
}

// Every status the errno table or the program can produce has its own message.
TEST(ErrnoMapping, EveryMappedStatusHasItsOwnMessage) {
    for (int error = 1; error < 134; ++error)
        EXPECT_NE(MakeErrorAlertTexts(OSErrFromErrno(error)).message, FallbackErrorText()) << error;
    for (OSErr status : {unimpErr, memFullErr, procNotFound, connectionInvalid,
                         errAEEventNotHandled, errAETimeout, errAEEventFailed, dragNotAcceptedErr,
                         kLSApplicationNotFoundErr, eofErr, posErr, paramErr, resNotFound})
        EXPECT_NE(MakeErrorAlertTexts(status).message, FallbackErrorText()) << status;
}

} // namespace

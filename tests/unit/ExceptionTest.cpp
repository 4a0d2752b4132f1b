#include "support/LogFixture.h"
#include "utils/Error.h"
#include "utils/ErrorText.h"
#include "utils/Raise.h"
#include "utils/WrapException.h"

namespace quillmark {
namespace {

class Exceptions : public test::LogFixture {
protected:
    Exception inner{QStringLiteral("Fault"), QStringLiteral("disk\r full")};
};

TEST_F(Exceptions, WithoutCausesOneIsRenderedOnOneLineWithoutCarriageReturns) {
    EXPECT_EQ(errorExceptionToString(Exception(QStringLiteral("A\r"), QStringLiteral("b\r\nc"))),
              QStringLiteral("A\r (b\nc)"));
}

TEST_F(Exceptions, WrappingKeepsTheNameAndGivesANewReason) {
    const Exception outer = prepareException(inner, "writing \"%@\" (%d)", QStringLiteral("x"), 5);
    EXPECT_EQ(outer.name(), QStringLiteral("Fault"));
    EXPECT_EQ(outer.reason(), QStringLiteral("writing \"x\" (5)"));
    EXPECT_EQ(outer.userInfo().keys(), QStringList({QStringLiteral("stack")}));
    EXPECT_EQ(*outer.stack(), QStringList({QStringLiteral("Fault (disk\r full)")}));
    EXPECT_EQ(inner.stack(), nullptr);
}

TEST_F(Exceptions, WrappingTwiceSharesTheStackWithTheInnerException) {
    Exception middle = prepareException(inner, "middle");
    const Exception outer = prepareException(middle, "outer");
    EXPECT_EQ(*outer.stack(), QStringList({QStringLiteral("Fault (disk\r full)"), QStringLiteral("Fault (middle)")}));
    EXPECT_EQ(middle.stack(), outer.stack()); // deliberate: the inner one sees the addition too
}

TEST_F(Exceptions, TheNewestCauseComesFirstAndEachIsIndentedFurther) {
    Exception middle = prepareException(inner, "middle");
    const Exception outer = prepareException(middle, "outer");
    EXPECT_EQ(errorExceptionToString(outer), QStringLiteral("Fault (outer)\n"
                                                            "  Because:\n"
                                                            "  Fault (middle)\n"
                                                            "    Because:\n"
                                                            "    Fault (disk\r full)"));
}

TEST_F(Exceptions, WrappingIsLoggedInDetail) {
    const QString file = logToFile(kLogLevelDetailed);
    prepareException(inner, "outer");
    EXPECT_EQ(messagesOf(file), QStringList({QStringLiteral("Preparing exception Fault (outer)")}));
}

TEST_F(Exceptions, AnErrorMadeOfOneCarriesItsNameAndReason) {
    const Error error = errorFromException(inner);
    EXPECT_EQ(error.domain, QStringLiteral("com.quillmark.Quillmark.Quillmark-Client"));
    EXPECT_EQ(error.code, 0);
    EXPECT_EQ(error.description(), QStringLiteral("disk\r full"));
    EXPECT_EQ(error.failureReason(), QStringLiteral("Fault"));
    EXPECT_EQ(error.userInfo.size(), 2);
    EXPECT_EQ(nserrorToString(error), QStringLiteral("\"Fault\" because \"disk\r full\""));
}

TEST_F(Exceptions, AnErrorWithoutTextsRendersThemAsNull) {
    EXPECT_EQ(nserrorToString(Error{}), QStringLiteral("\"(null)\" because \"(null)\""));
}

TEST_F(Exceptions, PosixErrorsHaveTheSystemsText) {
    EXPECT_EQ(posixErrorToString(2), QStringLiteral("Posix error 2 (No such file or directory)"));
    EXPECT_EQ(posixErrorToString(99999), QStringLiteral("Unknown Posix error"));
    EXPECT_EQ(posixErrorToString(-1), QStringLiteral("Unknown Posix error"));
}

TEST_F(Exceptions, RaisingFormatsTheReasonFromOneArgument) {
    try {
        __raiseException1(QStringLiteral("N"), "bad \"%@\"", QStringLiteral("x"));
        FAIL() << "nothing was raised";
    } catch (const std::exception &exception) {
        EXPECT_STREQ(exception.what(), "N (bad \"x\")");
    }
}

TEST_F(Exceptions, ADebuggerIsPresentWhenTheProcessIsTraced) {
    EXPECT_FALSE(IsDebuggerPresent());
    platform.systemInfo.traced = true;
    EXPECT_TRUE(IsDebuggerPresent());
}

} // namespace
} // namespace quillmark

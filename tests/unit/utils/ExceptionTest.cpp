#include "support/LogFixture.h"
#include "utils/Error.h"
#include "utils/ErrorText.h"
#include "utils/Raise.h"
#include "utils/WrapException.h"

#include <gmock/gmock.h>

namespace quillmark {
namespace {

class Exceptions : public test::LogFixture {
protected:
    Exception inner{"Fault", "disk\r full"};
};

TEST_F(Exceptions, WithoutCausesOneIsRenderedOnOneLineWithoutCarriageReturns) {
    EXPECT_EQ(errorExceptionToString(Exception("A\r", "b\r\nc")), "A\r (b\nc)");
}

TEST_F(Exceptions, WrappingKeepsTheNameAndGivesANewReason) {
    const Exception outer = prepareException(inner, "writing \"%@\" (%d)", "x", 5);
    EXPECT_EQ(outer.name(), "Fault");
    EXPECT_EQ(outer.reason(), "writing \"x\" (5)");
    EXPECT_EQ(outer.userInfo(), (Exception::UserInfo{{"stack", outer.stack()}}));
    EXPECT_EQ(*outer.stack(), std::vector<std::string>{"Fault (disk\r full)"});
    EXPECT_EQ(inner.stack(), nullptr);
}

TEST_F(Exceptions, WrappingTwiceSharesTheStackWithTheInnerException) {
    Exception middle = prepareException(inner, "middle");
    const Exception outer = prepareException(middle, "outer");
    EXPECT_EQ(*outer.stack(), (std::vector<std::string>{"Fault (disk\r full)", "Fault (middle)"}));
    EXPECT_EQ(middle.stack(), outer.stack()); // deliberate: the inner one sees the addition too
}

TEST_F(Exceptions, TheNewestCauseComesFirstAndEachIsIndentedFurther) {
    Exception middle = prepareException(inner, "middle");
    const Exception outer = prepareException(middle, "outer");
    EXPECT_EQ(errorExceptionToString(outer), "Fault (outer)\n"
                                             "  Because:\n"
                                             "  Fault (middle)\n"
                                             "    Because:\n"
                                             "    Fault (disk\r full)");
}

TEST_F(Exceptions, WrappingIsLoggedInDetail) {
    const std::string file = logToFile(kLogLevelDetailed);
    prepareException(inner, "outer");
    EXPECT_EQ(messagesOf(file), std::vector<std::string>{"Preparing exception Fault (outer)"});
}

TEST_F(Exceptions, AnErrorMadeOfOneCarriesItsNameAndReason) {
    const Error error = errorFromException(inner);
    EXPECT_EQ(error.domain, "com.quillmark.Quillmark.Quillmark-Client");
    EXPECT_EQ(error.code, 0);
    EXPECT_EQ(error.description(), "disk\r full");
    EXPECT_EQ(error.failureReason(), "Fault");
    EXPECT_EQ(error.userInfo.size(), 2U);
    EXPECT_EQ(nserrorToString(error), "\"Fault\" because \"disk\r full\"");
}

TEST_F(Exceptions, AnErrorWithoutTextsRendersThemAsNull) {
    EXPECT_EQ(nserrorToString(Error{}), "\"(null)\" because \"(null)\"");
}

TEST_F(Exceptions, PosixErrorsHaveTheSystemsText) {
    EXPECT_EQ(posixErrorToString(2), "Posix error 2 (No such file or directory)");
    EXPECT_EQ(posixErrorToString(99999), "Unknown Posix error");
    EXPECT_EQ(posixErrorToString(-1), "Unknown Posix error");
}

TEST_F(Exceptions, RaisingFormatsTheReasonFromOneArgument) {
    EXPECT_THAT([] { __raiseException1("N", "bad \"%@\"", "x"); }, testing::ThrowsMessage<Exception>("N (bad \"x\")"));
}

TEST_F(Exceptions, ADebuggerIsPresentWhenTheProcessIsTraced) {
    EXPECT_FALSE(IsDebuggerPresent());
    platform.systemInfo.traced = true;
    EXPECT_TRUE(IsDebuggerPresent());
}

} // namespace
} // namespace quillmark

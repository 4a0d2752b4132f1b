#include "utils/BooleanValue.h"

#include "support/QtPrinters.h"

#include <QDateTime>
#include <gtest/gtest.h>

namespace quillmark {
namespace {

TEST(BooleanValue, ReadsBooleansAndNumbers) {
    EXPECT_TRUE(booleanValueOf(true));
    EXPECT_FALSE(booleanValueOf(false));
    EXPECT_TRUE(booleanValueOf(-1));
    EXPECT_FALSE(booleanValueOf(0));
    EXPECT_TRUE(booleanValueOf(0.5));
    EXPECT_FALSE(booleanValueOf(0.0));
}

TEST(BooleanValue, ReadsTheBeginningOfATextBehindBlanksAndZeros) {
    for (const char16_t *text : {u"YES", u"yes", u"True", u"t", u"1", u"9", u" 007", u"\ty"}) {
        EXPECT_TRUE(booleanValueOf(QString::fromUtf16(text))) << QString::fromUtf16(text).toStdString();
    }
    for (const char16_t *text : {u"", u"NO", u"false", u"0", u"000", u"-1", u"+1", u"on", u"0 1", u"é"}) {
        EXPECT_FALSE(booleanValueOf(QString::fromUtf16(text))) << QString::fromUtf16(text).toStdString();
    }
}

TEST(BooleanValue, TakesWhatIsNeitherForFalse) {
    for (const QVariant &value :
         {QVariant(), QVariant(QByteArray("YES")), QVariant(QVariantList{true}),
          QVariant(QVariantMap{{QStringLiteral("a"), true}}), QVariant(QDateTime::currentDateTime())}) {
        EXPECT_FALSE(booleanValueOf(value)) << value.typeName();
    }
}

} // namespace
} // namespace quillmark

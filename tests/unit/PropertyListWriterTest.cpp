#include "platform/linux/LinuxPropertyList.h"
#include "platform/linux/Utc.h"
#include "support/QtPrinters.h"
#include "support/TemporaryHome.h"

#include <QDateTime>
#include <cmath>
#include <limits>
#include <sys/stat.h>

namespace quillmark {
namespace {

const LinuxPropertyList list;

QVariant writtenAndRead(const QVariant &value) {
    const auto document = list.toXml(value);
    return document ? list.parse(*document) : QVariant();
}

TEST(PropertyListWriter, WhatIsWrittenReadsBackTheSame) {
    const QVariantMap map = {{QStringLiteral("text"), QStringLiteral("<a> & \"b\"\r\n\té📄 ")},
                             {QStringLiteral("<&>"), QStringLiteral("")},
                             {QStringLiteral("yes"), true},
                             {QStringLiteral("no"), false},
                             {QStringLiteral("low"), std::numeric_limits<qint64>::min()},
                             {QStringLiteral("high"), std::numeric_limits<quint64>::max()},
                             {QStringLiteral("real"), 0.1},
                             {QStringLiteral("endless"), -std::numeric_limits<double>::infinity()},
                             {QStringLiteral("date"), QDateTime({2024, 3, 5}, {14, 15, 2}, kUtc)},
                             {QStringLiteral("data"), QByteArray("\0\1\xFF", 3)},
                             {QStringLiteral("list"), QVariantList({1LL, QVariantMap(), QVariantList()})}};
    EXPECT_EQ(writtenAndRead(map), QVariant(map));
    EXPECT_TRUE(std::isnan(writtenAndRead(std::nan("")).toDouble()));
}

TEST(PropertyListWriter, ShorterIntegersAndTextListsAreWrittenToo) {
    EXPECT_EQ(writtenAndRead(QVariant(5)), QVariant(5LL));
    EXPECT_EQ(writtenAndRead(QVariant(5U)), QVariant(5LL));
    EXPECT_EQ(writtenAndRead(QStringList{QStringLiteral("a")}), QVariant(QVariantList{QStringLiteral("a")}));
}

TEST(PropertyListWriter, TheFormIsTheUsualOne) {
    const QByteArray expected = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                "<plist version=\"1.0\">\n<dict>\n\t<key>a</key>\n\t<array>\n\t\t<integer>1</integer>\n"
                                "\t</array>\n</dict>\n</plist>\n";
    EXPECT_EQ(*list.toXml(QVariantMap{{QStringLiteral("a"), QVariantList{1}}}), expected);
}

TEST(PropertyListWriter, WhatHasNoPlaceInAPropertyListIsRefused) {
    EXPECT_FALSE(list.toXml(QVariant()));
    EXPECT_FALSE(list.toXml(QVariantList{QVariant()}));
    EXPECT_FALSE(list.toXml(QVariantMap{{QStringLiteral("a"), QVariant::fromValue(QChar(u'x'))}}));
    EXPECT_FALSE(list.toXml(QDateTime()));
}

TEST(PropertyListWriter, TextsThatXmlCannotCarryAreRefused) {
    EXPECT_FALSE(list.toXml(QString(QChar(0))));
    EXPECT_FALSE(list.toXml(QString(QChar(0x1B))));
    EXPECT_FALSE(list.toXml(QString(QChar(0xD800))));
    EXPECT_FALSE(list.toXml(QString(QChar(0xFFFE))));
    EXPECT_FALSE(list.toXml(QVariantMap{{QString(QChar(1)), true}}));
}

TEST(PropertyListWriter, NestingIsBounded) {
    QVariant value = true;
    for (int depth = 0; depth < PropertyList::kMaximumDepth; ++depth) {
        value = QVariantList{value};
    }
    EXPECT_TRUE(list.toXml(value));
    EXPECT_FALSE(list.toXml(QVariantList{value}));
}

TEST(PropertyListFile, IsReadWhole) {
    const test::TemporaryHome home;
    const QString file = home.write(QStringLiteral("a.plist"), *list.toXml(QVariantMap{{QStringLiteral("a"), 1LL}}));
    EXPECT_EQ(list.readDictionary(file).value(QStringLiteral("a")), QVariant(1LL));
    EXPECT_EQ(list.read(file).typeId(), QMetaType::QVariantMap);
}

TEST(PropertyListFile, ThatCannotBeReadIsAnAbsentValue) {
    const test::TemporaryHome home;
    EXPECT_FALSE(list.read(home.path(QStringLiteral("missing"))).isValid());
    EXPECT_FALSE(list.read(home.path()).isValid());
    EXPECT_FALSE(list.read(QString()).isValid());
    EXPECT_FALSE(list.read(QString(QChar(0))).isValid());
    EXPECT_FALSE(list.read(home.write(QStringLiteral("empty"), "")).isValid());
    const QString pipe = home.path(QStringLiteral("pipe"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_FALSE(list.read(pipe).isValid());
}

TEST(PropertyListFile, OfTheWrongShapeIsAnEmptyDictionary) {
    const test::TemporaryHome home;
    EXPECT_TRUE(list.readDictionary(home.write(QStringLiteral("a"), *list.toXml(QVariantList{1}))).isEmpty());
}

TEST(PropertyListFile, ThatIsTooLargeIsNotRead) {
    const test::TemporaryHome home;
    const QString file = home.write(QStringLiteral("sparse"), "<plist><true/></plist>");
    ASSERT_TRUE(QFile::resize(file, PropertyList::kMaximumMemory + 1));
    EXPECT_FALSE(list.read(file).isValid());
}

} // namespace
} // namespace quillmark

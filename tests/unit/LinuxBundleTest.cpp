#include "platform/linux/LinuxBundle.h"
#include "platform/linux/LinuxPropertyList.h"
#include "support/QtPrinters.h"
#include "support/TemporaryHome.h"

namespace quillmark {
namespace {

class BundleTest : public testing::Test {
protected:
    BundleTest() {
        table(QStringLiteral("en"), QStringLiteral("Hello"));
        table(QStringLiteral("de"), QStringLiteral("Hallo"));
        table(QStringLiteral("pt_BR"), QStringLiteral("Oi"));
    }
    void table(const QString &language, const QString &greeting) {
        home.write(QStringLiteral("Q.app/Contents/Resources/%1.lproj/Localizable.strings").arg(language),
                   *list.toXml(QVariantMap{{QStringLiteral("greet"), greeting}}));
    }
    LinuxBundle bundle(const QStringList &languages = {}) const { return {path, languages, list}; }
    QString greeting(const QStringList &languages) const {
        return bundle(languages).localizedString(QStringLiteral("greet"));
    }

    test::TemporaryHome home;
    LinuxPropertyList list;
    const QString path = home.path(QStringLiteral("Q.app"));
};

TEST_F(BundleTest, ResourcesLieInItsResourcesFolder) {
    home.write(QStringLiteral("Q.app/Contents/Resources/Config.plist"), "x");
    home.write(QStringLiteral("Q.app/Contents/Resources/bare"), "x");
    EXPECT_EQ(bundle().resourcePath(), path + QStringLiteral("/Contents/Resources"));
    EXPECT_EQ(bundle().pathForResource(QStringLiteral("Config"), QStringLiteral("plist")),
              path + QStringLiteral("/Contents/Resources/Config.plist"));
    EXPECT_EQ(bundle().pathForResource(QStringLiteral("bare"), QString()),
              path + QStringLiteral("/Contents/Resources/bare"));
    EXPECT_TRUE(bundle().pathForResource(QStringLiteral("Config"), QStringLiteral("txt")).isNull());
    EXPECT_TRUE(bundle().pathForResource(QString(), QStringLiteral("plist")).isNull());
}

TEST_F(BundleTest, ATrailingSlashIsNoPartOfThePath) {
    EXPECT_EQ(LinuxBundle(path + QStringLiteral("//"), {}, list).path(), path);
}

TEST_F(BundleTest, AProgramOutsideABundleHasItsOwnFolderForResources) {
    EXPECT_EQ(LinuxBundle(home.path(), {}, list).resourcePath(), home.path());
}

TEST_F(BundleTest, TheInformationIsThatOfTheFirstLook) {
    const QString file = home.write(QStringLiteral("Q.app/Contents/Info.plist"),
                                    *list.toXml(QVariantMap{{QStringLiteral("CFBundleVersion"), QStringLiteral("1")}}));
    const LinuxBundle subject(path, {}, list);
    EXPECT_EQ(subject.infoDictionary().size(), 1);
    ASSERT_TRUE(QFile::remove(file));
    EXPECT_EQ(subject.infoDictionary().size(), 1);
    EXPECT_TRUE(bundle().infoDictionary().isEmpty());
}

TEST_F(BundleTest, TextsAreInTheFirstLanguageThatThereIs) {
    EXPECT_EQ(greeting({QStringLiteral("de"), QStringLiteral("en")}), QStringLiteral("Hallo"));
    EXPECT_EQ(greeting({QStringLiteral("it"), QStringLiteral("pt_BR")}), QStringLiteral("Oi"));
    EXPECT_EQ(greeting({QStringLiteral("en"), QStringLiteral("de")}), QStringLiteral("Hello"));
}

TEST_F(BundleTest, EnglishIsTheLastResort) {
    EXPECT_EQ(greeting({}), QStringLiteral("Hello"));
    EXPECT_EQ(greeting({QStringLiteral("it")}), QStringLiteral("Hello"));
}

TEST_F(BundleTest, ADamagedTableGivesWayToTheNextLanguage) {
    home.write(QStringLiteral("Q.app/Contents/Resources/de.lproj/Localizable.strings"), "<plist>");
    EXPECT_EQ(greeting({QStringLiteral("de")}), QStringLiteral("Hello"));
}

TEST_F(BundleTest, AMissingKeyIsItsOwnText) {
    EXPECT_EQ(bundle().localizedString(QStringLiteral("other")), QStringLiteral("other"));
    EXPECT_EQ(LinuxBundle(home.path(QStringLiteral("none.app")), {}, list).localizedString(QStringLiteral("greet")),
              QStringLiteral("greet"));
}

TEST_F(BundleTest, ATextThatIsNoTextIsItsKey) {
    home.write(QStringLiteral("Q.app/Contents/Resources/en.lproj/Localizable.strings"),
               *list.toXml(QVariantMap{{QStringLiteral("greet"), 5}}));
    EXPECT_EQ(greeting({}), QStringLiteral("greet"));
}

class PreferredLanguages : public testing::Test {
protected:
    static QStringList of(std::initializer_list<std::pair<const char *, const char *>> environment) {
        for (const char *name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
            qunsetenv(name);
        }
        for (const auto &[name, value] : environment) {
            qputenv(name, value);
        }
        return LinuxBundle::preferredLanguages();
    }
    ~PreferredLanguages() override { of({}); }
    static QStringList list(std::initializer_list<const char *> names) {
        QStringList result;
        for (const char *name : names) {
            result << QString::fromLatin1(name);
        }
        return result;
    }
};

TEST_F(PreferredLanguages, AreTheRegionsFirstThenTheLanguageItself) {
    EXPECT_EQ(of({{"LANG", "de_AT.UTF-8@euro"}}), list({"de_AT", "de"}));
    EXPECT_EQ(of({{"LANG", "ja"}}), list({"ja"}));
}

TEST_F(PreferredLanguages, AreThoseOfTheStrongestVariable) {
    EXPECT_EQ(of({{"LANG", "de"}, {"LC_MESSAGES", "fr"}}), list({"fr"}));
    EXPECT_EQ(of({{"LANG", "de"}, {"LC_MESSAGES", "fr"}, {"LC_ALL", "es"}}), list({"es"}));
    EXPECT_EQ(of({{"LANG", "de"}, {"LC_ALL", ""}}), list({"de"}));
    EXPECT_EQ(of({{"LANGUAGE", "fr_CH:es"}, {"LANG", "de_DE"}}), list({"fr_CH", "fr", "es", "de_DE", "de"}));
}

TEST_F(PreferredLanguages, AreNoneInThePlainLocale) {
    EXPECT_EQ(of({}), QStringList());
    EXPECT_EQ(of({{"LANG", "C.UTF-8"}, {"LANGUAGE", "de"}}), QStringList());
    EXPECT_EQ(of({{"LC_ALL", "POSIX"}, {"LANG", "de"}}), QStringList());
}

TEST_F(PreferredLanguages, NeverLeadOutOfTheResourcesFolder) {
    EXPECT_EQ(of({{"LANGUAGE", "../../evil:es"}, {"LANG", "de"}}), list({"es", "de"}));
}

TEST(RunningBundle, OfAProgramOutsideABundleIsItsFolder) {
    EXPECT_TRUE(LinuxBundle::pathOfRunningBundle().endsWith(QStringLiteral("/tests/unit")));
}

} // namespace
} // namespace quillmark

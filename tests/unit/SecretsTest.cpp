#include "accounts/KeyList.h"
#include "accounts/KeychainManager.h"
#include "accounts/UserManager.h"
#include "branding/LocalizedStrings.h"
#include "support/LogFixture.h"

#include <QDebug>

namespace quillmark {
namespace {

/// Secrets with a mark that nothing else has.
class Secrets : public test::LogFixture {
protected:
    using Operation = std::function<void(KeychainManager &keychain, UserManager &users)>;

    Secrets() {
        platform.bundle.strings.insert(QStringLiteral("ProductName"), QStringLiteral("Feder")); // so that items move
        logToFile(kLogLevelDetailed, kLogLevelDetailed);
    }

    /// All that may come near a secret.
    static std::vector<Operation> operations() {
        return {
            [](KeychainManager &keychain, UserManager &) { keychain.getPasswordForUser(kAnna); },
            [](KeychainManager &keychain, UserManager &) { keychain.savePassword(kPassword, kAnna, true); },
            [](KeychainManager &keychain, UserManager &) { keychain.savePassword(kPassword, kPassword); },
            [](KeychainManager &keychain, UserManager &) { keychain.removePassword(kAnna); },
            [](KeychainManager &keychain, UserManager &) { keychain.skipAuthForUser(kAnna); },
            [](KeychainManager &keychain, UserManager &) { keychain.setSkipAuth(true, kAnna); },
            [](KeychainManager &keychain, UserManager &) { keychain.setFlag(true, QStringLiteral("flag"), kAnna); },
            [](KeychainManager &keychain, UserManager &) { keychain.removeFlagForKey(kPasswordMember, kAnna); },
            [](KeychainManager &keychain, UserManager &) { keychain.saveEncryptionKey(kKey, kAnna); },
            [](KeychainManager &keychain, UserManager &) { keychain.getEncryptionKeyForUser(kAnna); },
            [](KeychainManager &, UserManager &) {
                KeychainManager::decryptString(KeychainManager::encryptString(kPassword) + u'!');
            },
            [](KeychainManager &, UserManager &users) { users.objectForKey(kUserPassword, kAnna); },
            [](KeychainManager &, UserManager &users) { users.setObject(kPassword, kUserPassword, kAnna); },
            [](KeychainManager &, UserManager &users) { users.setObject(kKey, kUserEncryptionKey, kAnna); },
            [](KeychainManager &, UserManager &users) { users.objectForKey(kUserEncryptionKey, kAnna); },
            [](KeychainManager &, UserManager &users) { users.removeObjectForKey(kUserPassword, kAnna); },
            [](KeychainManager &, UserManager &users) { users.removeIncompleteUser(kAnna); },
        };
    }
    /// What an item may hold: nothing, a document, a bare password, a damaged document.
    static QList<QByteArray> contents() {
        const QByteArray password = kPassword.toUtf8();
        return {QByteArray(), R"({"password":")" + password + R"(","encryptionKey":"MARKED-KEY"})", password,
                R"({"password":")" + password, "\xff" + password};
    }
    /// Does it over an item of that content, under the product's name and under the old one.
    void perform(const Operation &operation, const QByteArray &content) {
        for (const char *service : {"Feder", "Quillmark"}) {
            platform.keychain.items.clear();
            if (!content.isNull()) {
                const std::string account = kAnna.toStdString();
                platform.keychain.items[{service, account}] = content.toStdString();
            }
            LocalizedStrings strings(platform.bundle);
            KeychainManager keychain(platform.keychain, strings);
            UserManager users(platform.platform, keychain);
            operation(keychain, users);
        }
    }
    /// All that was written: the log, the preferences, what else lies in the home folder.
    QByteArray written() const {
        QString preferences;
        QDebug(&preferences) << platform.userDefaults.stored;
        return contentsOf(home.path(QStringLiteral("test.log"))) + preferences.toUtf8();
    }

    static inline const QString kAnna = QStringLiteral("anna");
    static inline const QString kPassword = QStringLiteral("MARKED-PASSWORD");
    static inline const QString kPasswordMember = QStringLiteral("password");
    static inline const QString kKey = QStringLiteral("MARKED-KEY");
};

TEST_F(Secrets, ReachNeitherLogNorPreferencesWhateverFails) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    for (const Operation &operation : operations()) {
        for (const QByteArray &content : contents()) {
            perform(operation, content);
            for (const char *call :
                 {"SecKeychainFindGenericPassword", "SecKeychainItemCopyContent", "SecKeychainItemModifyContent",
                  "SecKeychainAddGenericPassword", "SecKeychainItemDelete", "synchronize"}) {
                for (const int nth : {1, 2, 3}) {
                    for (const qint32 status : {kKeychainDecode, kKeychainInteractionNotAllowed}) {
                        platform.keychain.failure = status;
                        platform.transcript.failAt(QString::fromLatin1(call), nth);
                        perform(operation, content);
                        platform.transcript.failAt(QString(), 0);
                    }
                }
            }
        }
    }
    const std::string shown = testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();
    EXPECT_NE(shown.find("Failed to"), std::string::npos); // the failures were told of
    EXPECT_EQ(shown.find("MARKED"), std::string::npos);
    EXPECT_TRUE(written().contains("Failed to"));
    EXPECT_FALSE(written().contains("MARKED"));
}

} // namespace
} // namespace quillmark

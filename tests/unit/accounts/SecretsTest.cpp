#include "accounts/KeyList.h"
#include "accounts/KeychainManager.h"
#include "accounts/UserManager.h"
#include "support/LogFixture.h"
#include "support/ValuePrinter.h"
#include "texts/LocalizedStrings.h"

#include <filesystem>
#include <gmock/gmock.h>

namespace quillmark {
namespace {

using testing::HasSubstr;
using testing::Not;

/// Secrets with a mark that nothing else has.
class Secrets : public test::LogFixture {
protected:
    using Operation = std::function<void(KeychainManager &keychain, UserManager &users)>;

    Secrets() {
        platform.bundle.strings["ProductName"] = "Feder"; // so that items move
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
            [](KeychainManager &keychain, UserManager &) { keychain.setFlag(true, "flag", kAnna); },
            [](KeychainManager &keychain, UserManager &) { keychain.removeFlagForKey(kPasswordMember, kAnna); },
            [](KeychainManager &keychain, UserManager &) { keychain.saveEncryptionKey(kKey, kAnna); },
            [](KeychainManager &keychain, UserManager &) { keychain.getEncryptionKeyForUser(kAnna); },
            [](KeychainManager &, UserManager &) {
                KeychainManager::decryptString(*KeychainManager::encryptString(kPassword) + '!');
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
    static std::vector<std::optional<std::string>> contents() {
        return {std::nullopt, R"({"password":")" + kPassword + R"(","encryptionKey":"MARKED-KEY"})", kPassword,
                R"({"password":")" + kPassword, "\xff" + kPassword};
    }
    /// Does it over an item of that content, under the product's name and under the old one.
    void perform(const Operation &operation, const std::optional<std::string> &content) {
        for (const char *service : {"Feder", "Quillmark"}) {
            platform.keychain.items.clear();
            if (content) {
                platform.keychain.items[{service, kAnna}] = *content;
            }
            LocalizedStrings strings(platform.bundle);
            KeychainManager keychain(platform.keychain, strings);
            UserManager users(keychain);
            operation(keychain, users);
        }
    }
    /// All that was written: the preferences, the log, and what else lies in the home folder.
    std::string written() const {
        std::string all = testing::PrintToString(Value(platform.userDefaults.stored));
        for (const auto &entry : std::filesystem::recursive_directory_iterator(home.path())) {
            all += entry.is_regular_file() ? contentsOf(entry.path()) : "";
        }
        return all;
    }

    static inline const std::string kAnna = "anna";
    static inline const std::string kPassword = "MARKED-PASSWORD";
    static inline const std::string kPasswordMember = "password";
    static inline const std::string kKey = "MARKED-KEY";
};

TEST_F(Secrets, ReachNeitherLogNorPreferencesWhateverFails) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    for (const Operation &operation : operations()) {
        for (const std::optional<std::string> &content : contents()) {
            perform(operation, content);
            for (const char *call :
                 {"SecKeychainFindGenericPassword", "SecKeychainItemCopyContent", "SecKeychainItemModifyContent",
                  "SecKeychainAddGenericPassword", "SecKeychainItemDelete", "synchronize"}) {
                for (const int nth : {1, 2, 3}) {
                    for (const std::int32_t status : {kKeychainDecode, kKeychainInteractionNotAllowed}) {
                        platform.keychain.failure = status;
                        platform.transcript.failAt(call, nth);
                        perform(operation, content);
                        platform.transcript.failAt("", 0);
                    }
                }
            }
        }
    }
    const std::string shown = testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();
    EXPECT_NE(shown.find("Failed to"), std::string::npos); // the failures were told of
    EXPECT_EQ(shown.find("MARKED"), std::string::npos);
    EXPECT_THAT(written(), HasSubstr("Failed to"));
    EXPECT_THAT(written(), Not(HasSubstr("MARKED")));
}

} // namespace
} // namespace quillmark

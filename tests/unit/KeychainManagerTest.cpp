#include "accounts/KeychainManager.h"
#include "accounts/JSONEncoder.h"
#include "branding/LocalizedStrings.h"
#include "support/LogFixture.h"

#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace quillmark {
namespace {

using Calls = QStringList;

constexpr qint32 kSomeFault = -2070;
/// What the manager must take for "it is there, only not now".
constexpr qint32 kOutOfReach[] = {kKeychainInteractionNotAllowed, kKeychainNotAvailable, kKeychainNoDefaultKeychain,
                                  kKeychainUserCanceled, kKeychainAuthFailed};

class Keychains : public test::LogFixture {
protected:
    Keychains() : log(logToFile(kLogLevelDetailed)) {}
    ~Keychains() override { EXPECT_EQ(keychain.references, 0) << "an item was not released"; }

    void store(const QByteArray &data, const QString &user = QStringLiteral("ada")) {
        keychain.items[{service.toStdString(), user.toStdString()}] = data.toStdString();
    }
    QByteArray stored(const QString &user = QStringLiteral("ada")) const {
        const auto item = keychain.items.find({service.toStdString(), user.toStdString()});
        return item != keychain.items.end() ? QByteArray::fromStdString(item->second) : "(none)";
    }
    /// The names of the calls, without what they were about.
    QStringList calls() const {
        QStringList names;
        for (const QString &call : platform.transcript.calls()) {
            if (call.startsWith(QStringLiteral("SecKeychain"))) {
                names << call.section(u' ', 0, 0).remove(QStringLiteral("SecKeychain"));
            }
        }
        return names;
    }
    QStringList messages() const { return linesOf(log); }
    /// The product has another name from now on.
    void rename(const QString &name) {
        bundle.strings.insert(QStringLiteral("ProductName"), name);
        strings = std::make_unique<LocalizedStrings>(bundle);
        renamed = std::make_unique<KeychainManager>(keychain, *strings);
        service = name;
    }

    const QString log;
    test::FakeKeychain &keychain = platform.keychain;
    test::FakeBundle bundle;
    std::unique_ptr<LocalizedStrings> strings = std::make_unique<LocalizedStrings>(bundle);
    KeychainManager manager{keychain, *strings};
    std::unique_ptr<KeychainManager> renamed;
    QString service = QStringLiteral("Quillmark");
    const QString ada = QStringLiteral("ada");
    const QString empty = QStringLiteral("");
};

// Items

TEST_F(Keychains, ServiceIsTheProductsNameInTheUsersLanguage) {
    EXPECT_EQ(manager.serviceName(), QStringLiteral("Quillmark"));
    rename(QStringLiteral("Plume"));
    EXPECT_EQ(renamed->serviceName(), QStringLiteral("Plume"));
}

TEST_F(Keychains, FindGivesTheItemsText) {
    store("gr\xc3\xbc\xc3\x9f \xe2\x82\xac");
    QString text;
    EXPECT_EQ(manager.secKeychainFindGenericPassword(&text, ada), 0);
    EXPECT_EQ(text, QStringLiteral("grüß €"));
    EXPECT_EQ(platform.transcript.calls(), Calls({QStringLiteral("SecKeychainFindGenericPassword Quillmark ada"),
                                                  QStringLiteral("SecKeychainItemCopyContent Quillmark ada")}));
}

TEST_F(Keychains, FindLeavesATextThatIsSetAsItIs) {
    store("new");
    for (const QString &before : {QStringLiteral("old"), empty}) {
        QString text = before;
        EXPECT_EQ(manager.secKeychainFindGenericPassword(&text, ada), 0);
        EXPECT_EQ(text, before);
    }
}

TEST_F(Keychains, FindNeedsNoPlaceForTheText) {
    store("new");
    EXPECT_EQ(manager.secKeychainFindGenericPassword(nullptr, ada), 0);
    EXPECT_EQ(manager.secKeychainFindGenericPassword(nullptr, QStringLiteral("bob")), kKeychainItemNotFound);
}

TEST_F(Keychains, FindOfAnEmptyItemGivesAnEmptyTextAndNoAbsentOne) {
    store("");
    QString text;
    EXPECT_EQ(manager.secKeychainFindGenericPassword(&text, ada), 0);
    EXPECT_TRUE(text.isEmpty());
    EXPECT_FALSE(text.isNull());
}

TEST_F(Keychains, FindOfWhatIsNoTextSucceedsAndGivesNone) {
    for (const QByteArray &data : {QByteArray("\xff\xfe"), QByteArray("a\xc3"), QByteArray("\xed\xa0\x80")}) {
        store(data);
        QString text;
        EXPECT_EQ(manager.secKeychainFindGenericPassword(&text, ada), 0);
        EXPECT_TRUE(text.isNull());
        EXPECT_EQ(stored(), data);
    }
}

TEST_F(Keychains, NullNamesAreASuccessThatDoesNothing) {
    QString text;
    EXPECT_EQ(manager.secKeychainFindGenericPassword(&text, QString()), 0);
    EXPECT_TRUE(text.isNull());
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword(QStringLiteral("x"), QString()), 0);
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword(QString(), ada), 0);
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword(QByteArray(), ada), 0);
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword(QVariant(), ada), 0);
    EXPECT_FALSE(manager.secKeychainRemoveAllItemsWithUserName(QString()));
    EXPECT_EQ(calls(), Calls());
}

TEST_F(Keychains, AnEmptyUserNameIsANameLikeOthers) {
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword(QStringLiteral("x"), empty), 0);
    EXPECT_EQ(stored(empty), "x");
}

TEST_F(Keychains, AnItemIsAddedOrItsDataReplaced) {
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword(QStringLiteral("grün"), ada), 0);
    EXPECT_EQ(stored(), "gr\xc3\xbcn");
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword(QByteArray("\0\xff", 2), ada), 0);
    EXPECT_EQ(stored(), QByteArray("\0\xff", 2));
    EXPECT_EQ(calls(), Calls({QStringLiteral("FindGenericPassword"), QStringLiteral("AddGenericPassword"),
                              QStringLiteral("FindGenericPassword"), QStringLiteral("ItemModifyContent")}));
}

TEST_F(Keychains, AnItemMayBeEmpty) {
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword(empty, ada), 0);
    EXPECT_EQ(stored(), "");
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword(QByteArray(""), QStringLiteral("bob")), 0);
    EXPECT_EQ(stored(QStringLiteral("bob")), "");
}

TEST_F(Keychains, AnItemThatVanishesBeforeItIsReplacedIsAdded) {
    store("old");
    keychain.failure = kKeychainItemNotFound;
    platform.transcript.failAt(QStringLiteral("SecKeychainItemModifyContent"), 1);
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword(QStringLiteral("new"), ada), 0);
    EXPECT_EQ(stored(), "new");
}

TEST_F(Keychains, NothingIsAddedWhenTheItemCannotBeLookedFor) {
    for (const qint32 status : {kKeychainInteractionNotAllowed, kKeychainNotAvailable, kSomeFault}) {
        keychain.failure = status;
        platform.transcript.failAt(QStringLiteral("SecKeychainFindGenericPassword"), 1);
        EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword(QStringLiteral("x"), ada), status);
        EXPECT_EQ(stored(), "(none)");
    }
}

TEST_F(Keychains, AValueThatIsNeitherBytesNorTextEndsTheProgram) {
    EXPECT_DEATH(manager.secKeychainModifyOrAddGenericPassword(5, ada), "ASSERTION ERROR");
}

TEST_F(Keychains, RemovingDeletesTheFirstItemAndSaysWhetherThereWasOne) {
    store("x");
    EXPECT_TRUE(manager.secKeychainRemoveAllItemsWithUserName(ada));
    EXPECT_EQ(stored(), "(none)");
    EXPECT_FALSE(manager.secKeychainRemoveAllItemsWithUserName(ada));
    store("x");
    platform.transcript.failAt(QStringLiteral("SecKeychainItemDelete"), 1);
    EXPECT_FALSE(manager.secKeychainRemoveAllItemsWithUserName(ada));
    EXPECT_EQ(stored(), "x");
}

TEST_F(Keychains, AnotherServicesItemsAreReachedByItsName) {
    const QString other = QStringLiteral("Other");
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword(QStringLiteral("x"), ada, other), 0);
    EXPECT_EQ(stored(), "(none)");
    QString text;
    EXPECT_EQ(manager.secKeychainFindGenericPassword(&text, ada, other), 0);
    EXPECT_EQ(text, QStringLiteral("x"));
    EXPECT_FALSE(manager.secKeychainRemoveAllItemsWithUserName(ada));
    EXPECT_TRUE(manager.secKeychainRemoveAllItemsWithUserName(ada, other));
}

TEST_F(Keychains, AFindThatFailsIsNotLogged) {
    for (const qint32 status : {kKeychainItemNotFound, kSomeFault, kKeychainNotAvailable}) {
        keychain.failure = status;
        platform.transcript.failAt(QStringLiteral("SecKeychainFindGenericPassword"), 1);
        EXPECT_EQ(manager.secKeychainFindGenericPassword(nullptr, ada), status);
    }
    EXPECT_EQ(messages(), QStringList());
}

// Items that are there and can't be read

TEST_F(Keychains, ADamagedItemIsLoggedAndDeleted) {
    store("x");
    keychain.failure = kKeychainDecode;
    platform.transcript.failAt(QStringLiteral("SecKeychainItemCopyContent"), 1);
    QString text;
    EXPECT_EQ(manager.secKeychainFindGenericPassword(&text, ada), kKeychainDecode);
    EXPECT_TRUE(text.isNull());
    EXPECT_EQ(stored(), "(none)");
    EXPECT_EQ(messages(), QStringList(QStringLiteral("nrm Failed to read keychain item ( error = -26275 )")));
}

TEST_F(Keychains, ADamagedItemIsMadeAnewByTheNextSave) {
    store("damaged");
    keychain.failure = kKeychainDecode;
    platform.transcript.failAt(QStringLiteral("SecKeychainItemCopyContent"), 1);
    EXPECT_TRUE(manager.savePassword(QStringLiteral("new"), ada));
    EXPECT_EQ(stored(), R"({"password":"new"})");
}

TEST_F(Keychains, AnItemBehindALockIsLoggedAndKept) {
    for (const qint32 status : kOutOfReach) {
        store("x");
        keychain.failure = status;
        platform.transcript.failAt(QStringLiteral("SecKeychainItemCopyContent"), 1);
        EXPECT_EQ(manager.secKeychainFindGenericPassword(nullptr, ada), status);
        EXPECT_EQ(stored(), "x") << status;
        EXPECT_EQ(messages().last(), QStringLiteral("nrm Failed to read keychain item ( error = %1 )").arg(status));
    }
}

TEST_F(Keychains, ADamagedItemThatCannotBeDeletedIsOverwrittenByTheNextSave) {
    store("damaged");
    keychain.failure = kKeychainDecode;
    platform.transcript.failAt(QStringLiteral("SecKeychainItemCopyContent"), 1);
    platform.transcript.failAt(QStringLiteral("SecKeychainItemDelete"), 1);
    EXPECT_TRUE(manager.savePassword(QStringLiteral("new"), ada));
    EXPECT_EQ(stored(), R"({"password":"new"})");
    EXPECT_TRUE(calls().contains(QStringLiteral("ItemModifyContent")));
}

TEST_F(Keychains, AnItemThatVanishesBeforeItIsReadIsLoggedAndMadeAnewByTheNextSave) {
    store("x");
    keychain.failure = kKeychainItemNotFound;
    platform.transcript.failAt(QStringLiteral("SecKeychainItemCopyContent"), 1);
    EXPECT_TRUE(manager.savePassword(QStringLiteral("new"), ada));
    EXPECT_EQ(messages(), QStringList(QStringLiteral("nrm Failed to read keychain item ( error = -25300 )")));
    EXPECT_EQ(stored(), R"({"password":"new"})");
}

TEST_F(Keychains, NothingIsWrittenOverAnItemThatCannotBeReached) {
    const QByteArray document = R"({"encryptionKey":"k","password":"p"})";
    for (const char *const call : {"SecKeychainFindGenericPassword", "SecKeychainItemCopyContent"}) {
        for (const qint32 status : kOutOfReach) {
            // Out of reach at the first call and back at the next: the whole document must survive.
            const auto change = [&](const std::function<void()> &operation) {
                store(document);
                keychain.failure = status;
                platform.transcript.failAt(QString::fromLatin1(call), 1);
                operation();
                EXPECT_EQ(stored(), document) << call << status;
            };
            change([&] { EXPECT_FALSE(manager.savePassword(QStringLiteral("new"), ada, true)); });
            change([&] { EXPECT_FALSE(manager.saveEncryptionKey(QStringLiteral("new"), ada)); });
            change([&] { manager.setFlag(true, QStringLiteral("beta"), ada); });
            change([&] { manager.setSkipAuth(true, ada); });
            change([&] { manager.removeFlagForKey(QStringLiteral("password"), ada); });
            change([&] { EXPECT_TRUE(manager.getPasswordForUser(ada).isNull()); });
            change([&] { EXPECT_TRUE(manager.getEncryptionKeyForUser(ada).isNull()); });
        }
    }
}

TEST_F(Keychains, NothingIsWrittenWhenTheItemCannotBeLookedForForAnyOtherReason) {
    store(R"({"encryptionKey":"k"})");
    keychain.failure = kSomeFault;
    platform.transcript.failAt(QStringLiteral("SecKeychainFindGenericPassword"), 1);
    EXPECT_FALSE(manager.savePassword(QStringLiteral("new"), ada));
    EXPECT_EQ(stored(), R"({"encryptionKey":"k"})");
    EXPECT_EQ(messages(), QStringList(QStringLiteral("nrm Failed to write keychain item ( error = -2070 )")));
}

// Reading the password

TEST_F(Keychains, APasswordComesWithTheStoredChoice) {
    for (const bool choice : {true, false}) {
        store(choice ? R"({"password":"p","keepSignedIn":true})" : R"({"password":"p","keepSignedIn":false})");
        bool keep = !choice;
        EXPECT_EQ(manager.getPasswordForUser(ada, &keep), QStringLiteral("p"));
        EXPECT_EQ(keep, choice);
        EXPECT_EQ(manager.getPasswordForUser(ada), QStringLiteral("p"));
    }
}

TEST_F(Keychains, AChoiceThatIsNotStoredStaysAsTheCallerSetIt) {
    store(R"({"password":"p"})");
    for (bool keep : {true, false}) {
        const bool before = keep;
        manager.getPasswordForUser(ada, &keep);
        EXPECT_EQ(keep, before);
    }
}

TEST_F(Keychains, AnAbsentItemHasNoPassword) {
    bool keep = true;
    EXPECT_TRUE(manager.getPasswordForUser(ada, &keep).isNull());
    EXPECT_TRUE(manager.getPasswordForUser(QString(), &keep).isNull());
    EXPECT_TRUE(keep);
    EXPECT_EQ(stored(), "(none)");
    EXPECT_EQ(messages(), QStringList());
}

TEST_F(Keychains, AnEmptyItemHasAnEmptyPasswordAndStaysAsItIs) {
    store("");
    EXPECT_TRUE(manager.getPasswordForUser(ada).isEmpty());
    EXPECT_EQ(stored(), "");
}

TEST_F(Keychains, AnItemThatIsNoTextHasNoPasswordAndStaysAsItIs) {
    store("p\xff");
    EXPECT_TRUE(manager.getPasswordForUser(ada).isNull());
    EXPECT_EQ(stored(), "p\xff");
}

TEST_F(Keychains, ABarePasswordOfAnEarlierVersionBecomesADocument) {
    store("s3cret/pass\\word\"");
    bool keep = false;
    EXPECT_EQ(manager.getPasswordForUser(ada, &keep), QStringLiteral("s3cret/pass\\word\""));
    EXPECT_TRUE(keep);
    const auto document = JSONEncoder::createObjFromJSONStr(QString::fromUtf8(stored()));
    ASSERT_TRUE(document);
    EXPECT_EQ(*document, (QVariantMap{{QStringLiteral("password"), QStringLiteral("s3cret/pass\\word\"")},
                                      {QStringLiteral("keepSignedIn"), true}}));
    EXPECT_EQ(manager.getPasswordForUser(ada), QStringLiteral("s3cret/pass\\word\""));
}

TEST_F(Keychains, ABarePasswordIsGivenAlsoWhenItCannotBeMadeADocument) {
    store("bare");
    for (const qint32 status : {kKeychainInteractionNotAllowed, kSomeFault}) {
        keychain.failure = status;
        platform.transcript.failAt(QStringLiteral("SecKeychainItemModifyContent"), 1);
        EXPECT_EQ(manager.getPasswordForUser(ada), QStringLiteral("bare"));
        EXPECT_EQ(stored(), "bare");
    }
    EXPECT_EQ(messages(), QStringList());
}

TEST_F(Keychains, ABarePasswordBeyondLatin1IsGivenOnceAndThenWithTheLowerBytesOfItsCharacters) { // deliberate
    store("\xe2\x82\xac");
    EXPECT_EQ(manager.getPasswordForUser(ada), QStringLiteral("€"));
    EXPECT_EQ(stored(), "{\"keepSignedIn\":true,\"password\":\"\xe2\x82\xac\"}");
    EXPECT_EQ(manager.getPasswordForUser(ada), QString(QChar(0xac)));
}

TEST_F(Keychains, ADocumentWithoutAPasswordGivesItsOwnText) { // deliberate
    for (const char *const text : {R"({"beta":true})", R"({"password":""})", "{}", R"([{"a":1}])"}) {
        store(text);
        bool keep = false;
        EXPECT_EQ(manager.getPasswordForUser(ada, &keep), QString::fromLatin1(text));
        EXPECT_EQ(stored(), text) << "it is a document already";
        EXPECT_FALSE(keep);
    }
}

TEST_F(Keychains, ADocumentWithoutAPasswordDoesNotTellItsChoice) { // deliberate
    store(R"({"keepSignedIn":true})");
    bool keep = false;
    EXPECT_EQ(manager.getPasswordForUser(ada, &keep), QStringLiteral(R"({"keepSignedIn":true})"));
    EXPECT_FALSE(keep);
}

// What earlier versions called themselves

TEST_F(Keychains, AnItemUnderTheLegacyNameMovesAtTheFirstRead) {
    store(R"({"password":"p","keepSignedIn":true,"beta":true})");
    rename(QStringLiteral("Plume"));
    bool keep = false;
    EXPECT_EQ(renamed->getPasswordForUser(ada, &keep), QStringLiteral("p"));
    EXPECT_TRUE(keep);
    EXPECT_EQ(keychain.items.size(), 1);
    EXPECT_TRUE(keychain.items.contains({"Plume", "ada"}));
    EXPECT_EQ(stored(), R"({"password":"p","keepSignedIn":true,"beta":true})") << "as it was";
}

TEST_F(Keychains, ABarePasswordUnderTheLegacyNameMovesAndBecomesADocument) {
    store("bare");
    rename(QStringLiteral("Plume"));
    EXPECT_EQ(renamed->getPasswordForUser(ada), QStringLiteral("bare"));
    EXPECT_EQ(keychain.items.size(), 1);
    EXPECT_EQ(stored(), R"({"keepSignedIn":true,"password":"bare"})");
}

TEST_F(Keychains, AnItemUnderTheCurrentNameLeavesTheLegacyOneAlone) {
    store("old");
    rename(QStringLiteral("Plume"));
    store(R"({"password":"new"})");
    EXPECT_EQ(renamed->getPasswordForUser(ada), QStringLiteral("new"));
    EXPECT_EQ(keychain.items.at({"Quillmark", "ada"}), "old");
}

TEST_F(Keychains, NothingMovesWhileTheProductHasItsLegacyName) {
    EXPECT_TRUE(manager.getPasswordForUser(ada).isNull());
    EXPECT_EQ(calls(), Calls{QStringLiteral("FindGenericPassword")});
}

TEST_F(Keychains, NothingMovesUnlessTheCurrentItemIsKnownToBeAbsent) {
    store("old");
    rename(QStringLiteral("Plume"));
    for (const qint32 status : {kKeychainInteractionNotAllowed, kKeychainNotAvailable, kSomeFault}) {
        keychain.failure = status;
        platform.transcript.failAt(QStringLiteral("SecKeychainFindGenericPassword"), 1);
        EXPECT_TRUE(renamed->getPasswordForUser(ada).isNull());
        EXPECT_EQ(keychain.items.at({"Quillmark", "ada"}), "old");
        EXPECT_EQ(stored(), "(none)");
    }
}

TEST_F(Keychains, TheLegacyItemIsDeletedBeforeItsTextIsWritten) {
    store(R"({"password":"p"})");
    rename(QStringLiteral("Plume"));
    renamed->getPasswordForUser(ada);
    EXPECT_EQ(platform.transcript.calls(), Calls({QStringLiteral("SecKeychainFindGenericPassword Plume ada"),
                                                  QStringLiteral("SecKeychainFindGenericPassword Quillmark ada"),
                                                  QStringLiteral("SecKeychainItemCopyContent Quillmark ada"),
                                                  QStringLiteral("SecKeychainFindGenericPassword Quillmark ada"),
                                                  QStringLiteral("SecKeychainItemDelete Quillmark ada"),
                                                  QStringLiteral("SecKeychainFindGenericPassword Plume ada"),
                                                  QStringLiteral("SecKeychainAddGenericPassword Plume ada")}));
}

TEST_F(Keychains, AMovingItemThatCannotBeWrittenIsGivenOnceAndThenGoneWithoutAWord) { // deliberate
    store(R"({"password":"p"})");
    rename(QStringLiteral("Plume"));
    keychain.failure = kSomeFault;
    platform.transcript.failAt(QStringLiteral("SecKeychainAddGenericPassword"), 1);
    EXPECT_EQ(renamed->getPasswordForUser(ada), QStringLiteral("p"));
    EXPECT_TRUE(keychain.items.empty());
    EXPECT_TRUE(renamed->getPasswordForUser(ada).isNull());
    EXPECT_EQ(messages(), QStringList());
}

TEST_F(Keychains, AMovingItemThatCannotBeDeletedIsCopied) { // deliberate
    store("old");
    rename(QStringLiteral("Plume"));
    keychain.failure = kSomeFault;
    platform.transcript.failAt(QStringLiteral("SecKeychainItemDelete"), 1);
    EXPECT_EQ(renamed->getPasswordForUser(ada), QStringLiteral("old"));
    EXPECT_EQ(keychain.items.at({"Quillmark", "ada"}), "old");
    EXPECT_EQ(stored(), R"({"keepSignedIn":true,"password":"old"})");
}

TEST_F(Keychains, ALegacyItemThatIsNoTextStaysWhereItIs) {
    store("\xff");
    rename(QStringLiteral("Plume"));
    EXPECT_TRUE(renamed->getPasswordForUser(ada).isNull());
    EXPECT_EQ(keychain.items.at({"Quillmark", "ada"}), "\xff");
}

TEST_F(Keychains, OnlyReadingThePasswordMovesAnItem) { // deliberate
    store(R"({"password":"p","skipAuth":true})");
    rename(QStringLiteral("Plume"));
    EXPECT_FALSE(renamed->skipAuthForUser(ada));
    EXPECT_TRUE(renamed->getEncryptionKeyForUser(ada).isNull());
    EXPECT_EQ(stored(), "(none)");
}

// Saving the password

TEST_F(Keychains, SavingMakesAnItem) {
    EXPECT_TRUE(manager.savePassword(QStringLiteral("p"), ada, true));
    EXPECT_EQ(stored(), R"({"keepSignedIn":true,"password":"p"})");
    EXPECT_TRUE(manager.savePassword(QStringLiteral("p"), QStringLiteral("bob")));
    EXPECT_EQ(stored(QStringLiteral("bob")), R"({"password":"p"})");
}

TEST_F(Keychains, SavingKeepsAllOtherMembers) {
    store(R"({"beta":true,"encryptionKey":"k","keepSignedIn":true,"password":"old","skipAuth":false})");
    EXPECT_TRUE(manager.savePassword(QStringLiteral("new"), ada));
    EXPECT_EQ(stored(), R"({"beta":true,"encryptionKey":"k","keepSignedIn":true,"password":"new","skipAuth":false})");
}

TEST_F(Keychains, SavingTheChoiceAloneKeepsThePassword) {
    store(R"({"keepSignedIn":true,"password":"p"})");
    EXPECT_TRUE(manager.savePassword(QString(), ada, false));
    EXPECT_EQ(stored(), R"({"keepSignedIn":false,"password":"p"})");
}

TEST_F(Keychains, SavingAnEmptyPasswordBesideAChoiceStoresIt) {
    store(R"({"password":"p"})");
    EXPECT_TRUE(manager.savePassword(empty, ada, false));
    EXPECT_EQ(stored(), R"({"keepSignedIn":false,"password":""})");
}

TEST_F(Keychains, SavingWithoutAUserOrAnythingToStoreDoesNothing) {
    EXPECT_FALSE(manager.savePassword(QStringLiteral("p"), QString(), true));
    EXPECT_FALSE(manager.savePassword(QStringLiteral("p"), empty, true));
    EXPECT_FALSE(manager.savePassword(QString(), ada));
    EXPECT_FALSE(manager.savePassword(empty, ada));
    EXPECT_EQ(calls(), Calls());
    EXPECT_EQ(messages(), QStringList());
}

TEST_F(Keychains, SavingOverABarePasswordOrAnythingElseThatIsNoDocumentStartsAnew) {
    for (const QByteArray &data : {QByteArray("bare"), QByteArray(""), QByteArray("{}"), QByteArray("\xff")}) {
        store(data);
        EXPECT_TRUE(manager.savePassword(QStringLiteral("p"), ada));
        EXPECT_EQ(stored(), R"({"password":"p"})");
    }
}

TEST_F(Keychains, AFailedSaveIsLoggedAndDeletesTheItem) { // deliberate
    for (const auto &[call, isThere] :
         {std::pair("SecKeychainItemModifyContent", true), {"SecKeychainAddGenericPassword", false}}) {
        keychain.items.clear();
        if (isThere) {
            store(R"({"password":"old","encryptionKey":"k"})");
        }
        keychain.failure = kSomeFault;
        platform.transcript.failAt(QString::fromLatin1(call), 1);
        platform.transcript.clear();
        EXPECT_FALSE(manager.savePassword(QStringLiteral("new"), ada));
        EXPECT_EQ(stored(), "(none)");
        EXPECT_EQ(calls().contains(QStringLiteral("ItemDelete")), isThere);
        EXPECT_EQ(messages().last(), QStringLiteral("nrm Failed to write keychain item ( error = -2070 )"));
    }
}

TEST_F(Keychains, ASaveThatFailsOutOfReachIsLoggedAndDeletesNothing) {
    for (const qint32 status : kOutOfReach) {
        for (const auto &[call, nth] : {std::pair("SecKeychainItemModifyContent", 1), // not found the second time
                                        {"SecKeychainFindGenericPassword", 2}}) {
            store(R"({"password":"old"})");
            keychain.failure = status;
            platform.transcript.failAt(QString::fromLatin1(call), nth);
            EXPECT_FALSE(manager.savePassword(QStringLiteral("new"), ada));
            EXPECT_EQ(stored(), R"({"password":"old"})") << call << status;
            EXPECT_EQ(messages().last(),
                      QStringLiteral("nrm Failed to write keychain item ( error = %1 )").arg(status));
        }
    }
}

TEST_F(Keychains, ASilentServiceIsAskedOnceAndNotAgainAndAgain) {
    keychain.status = kKeychainNotAvailable;
    manager.savePassword(QStringLiteral("p"), ada, true);
    EXPECT_EQ(calls(), Calls{QStringLiteral("FindGenericPassword")});
    platform.transcript.clear();
    rename(QStringLiteral("Plume"));
    renamed->getPasswordForUser(ada);
    EXPECT_EQ(calls(), Calls{QStringLiteral("FindGenericPassword")});
}

TEST_F(Keychains, RemovingThePasswordLosesFlagsAndKeyAsWell) { // deliberate
    store(R"({"password":"p","encryptionKey":"k","beta":true})");
    EXPECT_TRUE(manager.removePassword(ada));
    EXPECT_EQ(stored(), "(none)");
    EXPECT_FALSE(manager.removePassword(ada));
    EXPECT_FALSE(manager.removePassword(QString()));
}

// Flags

TEST_F(Keychains, SkippingAuthenticationIsStoredBesideAnAccount) {
    store(R"({"password":"p"})");
    EXPECT_FALSE(manager.skipAuthForUser(ada));
    manager.setSkipAuth(true, ada);
    EXPECT_EQ(stored(), R"({"password":"p","skipAuth":true})");
    EXPECT_TRUE(manager.skipAuthForUser(ada));
    manager.setSkipAuth(false, ada);
    EXPECT_FALSE(manager.skipAuthForUser(ada));
    manager.removeSkipAuthForUser(ada);
    EXPECT_EQ(stored(), R"({"password":"p"})");
}

TEST_F(Keychains, SkippingAuthenticationIsNotStoredWithoutAnAccount) { // deliberate
    manager.setSkipAuth(true, ada);
    EXPECT_EQ(stored(), "(none)");
    EXPECT_FALSE(manager.skipAuthForUser(ada));
    manager.setSkipAuth(true, QString());
    EXPECT_FALSE(manager.skipAuthForUser(QString()));
}

TEST_F(Keychains, WhatIsNoDocumentHasNoFlagsAndGetsNone) {
    for (const QByteArray &data : {QByteArray("bare"), QByteArray(""), QByteArray("{}"), QByteArray("\xff")}) {
        store(data);
        manager.setSkipAuth(true, ada);
        manager.setFlag(true, QStringLiteral("beta"), ada);
        manager.removeSkipAuthForUser(ada);
        manager.removeFlagForKey(QStringLiteral("beta"), ada);
        EXPECT_FALSE(manager.skipAuthForUser(ada));
        EXPECT_FALSE(manager.flagExistsForKey(QStringLiteral("beta"), ada));
        EXPECT_FALSE(manager.flagForKey(QStringLiteral("beta"), ada));
        EXPECT_EQ(stored(), data);
    }
}

TEST_F(Keychains, FlagsComeAndGoByTheirNames) {
    store(R"({"password":"p"})");
    const QString beta = QStringLiteral("beta");
    EXPECT_FALSE(manager.flagExistsForKey(beta, ada));
    EXPECT_FALSE(manager.flagForKey(beta, ada));
    manager.setFlag(true, beta, ada);
    EXPECT_EQ(stored(), R"({"beta":true,"password":"p"})");
    EXPECT_TRUE(manager.flagForKey(beta, ada));
    manager.setFlag(false, beta, ada);
    EXPECT_TRUE(manager.flagExistsForKey(beta, ada));
    EXPECT_FALSE(manager.flagForKey(beta, ada));
    manager.removeFlagForKey(beta, ada);
    EXPECT_EQ(stored(), R"({"password":"p"})");
}

TEST_F(Keychains, FlagsNeedANameAndAUser) {
    store(R"({"":true,"a":true})");
    store(R"({"":true,"a":true})", empty);
    const QString a = QStringLiteral("a");
    for (const QString &none : {QString(), empty}) {
        EXPECT_FALSE(manager.flagExistsForKey(none, ada));
        EXPECT_FALSE(manager.flagForKey(none, ada));
        EXPECT_FALSE(manager.flagExistsForKey(a, none));
        EXPECT_FALSE(manager.flagForKey(a, none));
        manager.setFlag(false, none, ada);
        manager.setFlag(false, a, none);
        manager.removeFlagForKey(none, ada);
        manager.removeFlagForKey(a, none);
    }
    EXPECT_EQ(calls(), Calls());
}

TEST_F(Keychains, RemovingAFlagThatIsNotThereWritesNothing) {
    store(R"({"password":"p"})");
    manager.removeFlagForKey(QStringLiteral("beta"), ada);
    manager.removeSkipAuthForUser(ada);
    EXPECT_FALSE(calls().contains(QStringLiteral("ItemModifyContent")));
}

TEST_F(Keychains, RemovingTheLastMemberLeavesAnEmptyDocumentWhichIsAPasswordOfTwoBraces) { // deliberate
    store(R"({"beta":true})");
    manager.removeFlagForKey(QStringLiteral("beta"), ada);
    EXPECT_EQ(stored(), "{}");
    EXPECT_EQ(manager.getPasswordForUser(ada), QStringLiteral("{}"));
}

TEST_F(Keychains, AFlagMayBeANumberOrATextOfAnotherProgram) {
    for (const auto &[value, isSet] : {std::pair("1", true),
                                       {"0", false},
                                       {"0.5", true},
                                       {"\"yes\"", true},
                                       {"\"True\"", true},
                                       {"\"01\"", true},
                                       {"\"no\"", false},
                                       {"\"false\"", false},
                                       {"\"0\"", false},
                                       {"\"\"", false},
                                       {"\" 7\"", true}}) {
        store(QByteArray("{\"beta\":") + value + "}");
        EXPECT_EQ(manager.flagForKey(QStringLiteral("beta"), ada), isSet) << value;
    }
}

TEST_F(Keychains, AFlagThatCannotBeWrittenIsNotLoggedAndDeletesNothing) {
    store(R"({"password":"p"})");
    keychain.failure = kSomeFault;
    for (int i = 0; i < 2; ++i) {
        platform.transcript.failAt(QStringLiteral("SecKeychainItemModifyContent"), 1);
        if (i == 0) {
            manager.setFlag(true, QStringLiteral("beta"), ada);
        } else {
            EXPECT_FALSE(manager.saveEncryptionKey(QStringLiteral("k"), ada));
        }
        EXPECT_EQ(stored(), R"({"password":"p"})");
    }
    EXPECT_EQ(messages(), QStringList());
}

// The encryption key

TEST_F(Keychains, AnEncryptionKeyIsKeptBesideThePassword) {
    store(R"({"password":"p"})");
    EXPECT_TRUE(manager.getEncryptionKeyForUser(ada).isNull());
    EXPECT_TRUE(manager.saveEncryptionKey(QStringLiteral("k/1"), ada));
    EXPECT_EQ(stored(), R"({"encryptionKey":"k\/1","password":"p"})");
    EXPECT_EQ(manager.getEncryptionKeyForUser(ada), QStringLiteral("k/1"));
}

TEST_F(Keychains, AnEncryptionKeyMakesAnItemWhereThereIsNoDocument) {
    for (const QByteArray &data : {QByteArray(), QByteArray("{}"), QByteArray("bare")}) {
        keychain.items.clear();
        if (!data.isNull()) {
            store(data);
        }
        EXPECT_TRUE(manager.saveEncryptionKey(QStringLiteral("k"), ada));
        EXPECT_EQ(stored(), R"({"encryptionKey":"k"})");
    }
}

TEST_F(Keychains, AnEncryptionKeyNeedsAUserAndAKey) {
    EXPECT_FALSE(manager.saveEncryptionKey(QStringLiteral("k"), QString()));
    EXPECT_FALSE(manager.saveEncryptionKey(QString(), ada));
    EXPECT_TRUE(manager.getEncryptionKeyForUser(QString()).isNull());
    EXPECT_EQ(calls(), Calls());
    EXPECT_TRUE(manager.saveEncryptionKey(empty, ada));
    EXPECT_EQ(stored(), R"({"encryptionKey":""})");
}

// All documents, all threads, no words

TEST_F(Keychains, NoDocumentHowOddItMayBeIsLostOrTakenForAnotherOne) {
    const QByteArray deep = QByteArray(100000, '{') + QByteArray(100000, '}');
    const QByteArray huge = "{\"password\":\"" + QByteArray(1 << 20, 'x') + "\"}";
    for (const QByteArray &data :
         {QByteArray("null"), QByteArray("[1,2]"), QByteArray("{\"a\":{\"b\":[1]}}"), QByteArray("{"), QByteArray("}"),
          QByteArray("\"p\""), QByteArray(" { } "), QByteArray("\0\1\2", 3), QByteArray("\xef\xbb\xbf{}"),
          QByteArray("{\"password\":null}"), QByteArray("{\"password\":{\"a\":1}}"), QByteArray("{\"password\""), deep,
          huge}) {
        store(data);
        const QString first = manager.getPasswordForUser(ada);
        EXPECT_FALSE(first.isEmpty()) << data.left(40).toStdString();
        EXPECT_EQ(manager.getPasswordForUser(ada), first) << data.left(40).toStdString();
        manager.setFlag(true, QStringLiteral("beta"), ada);
        EXPECT_TRUE(manager.savePassword(QStringLiteral("new"), ada));
        EXPECT_EQ(manager.getPasswordForUser(ada), QStringLiteral("new")) << data.left(40).toStdString();
    }
}

TEST_F(Keychains, NoSecretReachesTheLog) {
    const QString secret = QStringLiteral("s3cret");
    for (const char *const call : {"SecKeychainFindGenericPassword", "SecKeychainItemCopyContent",
                                   "SecKeychainItemModifyContent", "SecKeychainAddGenericPassword", "none"}) {
        for (const QByteArray &data : {QByteArray("s3cret"), QByteArray(R"({"password":"s3cret"})"), QByteArray()}) {
            keychain.items.clear();
            if (!data.isNull()) {
                store(data);
            }
            for (int operation = 0; operation < 4; ++operation) {
                keychain.failure = kSomeFault;
                platform.transcript.failAt(QString::fromLatin1(call), 1);
                const std::vector<std::function<void()>> operations = {
                    [&] { manager.getPasswordForUser(ada); }, [&] { manager.savePassword(secret, ada, true); },
                    [&] { manager.saveEncryptionKey(secret, ada); }, [&] { manager.removePassword(ada); }};
                operations[static_cast<size_t>(operation)]();
            }
        }
    }
    EXPECT_FALSE(contentsOf(log).isEmpty());
    EXPECT_FALSE(contentsOf(log).contains("s3cret"));
}

TEST(SharedKeychain, IsOneForTheProcessAndUsesTheInstalledOnes) {
    test::FakePlatform &platform = test::immortalPlatform();
    std::vector<std::thread> threads;
    std::vector<KeychainManager *> managers(4);
    threads.reserve(managers.size());
    for (KeychainManager *&manager : managers) {
        threads.emplace_back([&manager] { manager = &KeychainManager::sharedManager(); });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(managers, std::vector(4, &KeychainManager::sharedManager()));
    platform.keychain.items[{managers[0]->serviceName().toStdString(), "shared"}] = R"({"password":"p"})";
    EXPECT_EQ(managers[0]->getPasswordForUser(QStringLiteral("shared")), QStringLiteral("p"));
    installPlatform(nullptr);
}

} // namespace
} // namespace quillmark

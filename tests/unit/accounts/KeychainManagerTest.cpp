#include "accounts/KeychainManager.h"
#include "accounts/JSONEncoder.h"
#include "support/LogFixture.h"
#include "support/Threads.h"
#include "support/ValuePrinter.h"
#include "texts/LocalizedStrings.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <memory>

namespace quillmark {
namespace {

using OptionalText = KeychainManager::OptionalText;
using Texts = std::vector<std::string>;

constexpr std::int32_t kSomeFault = -2070;
/// What the manager must take for "it is there, only not now".
constexpr std::int32_t kOutOfReach[] = {kKeychainInteractionNotAllowed, kKeychainNotAvailable,
                                        kKeychainNoDefaultKeychain, kKeychainUserCanceled, kKeychainAuthFailed};

class Keychains : public test::LogFixture {
protected:
    Keychains() : log(logToFile(kLogLevelDetailed)) {}
    ~Keychains() override { EXPECT_EQ(keychain.references, 0) << "an item was not released"; }

    void store(const std::string &data, const std::string &user = "ada") { keychain.items[{service, user}] = data; }
    void storeAlone(const std::optional<std::string> &data) {
        keychain.items.clear();
        if (data) {
            store(*data);
        }
    }
    std::string stored(const std::string &user = "ada") const {
        const auto item = keychain.items.find({service, user});
        return item != keychain.items.end() ? item->second : "(none)";
    }
    /// The names of the calls, without what they were about.
    Texts calls() const {
        constexpr std::string_view kPrefix = "SecKeychain";
        Texts names;
        for (const std::string &call : platform.transcript.calls()) {
            if (call.starts_with(kPrefix)) {
                names.push_back(call.substr(kPrefix.size(), call.find(' ') - kPrefix.size()));
            }
        }
        return names;
    }
    bool isCalled(const char *name) const { return std::ranges::count(calls(), name) > 0; }
    /// The nth call from now on of that function fails with that status.
    void failAt(const char *call, std::int32_t status, int nth = 1) {
        keychain.failure = status;
        platform.transcript.failAt(call, nth);
    }
    /// What looking for an item gives: the status, and the text that was absent before.
    using Found = std::pair<std::int32_t, std::optional<std::string>>;
    template <class... Service>
    Found find(const OptionalText &user, const Service &...ofService) {
        std::optional<std::string> text;
        const std::int32_t status = manager.secKeychainFindGenericPassword(&text, user, ofService...);
        return {status, text};
    }
    Texts messages() const { return linesOf(log); }
    /// The product has another name from now on.
    void rename(const std::string &name) {
        bundle.strings["ProductName"] = name;
        strings = std::make_unique<LocalizedStrings>(bundle);
        renamed = std::make_unique<KeychainManager>(keychain, *strings);
        service = name;
    }

    /// Of an item that was stored before.
    void storeUnderTheLegacyName(const std::string &data) {
        store(data);
        rename("Plume");
    }

    const std::string log;
    test::FakeKeychain &keychain = platform.keychain;
    test::FakeBundle bundle;
    std::unique_ptr<LocalizedStrings> strings = std::make_unique<LocalizedStrings>(bundle);
    KeychainManager manager{keychain, *strings};
    std::unique_ptr<KeychainManager> renamed;
    std::string service = "Quillmark";
    const std::string ada = "ada";
    const std::string empty;
};

// Items

TEST_F(Keychains, ServiceIsTheProductsNameInTheUsersLanguage) {
    EXPECT_EQ(manager.serviceName(), "Quillmark");
    rename("Plume");
    EXPECT_EQ(renamed->serviceName(), "Plume");
}

TEST_F(Keychains, FindGivesTheItemsText) {
    store("grüß €");
    EXPECT_EQ(find(ada), Found(0, "grüß €"));
    EXPECT_EQ(platform.transcript.calls(),
              (Texts{"SecKeychainFindGenericPassword Quillmark ada", "SecKeychainItemCopyContent Quillmark ada"}));
}

TEST_F(Keychains, FindLeavesATextThatIsSetAsItIs) {
    store("new");
    for (const std::string &before : {std::string("old"), empty}) {
        std::optional<std::string> text = before;
        EXPECT_EQ(manager.secKeychainFindGenericPassword(&text, ada), 0);
        EXPECT_EQ(text, before);
    }
}

TEST_F(Keychains, FindNeedsNoPlaceForTheText) {
    store("new");
    EXPECT_EQ(manager.secKeychainFindGenericPassword(nullptr, ada), 0);
    EXPECT_EQ(manager.secKeychainFindGenericPassword(nullptr, "bob"), kKeychainItemNotFound);
}

TEST_F(Keychains, FindOfAnEmptyItemGivesAnEmptyTextAndNoAbsentOne) {
    store("");
    EXPECT_EQ(find(ada), Found(0, ""));
}

TEST_F(Keychains, FindOfWhatIsNoTextSucceedsAndGivesNone) {
    for (const char *const data : {"\xff\xfe", "a\xc3", "\xed\xa0\x80"}) {
        store(data);
        EXPECT_EQ(find(ada), Found(0, std::nullopt));
        EXPECT_EQ(stored(), data);
    }
}

TEST_F(Keychains, NullNamesAreASuccessThatDoesNothing) {
    EXPECT_EQ(find(std::nullopt), Found(0, std::nullopt));
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword("x", std::nullopt), 0);
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword(Value(), ada), 0);
    EXPECT_FALSE(manager.secKeychainRemoveAllItemsWithUserName(std::nullopt));
    EXPECT_EQ(calls(), Texts());
}

TEST_F(Keychains, AnEmptyUserNameIsANameLikeOthers) {
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword("x", empty), 0);
    EXPECT_EQ(stored(empty), "x");
}

TEST_F(Keychains, AnItemIsAddedOrItsDataReplaced) {
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword("grün", ada), 0);
    EXPECT_EQ(stored(), "gr\xc3\xbcn");
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword(Bytes{std::string("\0\xff", 2)}, ada), 0);
    EXPECT_EQ(stored(), std::string("\0\xff", 2));
    EXPECT_EQ(calls(),
              (Texts{"FindGenericPassword", "AddGenericPassword", "FindGenericPassword", "ItemModifyContent"}));
}

TEST_F(Keychains, AnItemMayBeEmpty) {
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword(empty, ada), 0);
    EXPECT_EQ(stored(), "");
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword(Bytes{""}, "bob"), 0);
    EXPECT_EQ(stored("bob"), "");
}

TEST_F(Keychains, AnItemThatVanishesBeforeItIsReplacedIsAdded) {
    store("old");
    failAt("SecKeychainItemModifyContent", kKeychainItemNotFound);
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword("new", ada), 0);
    EXPECT_EQ(stored(), "new");
}

TEST_F(Keychains, NothingIsAddedWhenTheItemCannotBeLookedFor) {
    for (const std::int32_t status : {kKeychainInteractionNotAllowed, kKeychainNotAvailable, kSomeFault}) {
        failAt("SecKeychainFindGenericPassword", status);
        EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword("x", ada), status);
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
    platform.transcript.failAt("SecKeychainItemDelete", 1);
    EXPECT_FALSE(manager.secKeychainRemoveAllItemsWithUserName(ada));
    EXPECT_EQ(stored(), "x");
}

TEST_F(Keychains, AnotherServicesItemsAreReachedByItsName) {
    const std::string other = "Other";
    EXPECT_EQ(manager.secKeychainModifyOrAddGenericPassword("x", ada, other), 0);
    EXPECT_EQ(stored(), "(none)");
    EXPECT_EQ(find(ada, other), Found(0, "x"));
    EXPECT_FALSE(manager.secKeychainRemoveAllItemsWithUserName(ada));
    EXPECT_TRUE(manager.secKeychainRemoveAllItemsWithUserName(ada, other));
}

TEST_F(Keychains, AFindThatFailsIsNotLogged) {
    for (const std::int32_t status : {kKeychainItemNotFound, kSomeFault, kKeychainNotAvailable}) {
        failAt("SecKeychainFindGenericPassword", status);
        EXPECT_EQ(manager.secKeychainFindGenericPassword(nullptr, ada), status);
    }
    EXPECT_EQ(messages(), Texts());
}

// Items that are there and can't be read

TEST_F(Keychains, ADamagedItemIsLoggedAndDeleted) {
    store("x");
    failAt("SecKeychainItemCopyContent", kKeychainDecode);
    EXPECT_EQ(find(ada), Found(kKeychainDecode, std::nullopt));
    EXPECT_EQ(stored(), "(none)");
    EXPECT_EQ(messages(), Texts{"nrm Failed to read keychain item ( error = -26275 )"});
}

TEST_F(Keychains, ADamagedItemIsMadeAnewByTheNextSave) {
    store("damaged");
    failAt("SecKeychainItemCopyContent", kKeychainDecode);
    EXPECT_TRUE(manager.savePassword("new", ada));
    EXPECT_EQ(stored(), R"({"password":"new"})");
}

TEST_F(Keychains, AnItemBehindALockIsLoggedAndKept) {
    for (const std::int32_t status : kOutOfReach) {
        store("x");
        failAt("SecKeychainItemCopyContent", status);
        EXPECT_EQ(manager.secKeychainFindGenericPassword(nullptr, ada), status);
        EXPECT_EQ(stored(), "x") << status;
        EXPECT_EQ(messages().back(), "nrm Failed to read keychain item ( error = " + std::to_string(status) + " )");
    }
}

TEST_F(Keychains, ADamagedItemThatCannotBeDeletedIsOverwrittenByTheNextSave) {
    store("damaged");
    failAt("SecKeychainItemCopyContent", kKeychainDecode);
    platform.transcript.failAt("SecKeychainItemDelete", 1);
    EXPECT_TRUE(manager.savePassword("new", ada));
    EXPECT_EQ(stored(), R"({"password":"new"})");
    EXPECT_TRUE(isCalled("ItemModifyContent"));
}

TEST_F(Keychains, AnItemThatVanishesBeforeItIsReadIsLoggedAndMadeAnewByTheNextSave) {
    store("x");
    failAt("SecKeychainItemCopyContent", kKeychainItemNotFound);
    EXPECT_TRUE(manager.savePassword("new", ada));
    EXPECT_EQ(messages(), Texts{"nrm Failed to read keychain item ( error = -25300 )"});
    EXPECT_EQ(stored(), R"({"password":"new"})");
}

TEST_F(Keychains, NothingIsWrittenOverAnItemThatCannotBeReached) {
    const std::string document = R"({"encryptionKey":"k","password":"p"})";
    for (const char *const call : {"SecKeychainFindGenericPassword", "SecKeychainItemCopyContent"}) {
        for (const std::int32_t status : kOutOfReach) {
            // Out of reach at the first call and back at the next: the whole document must survive.
            const auto change = [&](const std::function<void()> &operation) {
                store(document);
                failAt(call, status);
                operation();
                EXPECT_EQ(stored(), document) << call << status;
            };
            change([&] { EXPECT_FALSE(manager.savePassword("new", ada, true)); });
            change([&] { EXPECT_FALSE(manager.saveEncryptionKey("new", ada)); });
            change([&] { manager.setFlag(true, "beta", ada); });
            change([&] { manager.setSkipAuth(true, ada); });
            change([&] { manager.removeFlagForKey("password", ada); });
            change([&] { EXPECT_EQ(manager.getPasswordForUser(ada), std::nullopt); });
            change([&] { EXPECT_EQ(manager.getEncryptionKeyForUser(ada), std::nullopt); });
        }
    }
}

TEST_F(Keychains, NothingIsWrittenWhenTheItemCannotBeLookedForForAnyOtherReason) {
    store(R"({"encryptionKey":"k"})");
    failAt("SecKeychainFindGenericPassword", kSomeFault);
    EXPECT_FALSE(manager.savePassword("new", ada));
    EXPECT_EQ(stored(), R"({"encryptionKey":"k"})");
    EXPECT_EQ(messages(), Texts{"nrm Failed to write keychain item ( error = -2070 )"});
}

// Reading the password

TEST_F(Keychains, APasswordComesWithTheStoredChoice) {
    for (const bool choice : {true, false}) {
        store(choice ? R"({"password":"p","keepSignedIn":true})" : R"({"password":"p","keepSignedIn":false})");
        bool keep = !choice;
        EXPECT_EQ(manager.getPasswordForUser(ada, &keep), "p");
        EXPECT_EQ(keep, choice);
        EXPECT_EQ(manager.getPasswordForUser(ada), "p");
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
    EXPECT_EQ(manager.getPasswordForUser(ada, &keep), std::nullopt);
    EXPECT_EQ(manager.getPasswordForUser(std::nullopt, &keep), std::nullopt);
    EXPECT_TRUE(keep);
    EXPECT_EQ(stored(), "(none)");
    EXPECT_EQ(messages(), Texts());
}

TEST_F(Keychains, AnEmptyItemHasAnEmptyPasswordAndStaysAsItIs) {
    store("");
    EXPECT_EQ(manager.getPasswordForUser(ada).value_or(""), "");
    EXPECT_EQ(stored(), "");
}

TEST_F(Keychains, AnItemThatIsNoTextHasNoPasswordAndStaysAsItIs) {
    store("p\xff");
    EXPECT_EQ(manager.getPasswordForUser(ada), std::nullopt);
    EXPECT_EQ(stored(), "p\xff");
}

TEST_F(Keychains, ABarePasswordOfAnEarlierVersionBecomesADocument) {
    store("s3cret/pass\\word\"");
    bool keep = false;
    EXPECT_EQ(manager.getPasswordForUser(ada, &keep), "s3cret/pass\\word\"");
    EXPECT_TRUE(keep);
    const auto document = JSONEncoder::createObjFromJSONStr(stored());
    ASSERT_TRUE(document);
    EXPECT_EQ(*document, (Dictionary{{"password", "s3cret/pass\\word\""}, {"keepSignedIn", true}}));
    EXPECT_EQ(manager.getPasswordForUser(ada), "s3cret/pass\\word\"");
}

TEST_F(Keychains, ABarePasswordIsGivenAlsoWhenItCannotBeMadeADocument) {
    store("bare");
    for (const std::int32_t status : {kKeychainInteractionNotAllowed, kSomeFault}) {
        failAt("SecKeychainItemModifyContent", status);
        EXPECT_EQ(manager.getPasswordForUser(ada), "bare");
        EXPECT_EQ(stored(), "bare");
    }
    EXPECT_EQ(messages(), Texts());
}

TEST_F(Keychains, ABarePasswordBeyondLatin1IsGivenOnceAndThenWithTheLowerBytesOfItsCharacters) { // deliberate
    store("€");
    EXPECT_EQ(manager.getPasswordForUser(ada), "€");
    EXPECT_EQ(stored(), R"({"keepSignedIn":true,"password":"€"})");
    EXPECT_EQ(manager.getPasswordForUser(ada), "\u00ac");
}

TEST_F(Keychains, ADocumentWithoutAPasswordGivesItsOwnText) { // deliberate
    for (const char *const text : {R"({"beta":true})", R"({"password":""})", "{}", R"([{"a":1}])"}) {
        store(text);
        bool keep = false;
        EXPECT_EQ(manager.getPasswordForUser(ada, &keep), text);
        EXPECT_EQ(stored(), text) << "it is a document already";
        EXPECT_FALSE(keep);
    }
}

TEST_F(Keychains, ADocumentWithoutAPasswordDoesNotTellItsChoice) { // deliberate
    store(R"({"keepSignedIn":true})");
    bool keep = false;
    EXPECT_EQ(manager.getPasswordForUser(ada, &keep), R"({"keepSignedIn":true})");
    EXPECT_FALSE(keep);
}

// What earlier versions called themselves

TEST_F(Keychains, AnItemUnderTheLegacyNameMovesAtTheFirstRead) {
    storeUnderTheLegacyName(R"({"password":"p","keepSignedIn":true,"beta":true})");
    bool keep = false;
    EXPECT_EQ(renamed->getPasswordForUser(ada, &keep), "p");
    EXPECT_TRUE(keep);
    EXPECT_EQ(keychain.items.size(), 1);
    EXPECT_TRUE(keychain.items.contains({"Plume", "ada"}));
    EXPECT_EQ(stored(), R"({"password":"p","keepSignedIn":true,"beta":true})") << "as it was";
}

TEST_F(Keychains, ABarePasswordUnderTheLegacyNameMovesAndBecomesADocument) {
    storeUnderTheLegacyName("bare");
    EXPECT_EQ(renamed->getPasswordForUser(ada), "bare");
    EXPECT_EQ(keychain.items.size(), 1);
    EXPECT_EQ(stored(), R"({"keepSignedIn":true,"password":"bare"})");
}

TEST_F(Keychains, AnItemUnderTheCurrentNameLeavesTheLegacyOneAlone) {
    storeUnderTheLegacyName("old");
    store(R"({"password":"new"})");
    EXPECT_EQ(renamed->getPasswordForUser(ada), "new");
    EXPECT_EQ(keychain.items.at({"Quillmark", "ada"}), "old");
}

TEST_F(Keychains, NothingMovesWhileTheProductHasItsLegacyName) {
    EXPECT_EQ(manager.getPasswordForUser(ada), std::nullopt);
    EXPECT_EQ(calls(), Texts{"FindGenericPassword"});
}

TEST_F(Keychains, NothingMovesUnlessTheCurrentItemIsKnownToBeAbsent) {
    storeUnderTheLegacyName("old");
    for (const std::int32_t status : {kKeychainInteractionNotAllowed, kKeychainNotAvailable, kSomeFault}) {
        failAt("SecKeychainFindGenericPassword", status);
        EXPECT_EQ(renamed->getPasswordForUser(ada), std::nullopt);
        EXPECT_EQ(keychain.items.at({"Quillmark", "ada"}), "old");
        EXPECT_EQ(stored(), "(none)");
    }
}

TEST_F(Keychains, TheLegacyItemIsDeletedBeforeItsTextIsWritten) {
    storeUnderTheLegacyName(R"({"password":"p"})");
    renamed->getPasswordForUser(ada);
    EXPECT_EQ(platform.transcript.calls(),
              (Texts{"SecKeychainFindGenericPassword Plume ada", "SecKeychainFindGenericPassword Quillmark ada",
                     "SecKeychainItemCopyContent Quillmark ada", "SecKeychainFindGenericPassword Quillmark ada",
                     "SecKeychainItemDelete Quillmark ada", "SecKeychainFindGenericPassword Plume ada",
                     "SecKeychainAddGenericPassword Plume ada"}));
}

TEST_F(Keychains, AMovingItemThatCannotBeWrittenIsGivenOnceAndThenGoneWithoutAWord) { // deliberate
    storeUnderTheLegacyName(R"({"password":"p"})");
    failAt("SecKeychainAddGenericPassword", kSomeFault);
    EXPECT_EQ(renamed->getPasswordForUser(ada), "p");
    EXPECT_TRUE(keychain.items.empty());
    EXPECT_EQ(renamed->getPasswordForUser(ada), std::nullopt);
    EXPECT_EQ(messages(), Texts());
}

TEST_F(Keychains, AMovingItemThatCannotBeDeletedIsCopied) { // deliberate
    storeUnderTheLegacyName("old");
    failAt("SecKeychainItemDelete", kSomeFault);
    EXPECT_EQ(renamed->getPasswordForUser(ada), "old");
    EXPECT_EQ(keychain.items.at({"Quillmark", "ada"}), "old");
    EXPECT_EQ(stored(), R"({"keepSignedIn":true,"password":"old"})");
}

TEST_F(Keychains, ALegacyItemThatIsNoTextStaysWhereItIs) {
    storeUnderTheLegacyName("\xff");
    EXPECT_EQ(renamed->getPasswordForUser(ada), std::nullopt);
    EXPECT_EQ(keychain.items.at({"Quillmark", "ada"}), "\xff");
}

TEST_F(Keychains, OnlyReadingThePasswordMovesAnItem) { // deliberate
    storeUnderTheLegacyName(R"({"password":"p","skipAuth":true})");
    EXPECT_FALSE(renamed->skipAuthForUser(ada));
    EXPECT_EQ(renamed->getEncryptionKeyForUser(ada), std::nullopt);
    EXPECT_EQ(stored(), "(none)");
}

// Saving the password

TEST_F(Keychains, SavingMakesAnItem) {
    EXPECT_TRUE(manager.savePassword("p", ada, true));
    EXPECT_EQ(stored(), R"({"keepSignedIn":true,"password":"p"})");
    EXPECT_TRUE(manager.savePassword("p", "bob"));
    EXPECT_EQ(stored("bob"), R"({"password":"p"})");
}

TEST_F(Keychains, SavingKeepsAllOtherMembers) {
    store(R"({"beta":true,"encryptionKey":"k","keepSignedIn":true,"password":"old","skipAuth":false})");
    EXPECT_TRUE(manager.savePassword("new", ada));
    EXPECT_EQ(stored(), R"({"beta":true,"encryptionKey":"k","keepSignedIn":true,"password":"new","skipAuth":false})");
}

TEST_F(Keychains, SavingTheChoiceAloneKeepsThePassword) {
    store(R"({"keepSignedIn":true,"password":"p"})");
    EXPECT_TRUE(manager.savePassword(std::nullopt, ada, false));
    EXPECT_EQ(stored(), R"({"keepSignedIn":false,"password":"p"})");
}

TEST_F(Keychains, SavingAnEmptyPasswordBesideAChoiceStoresIt) {
    store(R"({"password":"p"})");
    EXPECT_TRUE(manager.savePassword(empty, ada, false));
    EXPECT_EQ(stored(), R"({"keepSignedIn":false,"password":""})");
}

TEST_F(Keychains, SavingWithoutAUserOrAnythingToStoreDoesNothing) {
    EXPECT_FALSE(manager.savePassword("p", std::nullopt, true));
    EXPECT_FALSE(manager.savePassword("p", empty, true));
    EXPECT_FALSE(manager.savePassword(std::nullopt, ada));
    EXPECT_FALSE(manager.savePassword(empty, ada));
    EXPECT_EQ(calls(), Texts());
    EXPECT_EQ(messages(), Texts());
}

TEST_F(Keychains, SavingOverABarePasswordOrAnythingElseThatIsNoDocumentStartsAnew) {
    for (const char *const data : {"bare", "", "{}", "\xff"}) {
        store(data);
        EXPECT_TRUE(manager.savePassword("p", ada));
        EXPECT_EQ(stored(), R"({"password":"p"})");
    }
}

TEST_F(Keychains, AFailedSaveIsLoggedAndDeletesTheItem) { // deliberate
    for (const auto &[call, isThere] :
         {std::pair("SecKeychainItemModifyContent", true), {"SecKeychainAddGenericPassword", false}}) {
        storeAlone(isThere ? std::optional(R"({"password":"old","encryptionKey":"k"})") : std::nullopt);
        failAt(call, kSomeFault);
        platform.transcript.clear();
        EXPECT_FALSE(manager.savePassword("new", ada));
        EXPECT_EQ(stored(), "(none)");
        EXPECT_EQ(isCalled("ItemDelete"), isThere);
        EXPECT_EQ(messages().back(), "nrm Failed to write keychain item ( error = -2070 )");
    }
}

TEST_F(Keychains, ASaveThatFailsOutOfReachIsLoggedAndDeletesNothing) {
    for (const std::int32_t status : kOutOfReach) {
        for (const auto &[call, nth] : {std::pair("SecKeychainItemModifyContent", 1), // not found the second time
                                        {"SecKeychainFindGenericPassword", 2}}) {
            store(R"({"password":"old"})");
            failAt(call, status, nth);
            EXPECT_FALSE(manager.savePassword("new", ada));
            EXPECT_EQ(stored(), R"({"password":"old"})") << call << status;
            EXPECT_EQ(messages().back(),
                      "nrm Failed to write keychain item ( error = " + std::to_string(status) + " )");
        }
    }
}

TEST_F(Keychains, ASilentServiceIsAskedOnceAndNotAgainAndAgain) {
    keychain.status = kKeychainNotAvailable;
    manager.savePassword("p", ada, true);
    EXPECT_EQ(calls(), Texts{"FindGenericPassword"});
    platform.transcript.clear();
    rename("Plume");
    renamed->getPasswordForUser(ada);
    EXPECT_EQ(calls(), Texts{"FindGenericPassword"});
}

TEST_F(Keychains, RemovingThePasswordLosesFlagsAndKeyAsWell) { // deliberate
    store(R"({"password":"p","encryptionKey":"k","beta":true})");
    EXPECT_TRUE(manager.removePassword(ada));
    EXPECT_EQ(stored(), "(none)");
    EXPECT_FALSE(manager.removePassword(ada));
    EXPECT_FALSE(manager.removePassword(std::nullopt));
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
    manager.setSkipAuth(true, std::nullopt);
    EXPECT_FALSE(manager.skipAuthForUser(std::nullopt));
}

TEST_F(Keychains, WhatIsNoDocumentHasNoFlagsAndGetsNone) {
    for (const char *const data : {"bare", "", "{}", "\xff"}) {
        store(data);
        manager.setSkipAuth(true, ada);
        manager.setFlag(true, "beta", ada);
        manager.removeSkipAuthForUser(ada);
        manager.removeFlagForKey("beta", ada);
        EXPECT_FALSE(manager.skipAuthForUser(ada));
        EXPECT_FALSE(manager.flagExistsForKey("beta", ada));
        EXPECT_FALSE(manager.flagForKey("beta", ada));
        EXPECT_EQ(stored(), data);
    }
}

TEST_F(Keychains, FlagsComeAndGoByTheirNames) {
    store(R"({"password":"p"})");
    const std::string beta = "beta";
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
    const std::string a = "a";
    for (const OptionalText none : {OptionalText(), OptionalText("")}) {
        EXPECT_FALSE(manager.flagExistsForKey(none, ada));
        EXPECT_FALSE(manager.flagForKey(none, ada));
        EXPECT_FALSE(manager.flagExistsForKey(a, none));
        EXPECT_FALSE(manager.flagForKey(a, none));
        manager.setFlag(false, none, ada);
        manager.setFlag(false, a, none);
        manager.removeFlagForKey(none, ada);
        manager.removeFlagForKey(a, none);
    }
    EXPECT_EQ(calls(), Texts());
}

TEST_F(Keychains, RemovingAFlagThatIsNotThereWritesNothing) {
    store(R"({"password":"p"})");
    manager.removeFlagForKey("beta", ada);
    manager.removeSkipAuthForUser(ada);
    EXPECT_FALSE(isCalled("ItemModifyContent"));
}

TEST_F(Keychains, RemovingTheLastMemberLeavesAnEmptyDocumentWhichIsAPasswordOfTwoBraces) { // deliberate
    store(R"({"beta":true})");
    manager.removeFlagForKey("beta", ada);
    EXPECT_EQ(stored(), "{}");
    EXPECT_EQ(manager.getPasswordForUser(ada), "{}");
}

TEST_F(Keychains, AFlagMayBeANumberOrATextOfAnotherProgram) {
    const auto isSetBy = [this](const std::string &value) {
        store("{\"beta\":" + value + "}");
        return manager.flagForKey("beta", ada);
    };
    for (const char *value : {"1", "0.5", "\"yes\"", "\"True\"", "\"01\"", "\" 7\""}) {
        EXPECT_TRUE(isSetBy(value)) << value;
    }
    for (const char *value : {"0", "\"no\"", "\"false\"", "\"0\"", "\"\""}) {
        EXPECT_FALSE(isSetBy(value)) << value;
    }
}

TEST_F(Keychains, AFlagThatCannotBeWrittenIsNotLoggedAndDeletesNothing) {
    store(R"({"password":"p"})");
    failAt("SecKeychainItemModifyContent", kSomeFault);
    manager.setFlag(true, "beta", ada);
    EXPECT_EQ(stored(), R"({"password":"p"})");
    failAt("SecKeychainItemModifyContent", kSomeFault);
    EXPECT_FALSE(manager.saveEncryptionKey("k", ada));
    EXPECT_EQ(stored(), R"({"password":"p"})");
    EXPECT_EQ(messages(), Texts());
}

// The encryption key

TEST_F(Keychains, AnEncryptionKeyIsKeptBesideThePassword) {
    store(R"({"password":"p"})");
    EXPECT_EQ(manager.getEncryptionKeyForUser(ada), std::nullopt);
    EXPECT_TRUE(manager.saveEncryptionKey("k/1", ada));
    EXPECT_EQ(stored(), R"({"encryptionKey":"k\/1","password":"p"})");
    EXPECT_EQ(manager.getEncryptionKeyForUser(ada), "k/1");
}

TEST_F(Keychains, AnEncryptionKeyMakesAnItemWhereThereIsNoDocument) {
    for (const auto &data : std::initializer_list<std::optional<std::string>>{std::nullopt, "{}", "bare"}) {
        storeAlone(data);
        EXPECT_TRUE(manager.saveEncryptionKey("k", ada));
        EXPECT_EQ(stored(), R"({"encryptionKey":"k"})");
    }
}

TEST_F(Keychains, AnEncryptionKeyNeedsAUserAndAKey) {
    EXPECT_FALSE(manager.saveEncryptionKey("k", std::nullopt));
    EXPECT_FALSE(manager.saveEncryptionKey(std::nullopt, ada));
    EXPECT_EQ(manager.getEncryptionKeyForUser(std::nullopt), std::nullopt);
    EXPECT_EQ(calls(), Texts());
    EXPECT_TRUE(manager.saveEncryptionKey(empty, ada));
    EXPECT_EQ(stored(), R"({"encryptionKey":""})");
}

// All documents, all threads, no words

TEST_F(Keychains, NoDocumentHowOddItMayBeIsLostOrTakenForAnotherOne) {
    const std::string deep = std::string(100000, '{') + std::string(100000, '}');
    const std::string huge = "{\"password\":\"" + std::string(1 << 20, 'x') + "\"}";
    for (const std::string &data :
         Texts{"null", "[1,2]", "{\"a\":{\"b\":[1]}}", "{", "}", "\"p\"", " { } ", std::string("\0\1\2", 3),
               "\xef\xbb\xbf{}", "{\"password\":null}", "{\"password\":{\"a\":1}}", "{\"password\"", deep, huge}) {
        store(data);
        const std::optional<std::string> first = manager.getPasswordForUser(ada);
        EXPECT_NE(first.value_or(""), "") << data.substr(0, 40);
        EXPECT_EQ(manager.getPasswordForUser(ada), first) << data.substr(0, 40);
        manager.setFlag(true, "beta", ada);
        EXPECT_TRUE(manager.savePassword("new", ada));
        EXPECT_EQ(manager.getPasswordForUser(ada), "new") << data.substr(0, 40);
    }
}

TEST_F(Keychains, NoSecretReachesTheLog) {
    const std::string secret = "s3cret";
    const std::vector<std::function<void()>> operations = {
        [&] { manager.getPasswordForUser(ada); }, [&] { manager.savePassword(secret, ada, true); },
        [&] { manager.saveEncryptionKey(secret, ada); }, [&] { manager.removePassword(ada); }};
    for (const char *const call : {"SecKeychainFindGenericPassword", "SecKeychainItemCopyContent",
                                   "SecKeychainItemModifyContent", "SecKeychainAddGenericPassword", "none"}) {
        for (const auto &data :
             std::initializer_list<std::optional<std::string>>{"s3cret", R"({"password":"s3cret"})", std::nullopt}) {
            storeAlone(data);
            for (const std::function<void()> &operation : operations) {
                failAt(call, kSomeFault);
                operation();
            }
        }
    }
    EXPECT_FALSE(contentsOf(log).empty());
    EXPECT_EQ(contentsOf(log).find("s3cret"), std::string::npos);
}

TEST(SharedKeychain, IsOneForTheProcessAndUsesTheInstalledOnes) {
    test::FakePlatform &platform = test::immortalPlatform();
    const auto managers = test::answersToThreads([] { return &KeychainManager::sharedManager(); });
    EXPECT_THAT(managers, testing::Each(&KeychainManager::sharedManager()));
    platform.keychain.items[{managers[0]->serviceName(), "shared"}] = R"({"password":"p"})";
    EXPECT_EQ(managers[0]->getPasswordForUser("shared"), "p");
    installPlatform(nullptr);
}

} // namespace
} // namespace quillmark

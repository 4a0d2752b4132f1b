/// Works on the keyring from many threads at once, each on an item of its own, and prints what went wrong.
///   KeyringProbe APP          by way of the keyring module in this application bundle
///   KeyringProbe APP between  does it twice, and in between prints "between" and waits for a line

#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/linux/keyring/KeyringModule.h"
#include "support/Threads.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <sys/prctl.h>

namespace {

using quillmark::Keychain;

constexpr int kThreads = 8;
constexpr int kRounds = 5;

/// Adds, reads, changes, reads and removes one item. \returns the number of things that were not as they should be.
int workOn(Keychain &keychain, const std::string &account) {
    const std::string service = "KeyringProbe";
    const std::string content = "content of " + account;
    std::string data;
    std::unique_ptr<Keychain::Item> item;
    int faults = 0;
    const auto expect = [&faults](bool isRight) { faults += isRight ? 0 : 1; };
    expect(keychain.findGenericPassword(service, account, item) == quillmark::kKeychainItemNotFound);
    expect(keychain.addGenericPassword(service, account, content) == 0);
    expect(keychain.findGenericPassword(service, account, item) == 0);
    if (item == nullptr) {
        return faults;
    }
    expect(item->copyContent(data) == 0 && data == content);
    expect(item->modifyContent(content + content) == 0);
    expect(item->copyContent(data) == 0 && data == content + content);
    expect(item->remove() == 0);
    expect(item->copyContent(data) == quillmark::kKeychainItemNotFound);
    expect(item->modifyContent(content) == quillmark::kKeychainItemNotFound);
    expect(item->remove() == quillmark::kKeychainItemNotFound);
    for (const std::string &cut : {account + '\0' + "x", account + '\xc3'}) { // no name on the bus
        expect(keychain.findGenericPassword(service, cut, item) == quillmark::kKeychainWrongParameter);
        expect(keychain.addGenericPassword(service, cut, content) == quillmark::kKeychainWrongParameter);
    }
    return faults;
}

int workOnManyThreads(Keychain &keychain) {
    std::atomic<int> faults = 0;
    quillmark::test::onThreads(kThreads, [&](int thread) {
        for (int round = 0; round < kRounds; ++round) {
            faults += workOn(keychain, "thread " + std::to_string(thread));
        }
    });
    return faults;
}

} // namespace

int main(int count, char **arguments) {
    if (count < 2) {
        return EXIT_FAILURE;
    }
    const auto bundle = quillmark::nativeBundle(arguments[1]);
    quillmark::KeyringModule keychain(*bundle);
    int faults = workOnManyThreads(keychain);
    if (count > 2) {
        std::puts(arguments[2]);
        std::fflush(stdout);
        std::getchar();
        faults += workOnManyThreads(keychain);
    }
    if (::prctl(PR_GET_DUMPABLE) != 0) {
        std::puts("others can look into a process that has asked for secrets");
        ++faults;
    }
    std::printf("%d faults\n", faults);
    return faults == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

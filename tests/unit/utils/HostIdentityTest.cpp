#include "utils/HostIdentity.h"
#include "support/LogFixture.h"

#include <arpa/inet.h>

namespace quillmark {
namespace {

using test::Lines;

class HostIdentity : public test::LogFixture {
protected:
    void know(const char *host, std::initializer_list<const char *> addresses) {
        std::vector<std::uint32_t> &known = platform.systemInfo.addresses[host];
        for (const char *address : addresses) {
            known.push_back(::inet_addr(address));
        }
    }
    static bool same(const char *a, const char *b) { return areHostnamesSameMachine(a, b); }
};

TEST_F(HostIdentity, ALocalNameGetsItsRootDotAndOthersStay) {
    for (const auto &[name, result] : {std::pair("office-mac.local", "office-mac.local."),
                                       {"office", "office"},
                                       {"office.example.com", "office.example.com"},
                                       {"a.Local", "a.Local"},
                                       {".local", ".local."}}) {
        platform.systemInfo.hostName = name;
        EXPECT_EQ(getThisMachinesHostname(), result);
    }
}

TEST_F(HostIdentity, TheShortNameEndsAtTheFirstDot) {
    platform.systemInfo.hostName = "office.example.com";
    EXPECT_EQ(getThisMachinesName(), "office");
    platform.systemInfo.hostName = "office";
    EXPECT_EQ(getThisMachinesName(), "office");
}

TEST_F(HostIdentity, AFailureIsLoggedAndLeavesAnEmptyName) {
    const std::string file = logToFile(kLogLevelError);
    platform.systemInfo.hasHostName = false;
    platform.systemInfo.hostName.clear();
    testing::internal::CaptureStderr();
    EXPECT_EQ(getThisMachinesHostname(), "");
    EXPECT_EQ(getThisMachinesName(), "");
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(messagesOf(file), Lines(2, "gethostname() failed"));
}

TEST_F(HostIdentity, ANameOf300CharactersIsCutTo255) {
    platform.systemInfo.hostName = std::string(300, 'h');
    EXPECT_EQ(getThisMachinesHostname(), std::string(255, 'h'));
}

TEST_F(HostIdentity, AddressesComeInTheResolversOrder) {
    know("host", {"10.0.0.2", "10.0.0.1"});
    EXPECT_EQ(ipAddressesFromHostname("host"), (Lines{"10.0.0.2", "10.0.0.1"}));
    EXPECT_EQ(ipAddressesFromHostname("unknown"), Lines());
}

TEST_F(HostIdentity, AnAddressInNetworkOrderIsDottedDecimal) {
    EXPECT_EQ(_stringFromIPAddress(htonl(0x0A000001)), "10.0.0.1");
    EXPECT_EQ(_stringFromIPAddress(0xFFFFFFFF), "255.255.255.255");
}

TEST_F(HostIdentity, EqualNamesAreOneMachineWithoutAnyLookup) {
    EXPECT_TRUE(same("unknown", "unknown"));
    EXPECT_TRUE(same("", ""));
    EXPECT_TRUE(platform.systemInfo.lookups.empty());
}

TEST_F(HostIdentity, NamesThatDifferInLetterCaseAndDoNotResolveAreTwoMachines) {
    EXPECT_FALSE(same("Office", "office"));
}

TEST_F(HostIdentity, OneSharedAddressMakesOneMachine) {
    know("a", {"10.0.0.1", "10.0.0.2"});
    know("b", {"10.0.0.3", "10.0.0.2"});
    know("c", {"10.0.0.4"});
    EXPECT_TRUE(same("a", "b"));
    EXPECT_FALSE(same("a", "c"));
    EXPECT_FALSE(same("a", "unknown"));
    EXPECT_FALSE(same("unknown", "a"));
}

TEST_F(HostIdentity, TheSecondNameIsResolvedForEachAddressOfTheFirst) {
    know("a", {"10.0.0.1", "10.0.0.2"});
    same("a", "c");
    EXPECT_EQ(platform.systemInfo.lookups, (Lines{"a", "c", "c"})); // deliberate
}

} // namespace
} // namespace quillmark

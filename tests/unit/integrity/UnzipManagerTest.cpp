#include "integrity/UnzipManager.h"
#include "support/FileFacts.h"
#include "support/OpenUnzipManager.h"
#include "support/ProcessSettings.h"
#include "support/TemporaryHome.h"
#include "support/ZipArchive.h"

#include <filesystem>
#include <new>
#include <unistd.h>

namespace {

/// The next allocations of so many bytes fail, where failing is allowed; none when 0.
size_t failingSize = 0;

} // namespace

void *operator new[](size_t size, const std::nothrow_t & /*tag*/) noexcept {
    try {
        return failingSize != 0 && size == failingSize ? nullptr : ::operator new[](size);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

namespace quillmark {
namespace {

namespace fs = std::filesystem;
using test::OpenUnzipManager;
using test::readAll;
using test::ZipArchive;
using test::ZipEntry;

/// Lines like "name: file contents".
using Tree = std::set<std::string>;

constexpr std::uint32_t kUnixLink = 0120777u << 16;

/// What lies at the path: "absent", "folder", "link to X" or a file's contents behind "file ".
std::string whatIsAt(const fs::path &path) {
    switch (fs::symlink_status(path).type()) {
    case fs::file_type::not_found:
        return "absent";
    case fs::file_type::symlink:
        return "link to " + (path.parent_path() / fs::read_symlink(path)).lexically_normal().string();
    case fs::file_type::directory:
        return "folder";
    default:
        return "file " + readAll(path.string());
    }
}

/// Everything below a folder.
Tree tree(const fs::path &folder) {
    Tree result;
    for (const auto &entry : fs::recursive_directory_iterator(folder)) {
        result.insert(entry.path().lexically_relative(folder).string() + ": " + whatIsAt(entry.path()));
    }
    return result;
}

/// The process with the rights of an ordinary user, for whom permissions count.
class OrdinaryUser {
public:
    OrdinaryUser() { EXPECT_TRUE(m_isRoot == false || ::seteuid(65534) == 0); }
    OrdinaryUser(const OrdinaryUser &) = delete;
    OrdinaryUser &operator=(const OrdinaryUser &) = delete;
    ~OrdinaryUser() { EXPECT_TRUE(m_isRoot == false || ::seteuid(0) == 0); }

private:
    bool m_isRoot = ::geteuid() == 0;
};

/// An archive in the folder "in", and a neighbour of that folder that must stay as it is.
class Unzip : public testing::Test {
protected:
    Unzip() {
        home.write("outside/file", "untouched");
        home.makeFolder("outside/folder");
        home.makeFolder("in");
    }
    void TearDown() override {
        EXPECT_EQ(tree(home.path("outside")), (Tree{"file: file untouched", "folder: folder"}));
        EXPECT_EQ(test::namesIn(home.path()), (std::set<std::string>{"in", "outside"}));
    }

    std::string archive(const std::string &bytes) const { return home.write("in/archive.zip", bytes); }
    std::string archive(std::initializer_list<ZipEntry> entries) const { return archive(ZipArchive(entries).bytes()); }
    int extract(std::initializer_list<ZipEntry> entries) const {
        return OpenUnzipManager(archive(entries)).extractAll();
    }
    /// The first entry's status.
    int statusOf(const ZipEntry &entry) const { return OpenUnzipManager(archive({entry})).extractCurrentFile(); }
    std::string in(const std::string &name) const { return home.path("in/" + name); }
    std::string at(const std::string &name) const { return whatIsAt(in(name)); }
    /// The folder's contents without the archive.
    Tree extracted() const {
        Tree all = tree(home.path("in"));
        std::erase_if(all, [](const std::string &line) { return line.starts_with("archive.zip: "); });
        return all;
    }
    void link(const std::string &target, const std::string &name) const { fs::create_symlink(target, in(name)); }
    mode_t modeOf(const std::string &name) const { return test::permissionsOf(in(name)); }

    test::TemporaryHome home;
};

TEST_F(Unzip, AFolderEntryCreatesTheFolderBesideTheArchive) {
    EXPECT_EQ(extract({{"folder/", {}}, {"folder/inner/", {}}}), 0);
    EXPECT_EQ(at("folder"), "folder");
    EXPECT_EQ(at("folder/inner"), "folder");
}

TEST_F(Unzip, FilesOfAllSizesAreExtractedStoredOrDeflated) {
    for (const std::uint16_t method : {std::uint16_t(0), std::uint16_t(8)}) {
        for (const size_t size : {0U, 1U, 8191U, 8192U, 8193U, 16384U, 70000U, 300000U}) {
            std::string contents(size, '\0');
            for (size_t i = 0; i < size; ++i) {
                contents[i] = static_cast<char>((i % 1000) * i >> 7);
            }
            EXPECT_EQ(statusOf({"file", contents, method}), 0);
            EXPECT_EQ(at("file"), "file " + contents) << size;
        }
    }
}

TEST_F(Unzip, EntriesOfSeveralFoldersMayBeMixed) {
    EXPECT_EQ(extract({{"a/", {}},
                       {"b/", {}},
                       {"a/1", "1"},
                       {"b/2", "2"},
                       {"3", "3"},
                       {"a/4", "4"},
                       {"./5", "5"},
                       {"a//6", "6"}}),
              0);
    EXPECT_EQ(extracted(), (Tree{"a: folder", "b: folder", "a/1: file 1", "b/2: file 2", "3: file 3", "a/4: file 4",
                                 "5: file 5", "a/6: file 6"}));
}

TEST_F(Unzip, MoreEntriesThanTheReaderKeepsInMemoryAreExtracted) {
    ZipArchive many;
    for (int i = 0; i < 2000; ++i) {
        many.add({"file with a rather long name, number " + std::to_string(i), std::to_string(i * 7), 0});
    }
    EXPECT_EQ(OpenUnzipManager(archive(many.bytes())).extractAll(), 0);
    EXPECT_EQ(extracted().size(), 2000U);
    EXPECT_EQ(at("file with a rather long name, number 1999"), "file 13993");
}

TEST_F(Unzip, AnExistingFileIsOverwrittenWithoutNotice) {
    home.write("in/file", "a long text that was there before");
    EXPECT_EQ(extract({{"file", "new"}}), 0);
    EXPECT_EQ(at("file"), "file new");
}

TEST_F(Unzip, AnExistingFolderIsNoError) {
    home.write("in/folder/old", "old");
    EXPECT_EQ(extract({{"folder/", {}}, {"folder/new", "new"}}), 0);
    EXPECT_EQ(at("folder/old"), "file old");
    EXPECT_EQ(at("folder/new"), "file new");
}

TEST_F(Unzip, OfTwoEntriesWithOneNameTheLastStays) {
    EXPECT_EQ(extract({{"file", "first and longer"}, {"file", "second"}}), 0);
    EXPECT_EQ(at("file"), "file second");
}

TEST_F(Unzip, FilesAndFoldersHaveThePermissionsThatTheMaskLeaves) {
    const std::uint32_t everything = 0107777u << 16; // set-user-ID and the like included
    for (const mode_t mask : {mode_t(022), mode_t(077), mode_t(0)}) {
        fs::remove_all(in("folder"));
        fs::remove(in("file"));
        const test::Mask masked(mask);
        EXPECT_EQ(extract({{.name = "folder/", .contents = {}, .externalAttributes = everything},
                           {.name = "file", .contents = "x", .externalAttributes = everything}}),
                  0);
        EXPECT_EQ(modeOf("folder"), 0775 & ~mask);
        EXPECT_EQ(modeOf("file"), 0666 & ~mask);
    }
}

TEST_F(Unzip, AnEntryThatIsASymbolicLinkBecomesAFile) {
    EXPECT_EQ(extract({{.name = "link", .contents = "../outside/file", .externalAttributes = kUnixLink},
                       {"link", "written over it"}}),
              0);
    EXPECT_EQ(at("link"), "file written over it");
}

// Where the archive lies

TEST_F(Unzip, TheFolderIsTheArchivesParent) {
    EXPECT_EQ(OpenUnzipManager("/a/b/c.zip").outputPath, "/a/b/");
    EXPECT_EQ(OpenUnzipManager("a/c.zip").outputPath, "a/");
    EXPECT_EQ(OpenUnzipManager("/c.zip").outputPath, "/");
    EXPECT_EQ(OpenUnzipManager("c.zip").outputPath, "./");
}

TEST_F(Unzip, AnArchiveInTheCurrentFolderIsExtractedThere) {
    archive({{"file", "x"}});
    const fs::path before = fs::current_path();
    fs::current_path(home.path("in"));
    EXPECT_EQ(OpenUnzipManager("archive.zip").extractAll(), 0);
    fs::current_path(before);
    EXPECT_EQ(at("file"), "file x");
}

TEST_F(Unzip, AnArchiveCanBeNamedBesideAnOpenFolder) {
    archive({{"folder/", {}}, {"folder/file", "x"}});
    const int folder = ::open(home.path("in").c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(folder, 0);
    EXPECT_EQ(OpenUnzipManager("/proc/self/fd/" + std::to_string(folder) + "/archive.zip").extractAll(), 0);
    ::close(folder);
    EXPECT_EQ(at("folder/file"), "file x");
}

TEST_F(Unzip, TheArchivesOwnFolderMayBeReachedThroughALink) {
    archive({{"file", "x"}});
    link(home.path("in"), "way");
    EXPECT_EQ(OpenUnzipManager(in("way/archive.zip")).extractAll(), 0);
    EXPECT_EQ(at("file"), "file x");
}

TEST_F(Unzip, NamesOutsideAsciiAreKept) {
    const std::string other = home.write("in/Grüße 日本.zip", ZipArchive({{"Äpfel 日本", "x"}}).bytes());
    EXPECT_EQ(OpenUnzipManager(other).extractAll(), 0);
    EXPECT_EQ(at("Äpfel 日本"), "file x");
}

TEST_F(Unzip, AnEntryWithTheArchivesOwnNameEndsItQuietly) {
    EXPECT_EQ(extract({{"archive.zip", "x"}, {"next", "y"}}), 0);
    EXPECT_EQ(at("archive.zip"), "file x");
}

// What is not an archive

TEST_F(Unzip, AMissingArchiveIsAParameterError) {
    EXPECT_EQ(UnzipManager(in("missing.zip")).extractAll(), UNZ_PARAMERROR);
    EXPECT_EQ(UnzipManager(std::string()).extractAll(), UNZ_PARAMERROR);
    EXPECT_EQ(UnzipManager("").extractAll(), UNZ_PARAMERROR);
    const std::string hidden = archive({{"file", "x"}}) + '\0' + "more";
    EXPECT_EQ(UnzipManager(hidden).extractAll(), UNZ_PARAMERROR);
}

TEST_F(Unzip, AnUnreadableArchiveIsAParameterError) {
    const std::string path = archive({{"file", "x"}});
    ASSERT_EQ(::chmod(path.c_str(), 0), 0);
    const OrdinaryUser user;
    EXPECT_EQ(UnzipManager(path).extractAll(), UNZ_PARAMERROR);
}

TEST_F(Unzip, WhatIsNoArchiveIsAParameterError) {
    for (const std::string &bytes :
         {std::string(), std::string("x"), std::string("PK\5\6"), std::string(100000, 'x')}) {
        EXPECT_EQ(UnzipManager(archive(bytes)).extractAll(), UNZ_PARAMERROR);
    }
    EXPECT_EQ(UnzipManager(home.path("in")).extractAll(), UNZ_PARAMERROR);
}

TEST_F(Unzip, ANamedPipeIsNoArchiveAndIsNotWaitedFor) {
    ASSERT_EQ(::mkfifo(in("pipe").c_str(), 0600), 0);
    EXPECT_EQ(UnzipManager(in("pipe")).extractAll(), UNZ_PARAMERROR);
    ::unlink(in("pipe").c_str());
}

TEST_F(Unzip, WithoutAnArchiveNoEntryIsThere) {
    EXPECT_EQ(OpenUnzipManager(in("missing.zip")).extractCurrentFile(), UNZ_PARAMERROR);
}

TEST_F(Unzip, AnArchiveWithoutEntriesIsWhatMinizipTakesItFor) { // nothing to do, or for older ones no archive
    for (const std::string &bytes : {ZipArchive().bytes(), ZipArchive().bytes(1)}) {
        OpenUnzipManager manager(archive(bytes));
        EXPECT_EQ(manager.extractAll(), manager.uf == nullptr ? UNZ_PARAMERROR : UNZ_OK);
        EXPECT_TRUE(extracted().empty());
    }
}

TEST_F(Unzip, AnArchiveCutAnywhereIsSurvived) {
    constexpr size_t kEndSize = 22;
    const std::string whole =
        ZipArchive({{"folder/", {}}, {"folder/file", std::string(3000, 'x')}, {"stored", "stored", 0}}).bytes();
    const size_t end = whole.size() - kEndSize;
    for (size_t length = 0; length < whole.size(); ++length) {
        const int status = OpenUnzipManager(archive(whole.substr(0, length))).extractAll();
        // What is missing of the record at the end counts as zeros, so that there are no entries.
        EXPECT_TRUE(status == UNZ_PARAMERROR || (status == 0 && length >= end + 4)) << length;
    }
    for (size_t length = 0; length < end; ++length) {
        const int status = OpenUnzipManager(archive(whole.substr(0, length) + whole.substr(end))).extractAll();
        EXPECT_TRUE(status == UNZ_PARAMERROR || status == 0) << length;
    }
    const std::set<std::string> known{"folder", "folder/file", "stored"};
    for (const std::string &line : extracted()) {
        EXPECT_TRUE(known.contains(line.substr(0, line.find(": ")))) << line;
    }
}

TEST_F(Unzip, TextBeforeAndAfterTheArchiveIsPassedOver) {
    const std::string whole = ZipArchive({{"file", "x"}}).bytes();
    EXPECT_EQ(OpenUnzipManager(archive("#!/bin/sh\n" + whole)).extractAll(), 0);
    EXPECT_EQ(at("file"), "file x");
}

// The walk

TEST_F(Unzip, TheWalkEndsAtTheFirstFailedEntryAndDeliberatelyDoesNotTell) {
    EXPECT_EQ(extract({{"first", "1"}, {.name = "wrong", .contents = "2", .checksum = 7}, {"third", "3"}}), 0);
    EXPECT_EQ(at("first"), "file 1");
    EXPECT_EQ(at("wrong"), "file 2");
    EXPECT_EQ(at("third"), "absent");
}

TEST_F(Unzip, AWrongChecksumIsTheEntrysStatus) {
    EXPECT_EQ(statusOf({.name = "wrong", .contents = "2", .checksum = 7}), UNZ_CRCERROR);
    EXPECT_EQ(statusOf({.name = "wrong", .contents = "2", .method = 0, .checksum = 7}), UNZ_CRCERROR);
}

TEST_F(Unzip, DamagedContentsAreTheEntrysStatus) {
    std::string bytes = ZipArchive({{"file", std::string(1000, 'x')}}).bytes();
    bytes.replace(bytes.find("file") + 4, 4, "\xff\xff\xff\xff");
    EXPECT_EQ(OpenUnzipManager(archive(bytes)).extractCurrentFile(), Z_DATA_ERROR);
}

TEST_F(Unzip, AnUnknownMethodLeavesTheTargetAlone) {
    home.write("in/file", "old");
    EXPECT_EQ(statusOf({.name = "file", .contents = "new", .method = 99}), UNZ_BADZIPFILE);
    EXPECT_EQ(at("file"), "file old");
    EXPECT_EQ(extract({{.name = "file", .contents = "new", .method = 99}, {"next", "y"}}), 0);
    EXPECT_EQ(at("next"), "absent");
}

TEST_F(Unzip, AnEncryptedEntryIsAFailedOne) {
    const auto encrypted = std::string(200, '\xa5');
    EXPECT_NE(statusOf({.name = "secret", .contents = encrypted, .method = 0, .flags = 1, .checksum = 7}), 0);
    EXPECT_EQ(
        extract({{.name = "secret", .contents = encrypted, .method = 0, .flags = 1, .checksum = 7}, {"next", "y"}}), 0);
    EXPECT_EQ(at("next"), "absent");
}

TEST_F(Unzip, NoMoreIsWrittenThanAnEntryDeclares) {
    const auto bomb = std::string(1 << 22, '\0');
    EXPECT_NE(statusOf({.name = "bomb", .contents = bomb, .size = 10}), 0);
    EXPECT_EQ(at("bomb"), "file " + std::string(10, '\0'));
}

TEST_F(Unzip, ASizeThatIsDeclaredAndNotThereIsAFailure) {
    EXPECT_NE(
        statusOf({.name = "stored", .contents = "abc", .method = 0, .packedSize = 0xfffffffe, .size = 0xfffffffe}), 0);
    EXPECT_LT(fs::file_size(in("stored")), 1000U);
    EXPECT_EQ(statusOf({.name = "packed", .contents = "abc", .size = 0xfffffffe}), 0); // ends where the contents end
    EXPECT_EQ(at("packed"), "file abc");
}

TEST_F(Unzip, ALongSizeThatIsDeclaredAndNotThereIsAFailure) {
    std::string extra("\1\0\x10\0", 4); // both sizes as numbers of eight bytes
    extra += std::string(7, '\xff') + '\x0f' + std::string(7, '\xff') + '\x0f';
    EXPECT_NE(statusOf({.name = "huge",
                        .contents = "abc",
                        .method = 0,
                        .packedSize = 0xffffffff,
                        .size = 0xffffffff,
                        .extra = extra}),
              0);
    EXPECT_LT(fs::file_size(in("huge")), 1000U);
}

TEST_F(Unzip, AnEntryCountThatLiesIsSurvived) {
    EXPECT_EQ(OpenUnzipManager(archive(ZipArchive{{"1", "1"}, {"2", "2"}}.bytes(500))).extractAll(), 0);
    EXPECT_EQ(extracted().size(), 2U);
    EXPECT_EQ(OpenUnzipManager(archive(ZipArchive{{"3", "3"}, {"4", "4"}}.bytes(1))).extractAll(), 0);
    EXPECT_EQ(at("3"), "file 3");
    EXPECT_EQ(at("4"), "absent");
}

// Files that can't be made

TEST_F(Unzip, AFileBeforeItsFoldersDeliberatelyBecomesAFolder) {
    EXPECT_EQ(extract({{"a/b/file", "lost"}, {"a/b/", {}}, {"a/b/next", "kept"}}), 0);
    EXPECT_EQ(extracted(), (Tree{"a: folder", "a/b: folder", "a/b/file: folder", "a/b/next: file kept"}));
}

TEST_F(Unzip, AFileBeforeItsFoldersDeliberatelyHasTheStatusOfAGoodEntry) {
    EXPECT_EQ(statusOf({"a/file", "lost"}), 0);
    EXPECT_EQ(at("a/file"), "folder");
}

TEST_F(Unzip, AFolderInAFilesPlaceDeliberatelySkipsTheFile) {
    home.makeFolder("in/file");
    EXPECT_EQ(extract({{"file", "lost"}, {"next", "kept"}}), 0);
    EXPECT_EQ(at("file"), "folder");
    EXPECT_EQ(at("next"), "file kept");
}

TEST_F(Unzip, AFileInAFoldersPlaceStays) {
    home.write("in/a", "stays");
    EXPECT_EQ(extract({{"a/", {}}, {"a/file", "lost"}, {"a/b/file", "lost"}, {"next", "kept"}}), 0);
    EXPECT_EQ(extracted(), (Tree{"a: file stays", "next: file kept"}));
}

TEST_F(Unzip, APipeInAFilesPlaceIsNotWaitedFor) {
    ASSERT_EQ(::mkfifo(in("pipe").c_str(), 0600), 0);
    EXPECT_EQ(extract({{"pipe", "lost"}, {"next", "kept"}}), 0);
    EXPECT_EQ(at("next"), "file kept");
    ::unlink(in("pipe").c_str());
}

TEST_F(Unzip, InAReadOnlyFolderEveryFileIsDeliberatelySkipped) {
    home.write("in/folder/file", "old");
    const std::string path =
        archive({{"new", "lost"}, {"folder/file", "lost"}, {"folder/other", "lost"}, {"x/", {}}, {"x/y/z", "lost"}});
    for (const char *name : {".", "in", "in/folder", "in/folder/file"}) {
        ASSERT_EQ(::chmod(home.path(name).c_str(), 0555), 0);
    }
    {
        const OrdinaryUser user;
        EXPECT_EQ(OpenUnzipManager(path).extractAll(), 0);
    }
    for (const char *name : {".", "in", "in/folder"}) {
        ASSERT_EQ(::chmod(home.path(name).c_str(), 0755), 0);
    }
    EXPECT_EQ(extracted(), (Tree{"folder: folder", "folder/file: file old"}));
}

TEST_F(Unzip, AShortWriteIsTheEntrysStatusAndEndsTheWalk) {
    const std::string path = archive({{"large", std::string(20000, 'x')}, {"next", "y"}});
    {
        const test::Limit low(RLIMIT_FSIZE, 10000);
        EXPECT_EQ(OpenUnzipManager(path).extractCurrentFile(), -1);
        EXPECT_EQ(OpenUnzipManager(path).extractAll(), 0);
    }
    EXPECT_EQ(at("large"), "file " + std::string(10000, 'x'));
    EXPECT_EQ(at("next"), "absent");
}

TEST_F(Unzip, WithoutMemoryForItsBufferAnEntryIsAnInternalError) {
    OpenUnzipManager manager(archive({{"file", "x"}}));
    failingSize = 8192;
    const int status = manager.extractCurrentFile();
    failingSize = 0;
    EXPECT_EQ(status, UNZ_INTERNALERROR);
    EXPECT_EQ(at("file"), "absent");
    EXPECT_EQ(manager.extractCurrentFile(), 0);
}

// Names

TEST_F(Unzip, ANameOf255BytesIsWhole) {
    const std::string name(255, 'n');
    EXPECT_EQ(statusOf({name, "x"}), 0);
    EXPECT_EQ(at(name), "file x");
}

TEST_F(Unzip, LongerNamesAreDeliberatelyCut) {
    for (const size_t length : {256U, 300U, 2000U}) {
        const std::string name(length, 'n');
        const std::string contents = std::to_string(length);
        EXPECT_EQ(statusOf({name, contents}), 0);
        EXPECT_EQ(extracted().size(), 1U);
        EXPECT_EQ(at(name.substr(0, 255)), "file " + contents);
    }
    const std::string inFolder = "folder/" + std::string(300, 'n');
    EXPECT_EQ(extract({{"folder/", {}}, {inFolder, "y"}}), 0);
    EXPECT_EQ(at(inFolder.substr(0, 255)), "file y");
}

TEST_F(Unzip, ANameEndsAtAZeroByte) {
    EXPECT_EQ(statusOf({std::string("ab\0/../cd", 9), "x"}), 0);
    EXPECT_EQ(extracted(), (Tree{"ab: file x"}));
}

TEST_F(Unzip, AnEmptyNameIsTheArchivesFolderItself) {
    EXPECT_EQ(extract({{"", "x"}, {"./", {}}, {std::string("\0a", 2), "x"}, {"next", "y"}}), 0);
    EXPECT_EQ(extracted(), (Tree{"next: file y"}));
}

TEST_F(Unzip, ABackslashIsAnOrdinaryCharacterOfFilesDeliberately) {
    EXPECT_EQ(extract({{"a\\b", "x"}, {"folder\\", {}}}), 0);
    EXPECT_EQ(extracted(), (Tree{"a\\b: file x", "folder\\: folder"}));
}

TEST_F(Unzip, ABackslashSeparatesFoldersThatAreMissingDeliberately) {
    EXPECT_EQ(statusOf({"a\\b/c", "lost"}), 0);
    EXPECT_EQ(extracted(), (Tree{"a: folder", "a\\b: folder", "a\\b/c: folder"}));
}

TEST_F(Unzip, DotsThatLeadNowhereElseAreNames) {
    EXPECT_EQ(extract({{"..a", "1"}, {"b..", "2"}, {"...", "3"}, {".hidden", "4"}, {"a:b/", {}}, {"12:30", "5"}}), 0);
    EXPECT_EQ(at("..a"), "file 1");
    EXPECT_EQ(at("b.."), "file 2");
    EXPECT_EQ(at("..."), "file 3");
    EXPECT_EQ(at(".hidden"), "file 4");
}

class HostileNames : public Unzip, public testing::WithParamInterface<const char *> {};

TEST_P(HostileNames, AreRefusedAndEndTheWalk) {
    std::string name(GetParam());
    if (const size_t at = name.find("HOME"); at != std::string::npos) {
        name.replace(at, 4, home.path());
    }
    home.makeFolder("in/a");
    for (const char *end : {"", "/", "\\"}) {
        const auto whole = name + end;
        EXPECT_EQ(statusOf({whole, "x"}), UNZ_BADZIPFILE) << name << end;
        EXPECT_EQ(extract({{"before", "1"}, {whole, "x"}, {"after", "2"}}), 0);
        EXPECT_EQ(extracted(), (Tree{"a: folder", "before: file 1"}));
    }
}

INSTANTIATE_TEST_SUITE_P(NamesThatWouldLeave, HostileNames,
                         testing::Values("../outside/new", "../outside/file", "../new", "..", "a/../../outside/new",
                                         "a/../b", "./../outside/new", "a/..", "a//..//..//outside/new",
                                         "HOME/outside/new", "HOME/outside/file", "//HOME/outside/new", "/", "/new",
                                         "..\\outside\\new", "a\\..\\..\\outside\\new", "a/..\\..\\new", "a\\../new",
                                         "\\new", "\\\\server\\share", "C:\\new", "C:/new", "c:new", "Z:"));

// Links that stand in the way

class Links : public Unzip {
protected:
    /// Each of the entries is refused, and nothing changes.
    void expectRefused(std::initializer_list<const char *> names) {
        const auto before = extracted();
        for (const char *name : names) {
            EXPECT_EQ(statusOf({name, "x"}), UNZ_BADZIPFILE) << name;
            EXPECT_EQ(extracted(), before);
            EXPECT_EQ(extract({{name, "x"}, {"after", "y"}}), 0);
            EXPECT_EQ(extracted(), before);
        }
    }
};

TEST_F(Links, InAFilesPlaceAreNotFollowed) {
    link("../outside/file", "file");
    expectRefused({"file"});
}

TEST_F(Links, ToNothingAreNotFollowed) {
    link("../outside/new", "file");
    expectRefused({"file", "file/", "file/x"});
}

TEST_F(Links, InAFoldersPlaceAreNotFollowed) {
    link("../outside", "folder");
    expectRefused({"folder/", "folder//", "folder", "folder/new", "folder/file", "folder/new/", "folder/folder/new",
                   "folder/no/such/folder", "./folder/new"});
}

TEST_F(Links, FurtherDownAreNotFollowed) {
    home.makeFolder("in/a/b");
    link("../../../outside", "a/b/c");
    expectRefused({"a/b/c/new", "a/b/c/folder/new", "a/b/c/", "a/b/c"});
}

TEST_F(Links, ToPlacesInsideAreRefusedToo) {
    home.write("in/target/file", "stays");
    link("target", "folder");
    link("target/file", "file");
    expectRefused({"folder/new", "file"});
}

TEST_F(Links, InCirclesAreNotFollowed) {
    link("circle", "circle");
    expectRefused({"circle", "circle/new"});
}

TEST_F(Links, AreRefusedBehindAnEntryOfTheFolderAbove) {
    home.makeFolder("in/a");
    link("../../outside", "a/b");
    EXPECT_EQ(extract({{"a/1", "1"}, {"a/b/new", "x"}, {"after", "y"}}), 0);
    EXPECT_EQ(at("a/1"), "file 1");
    EXPECT_EQ(at("after"), "absent");
}

TEST_F(Links, ToFoldersAreNotFollowedWhereABackslashSeparates) {
    link("../outside", "folder");
    EXPECT_EQ(statusOf({"folder\\new/file", "x"}), 0);
    EXPECT_EQ(at("folder"), "link to " + home.path("outside"));
}

// The parts

TEST_F(Unzip, TheArchiveItselfDeliberatelyStaysOpen) {
    void *handle = nullptr;
    {
        class Manager : public UnzipManager {
        public:
            using UnzipManager::uf;
            using UnzipManager::UnzipManager;
        } manager(archive({{"file", "x"}}));
        handle = manager.uf;
        ASSERT_EQ(unzOpenCurrentFile(handle), UNZ_OK);
    }
    EXPECT_EQ(unzGoToFirstFile(handle), UNZ_OK);
    char byte = 0;
    EXPECT_EQ(unzReadCurrentFile(handle, &byte, 1), UNZ_PARAMERROR) << "the entry is closed";
    EXPECT_EQ(unzClose(handle), UNZ_OK);
}

TEST_F(Unzip, OneFolderIsMadeWithItsOwnErrors) {
    OpenUnzipManager manager(archive({{"entry", "x"}}));
    EXPECT_EQ(manager.mymkdir("folder"), 0);
    EXPECT_EQ(manager.mymkdir("folder"), -1);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(manager.mymkdir("folder/inner/"), 0);
    EXPECT_EQ(manager.mymkdir("no/inner"), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(manager.mymkdir(""), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(manager.mymkdir("../outside/new"), -1);
    EXPECT_EQ(manager.mymkdir(".."), -1);
}

TEST_F(Unzip, FoldersAreMadeWithAllAboveThem) {
    OpenUnzipManager manager(archive({{"entry", "x"}}));
    EXPECT_EQ(manager.makedir(""), 0);
    EXPECT_EQ(manager.makedir("/"), 1);
    EXPECT_EQ(manager.makedir("a"), 1);
    EXPECT_EQ(manager.makedir("a"), 1);
    EXPECT_EQ(manager.makedir("a/b/c/"), 1);
    EXPECT_EQ(manager.makedir("d\\e/f"), 1);
    EXPECT_EQ(extracted(),
              (Tree{"a: folder", "a/b: folder", "a/b/c: folder", "d: folder", "d\\e: folder", "d\\e/f: folder"}));
}

TEST_F(Unzip, FoldersBelowOneThatCannotBeMadeAreNotMade) {
    OpenUnzipManager manager(archive({{"entry", "x"}}));
    ASSERT_EQ(::chmod(home.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(home.path("in").c_str(), 0555), 0);
    {
        const OrdinaryUser user;
        EXPECT_EQ(manager.makedir("a/b"), 0);
    }
    ASSERT_EQ(::chmod(home.path("in").c_str(), 0755), 0); // so that it can be deleted
}

} // namespace
} // namespace quillmark

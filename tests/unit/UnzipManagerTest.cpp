#include "integrity/UnzipManager.h"
#include "support/OpenUnzipManager.h"
#include "support/QtPrinters.h"
#include "support/TemporaryHome.h"
#include "support/ZipArchive.h"

#include <QDirIterator>
#include <QMap>
#include <csignal>
#include <fcntl.h>
#include <new>
#include <sys/resource.h>
#include <sys/stat.h>
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

using test::OpenUnzipManager;
using test::readAll;
using test::ZipArchive;
using test::ZipEntry;

constexpr quint32 kUnixLink = 0120777u << 16;

QByteArray nativePath(const QString &path) { return QFile::encodeName(path); }

/// What lies at the path: "absent", "folder", "link to X" or a file's contents behind "file ".
QByteArray whatIsAt(const QString &path) {
    struct stat attributes {};
    if (::lstat(nativePath(path).constData(), &attributes) != 0) {
        return "absent";
    }
    if (S_ISLNK(attributes.st_mode)) {
        return "link to " + nativePath(QFile::symLinkTarget(path));
    }
    return S_ISDIR(attributes.st_mode) ? QByteArray("folder") : "file " + readAll(path);
}

/// Everything below a folder.
QMap<QString, QByteArray> tree(const QString &folder) {
    QMap<QString, QByteArray> result;
    QDirIterator walk(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const QString path = walk.next();
        result.insert(path.mid(folder.size() + 1), whatIsAt(path));
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

/// The process with another mask of permissions.
class Mask {
public:
    explicit Mask(mode_t mask) : m_previous(::umask(mask)) {}
    Mask(const Mask &) = delete;
    Mask &operator=(const Mask &) = delete;
    ~Mask() { ::umask(m_previous); }

private:
    mode_t m_previous;
};

/// An archive in the folder "in", and a neighbour of that folder that must stay as it is.
class Unzip : public testing::Test {
protected:
    Unzip() {
        home.write(QStringLiteral("outside/file"), "untouched");
        home.makeFolder(QStringLiteral("outside/folder"));
        home.makeFolder(QStringLiteral("in"));
    }
    void TearDown() override {
        EXPECT_EQ(tree(home.path(QStringLiteral("outside"))), (QMap<QString, QByteArray>{
                                                                  {QStringLiteral("file"), "file untouched"},
                                                                  {QStringLiteral("folder"), "folder"},
                                                              }));
        EXPECT_EQ(QDir(home.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
                  (QStringList{QStringLiteral("in"), QStringLiteral("outside")}));
    }

    QString archive(const QByteArray &bytes) const { return home.write(QStringLiteral("in/archive.zip"), bytes); }
    QString archive(std::initializer_list<ZipEntry> entries) const { return archive(ZipArchive(entries).bytes()); }
    int extract(std::initializer_list<ZipEntry> entries) const {
        return OpenUnzipManager(archive(entries)).extractAll();
    }
    /// The first entry's status.
    int statusOf(const ZipEntry &entry) const { return OpenUnzipManager(archive({entry})).extractCurrentFile(); }
    QString in(const QString &name) const { return home.path(QStringLiteral("in/") + name); }
    QByteArray at(const char *name) const { return whatIsAt(in(QString::fromUtf8(name))); }
    /// The folder's contents without the archive.
    QMap<QString, QByteArray> extracted() const {
        auto all = tree(home.path(QStringLiteral("in")));
        all.remove(QStringLiteral("archive.zip"));
        return all;
    }
    void link(const char *target, const char *name) const {
        EXPECT_EQ(::symlink(target, nativePath(in(QString::fromUtf8(name))).constData()), 0);
    }
    mode_t modeOf(const char *name) const {
        struct stat attributes {};
        EXPECT_EQ(::stat(nativePath(in(QString::fromUtf8(name))).constData(), &attributes), 0);
        return attributes.st_mode & 07777;
    }

    test::TemporaryHome home;
};

TEST_F(Unzip, AFolderEntryCreatesTheFolderBesideTheArchive) {
    EXPECT_EQ(extract({{"folder/", {}}, {"folder/inner/", {}}}), 0);
    EXPECT_EQ(at("folder"), "folder");
    EXPECT_EQ(at("folder/inner"), "folder");
}

TEST_F(Unzip, FilesOfAllSizesAreExtractedStoredOrDeflated) {
    for (const quint16 method : {quint16(0), quint16(8)}) {
        for (const int size : {0, 1, 8191, 8192, 8193, 16384, 70000, 300000}) {
            QByteArray contents(size, '\0');
            for (int i = 0; i < size; ++i) {
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
    EXPECT_EQ(extracted(), (QMap<QString, QByteArray>{{QStringLiteral("a"), "folder"},
                                                      {QStringLiteral("b"), "folder"},
                                                      {QStringLiteral("a/1"), "file 1"},
                                                      {QStringLiteral("b/2"), "file 2"},
                                                      {QStringLiteral("3"), "file 3"},
                                                      {QStringLiteral("a/4"), "file 4"},
                                                      {QStringLiteral("5"), "file 5"},
                                                      {QStringLiteral("a/6"), "file 6"}}));
}

TEST_F(Unzip, MoreEntriesThanTheReaderKeepsInMemoryAreExtracted) {
    ZipArchive many;
    for (int i = 0; i < 2000; ++i) {
        many.add({"file with a rather long name, number " + QByteArray::number(i), QByteArray::number(i * 7), 0});
    }
    EXPECT_EQ(OpenUnzipManager(archive(many.bytes())).extractAll(), 0);
    EXPECT_EQ(extracted().size(), 2000);
    EXPECT_EQ(at("file with a rather long name, number 1999"), "file 13993");
}

TEST_F(Unzip, AnExistingFileIsOverwrittenWithoutNotice) {
    home.write(QStringLiteral("in/file"), "a long text that was there before");
    EXPECT_EQ(extract({{"file", "new"}}), 0);
    EXPECT_EQ(at("file"), "file new");
}

TEST_F(Unzip, AnExistingFolderIsNoError) {
    home.write(QStringLiteral("in/folder/old"), "old");
    EXPECT_EQ(extract({{"folder/", {}}, {"folder/new", "new"}}), 0);
    EXPECT_EQ(at("folder/old"), "file old");
    EXPECT_EQ(at("folder/new"), "file new");
}

TEST_F(Unzip, OfTwoEntriesWithOneNameTheLastStays) {
    EXPECT_EQ(extract({{"file", "first and longer"}, {"file", "second"}}), 0);
    EXPECT_EQ(at("file"), "file second");
}

TEST_F(Unzip, FilesAndFoldersHaveThePermissionsThatTheMaskLeaves) {
    const quint32 everything = 0107777u << 16; // set-user-ID and the like included
    for (const mode_t mask : {mode_t(022), mode_t(077), mode_t(0)}) {
        QDir(in(QStringLiteral("folder"))).removeRecursively();
        QFile::remove(in(QStringLiteral("file")));
        const Mask masked(mask);
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
    EXPECT_EQ(OpenUnzipManager(QStringLiteral("/a/b/c.zip")).outputPath, QStringLiteral("/a/b/"));
    EXPECT_EQ(OpenUnzipManager(QStringLiteral("a/c.zip")).outputPath, QStringLiteral("a/"));
    EXPECT_EQ(OpenUnzipManager(QStringLiteral("/c.zip")).outputPath, QStringLiteral("/"));
    EXPECT_EQ(OpenUnzipManager(QStringLiteral("c.zip")).outputPath, QStringLiteral("./"));
}

TEST_F(Unzip, AnArchiveInTheCurrentFolderIsExtractedThere) {
    archive({{"file", "x"}});
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(home.path(QStringLiteral("in"))));
    EXPECT_EQ(OpenUnzipManager(QStringLiteral("archive.zip")).extractAll(), 0);
    QDir::setCurrent(before);
    EXPECT_EQ(at("file"), "file x");
}

TEST_F(Unzip, AnArchiveCanBeNamedBesideAnOpenFolder) {
    archive({{"folder/", {}}, {"folder/file", "x"}});
    const int folder = ::open(nativePath(home.path(QStringLiteral("in"))).constData(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(folder, 0);
    EXPECT_EQ(OpenUnzipManager(QStringLiteral("/proc/self/fd/%1/archive.zip").arg(folder)).extractAll(), 0);
    ::close(folder);
    EXPECT_EQ(at("folder/file"), "file x");
}

TEST_F(Unzip, TheArchivesOwnFolderMayBeReachedThroughALink) {
    archive({{"file", "x"}});
    link(nativePath(home.path(QStringLiteral("in"))).constData(), "way");
    EXPECT_EQ(OpenUnzipManager(in(QStringLiteral("way/archive.zip"))).extractAll(), 0);
    EXPECT_EQ(at("file"), "file x");
}

TEST_F(Unzip, NamesOutsideAsciiAreKept) {
    const QString other = home.write(QStringLiteral("in/Grüße 日本.zip"), ZipArchive({{"Äpfel 日本", "x"}}).bytes());
    EXPECT_EQ(OpenUnzipManager(other).extractAll(), 0);
    EXPECT_EQ(at("Äpfel 日本"), "file x");
}

TEST_F(Unzip, AnEntryWithTheArchivesOwnNameEndsItQuietly) {
    EXPECT_EQ(extract({{"archive.zip", "x"}, {"next", "y"}}), 0);
    EXPECT_EQ(at("archive.zip"), "file x");
}

// Archives that are none

TEST_F(Unzip, AMissingArchiveIsAParameterError) {
    EXPECT_EQ(UnzipManager(in(QStringLiteral("missing.zip"))).extractAll(), UNZ_PARAMERROR);
    EXPECT_EQ(UnzipManager(QString()).extractAll(), UNZ_PARAMERROR);
    EXPECT_EQ(UnzipManager(QStringLiteral("")).extractAll(), UNZ_PARAMERROR);
    const QString hidden = archive({{"file", "x"}}) + QChar(0) + QStringLiteral("more");
    EXPECT_EQ(UnzipManager(hidden).extractAll(), UNZ_PARAMERROR);
}

TEST_F(Unzip, AnUnreadableArchiveIsAParameterError) {
    const QString path = archive({{"file", "x"}});
    ASSERT_EQ(::chmod(nativePath(path).constData(), 0), 0);
    const OrdinaryUser user;
    EXPECT_EQ(UnzipManager(path).extractAll(), UNZ_PARAMERROR);
}

TEST_F(Unzip, WhatIsNoArchiveIsAParameterError) {
    for (const QByteArray &bytes : {QByteArray(), QByteArray("x"), QByteArray("PK\5\6"), QByteArray(100000, 'x')}) {
        EXPECT_EQ(UnzipManager(archive(bytes)).extractAll(), UNZ_PARAMERROR);
    }
    EXPECT_EQ(UnzipManager(home.path(QStringLiteral("in"))).extractAll(), UNZ_PARAMERROR);
}

TEST_F(Unzip, ANamedPipeIsNoArchiveAndIsNotWaitedFor) {
    ASSERT_EQ(::mkfifo(nativePath(in(QStringLiteral("pipe"))).constData(), 0600), 0);
    EXPECT_EQ(UnzipManager(in(QStringLiteral("pipe"))).extractAll(), UNZ_PARAMERROR);
    QFile::remove(in(QStringLiteral("pipe")));
}

TEST_F(Unzip, WithoutAnArchiveNoEntryIsThere) {
    EXPECT_EQ(OpenUnzipManager(in(QStringLiteral("missing.zip"))).extractCurrentFile(), UNZ_PARAMERROR);
}

TEST_F(Unzip, AnArchiveWithoutEntriesIsWhatMinizipTakesItFor) { // nothing to do, or for older ones no archive
    for (const QByteArray &bytes : {ZipArchive().bytes(), ZipArchive().bytes(1)}) {
        OpenUnzipManager manager(archive(bytes));
        EXPECT_EQ(manager.extractAll(), manager.uf == nullptr ? UNZ_PARAMERROR : UNZ_OK);
        EXPECT_TRUE(extracted().isEmpty());
    }
}

TEST_F(Unzip, AnArchiveCutAnywhereIsSurvived) {
    constexpr qsizetype kEndSize = 22;
    const QByteArray whole =
        ZipArchive({{"folder/", {}}, {"folder/file", QByteArray(3000, 'x')}, {"stored", "stored", 0}}).bytes();
    const qsizetype end = whole.size() - kEndSize;
    for (qsizetype length = 0; length < whole.size(); ++length) {
        const int status = OpenUnzipManager(archive(whole.first(length))).extractAll();
        // What is missing of the record at the end counts as zeros, so that there are no entries.
        EXPECT_TRUE(status == UNZ_PARAMERROR || (status == 0 && length >= end + 4)) << length;
    }
    for (qsizetype length = 0; length < end; ++length) {
        const int status = OpenUnzipManager(archive(whole.first(length) + whole.last(kEndSize))).extractAll();
        EXPECT_TRUE(status == UNZ_PARAMERROR || status == 0) << length;
    }
    const QStringList known{QStringLiteral("folder"), QStringLiteral("folder/file"), QStringLiteral("stored")};
    for (const QString &name : extracted().keys()) {
        EXPECT_TRUE(known.contains(name)) << name.toStdString();
    }
}

TEST_F(Unzip, TextBeforeAndAfterTheArchiveIsPassedOver) {
    const QByteArray whole = ZipArchive({{"file", "x"}}).bytes();
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
    QByteArray bytes = ZipArchive({{"file", QByteArray(1000, 'x')}}).bytes();
    bytes.replace(bytes.indexOf("file") + 4, 4, "\xff\xff\xff\xff");
    EXPECT_EQ(OpenUnzipManager(archive(bytes)).extractCurrentFile(), Z_DATA_ERROR);
}

TEST_F(Unzip, AnUnknownMethodLeavesTheTargetAlone) {
    home.write(QStringLiteral("in/file"), "old");
    EXPECT_EQ(statusOf({.name = "file", .contents = "new", .method = 99}), UNZ_BADZIPFILE);
    EXPECT_EQ(at("file"), "file old");
    EXPECT_EQ(extract({{.name = "file", .contents = "new", .method = 99}, {"next", "y"}}), 0);
    EXPECT_EQ(at("next"), "absent");
}

TEST_F(Unzip, AnEncryptedEntryIsAFailedOne) {
    const QByteArray encrypted(200, '\xa5');
    EXPECT_NE(statusOf({.name = "secret", .contents = encrypted, .method = 0, .flags = 1, .checksum = 7}), 0);
    EXPECT_EQ(
        extract({{.name = "secret", .contents = encrypted, .method = 0, .flags = 1, .checksum = 7}, {"next", "y"}}), 0);
    EXPECT_EQ(at("next"), "absent");
}

TEST_F(Unzip, NoMoreIsWrittenThanAnEntryDeclares) {
    const QByteArray bomb(1 << 22, '\0');
    EXPECT_NE(statusOf({.name = "bomb", .contents = bomb, .size = 10}), 0);
    EXPECT_EQ(at("bomb"), "file " + QByteArray(10, '\0'));
}

TEST_F(Unzip, ASizeThatIsDeclaredAndNotThereIsAFailure) {
    EXPECT_NE(
        statusOf({.name = "stored", .contents = "abc", .method = 0, .packedSize = 0xfffffffe, .size = 0xfffffffe}), 0);
    EXPECT_LT(QFileInfo(in(QStringLiteral("stored"))).size(), 1000);
    EXPECT_EQ(statusOf({.name = "packed", .contents = "abc", .size = 0xfffffffe}), 0); // ends where the contents end
    EXPECT_EQ(at("packed"), "file abc");
}

TEST_F(Unzip, ALongSizeThatIsDeclaredAndNotThereIsAFailure) {
    QByteArray extra("\1\0\x10\0", 4); // both sizes as numbers of eight bytes
    extra += QByteArray(7, '\xff') + '\x0f' + QByteArray(7, '\xff') + '\x0f';
    EXPECT_NE(statusOf({.name = "huge",
                        .contents = "abc",
                        .method = 0,
                        .packedSize = 0xffffffff,
                        .size = 0xffffffff,
                        .extra = extra}),
              0);
    EXPECT_LT(QFileInfo(in(QStringLiteral("huge"))).size(), 1000);
}

TEST_F(Unzip, AnEntryCountThatLiesIsSurvived) {
    const ZipArchive two{{"1", "1"}, {"2", "2"}};
    EXPECT_EQ(OpenUnzipManager(archive(two.bytes(500))).extractAll(), 0);
    EXPECT_EQ(extracted().size(), 2);
    EXPECT_EQ(OpenUnzipManager(archive(ZipArchive{{"3", "3"}, {"4", "4"}}.bytes(1))).extractAll(), 0);
    EXPECT_EQ(at("3"), "file 3");
    EXPECT_EQ(at("4"), "absent");
}

// Files that can't be made

TEST_F(Unzip, AFileBeforeItsFoldersDeliberatelyBecomesAFolder) {
    EXPECT_EQ(extract({{"a/b/file", "lost"}, {"a/b/", {}}, {"a/b/next", "kept"}}), 0);
    EXPECT_EQ(extracted(), (QMap<QString, QByteArray>{{QStringLiteral("a"), "folder"},
                                                      {QStringLiteral("a/b"), "folder"},
                                                      {QStringLiteral("a/b/file"), "folder"},
                                                      {QStringLiteral("a/b/next"), "file kept"}}));
}

TEST_F(Unzip, AFileBeforeItsFoldersDeliberatelyHasTheStatusOfAGoodEntry) {
    EXPECT_EQ(statusOf({"a/file", "lost"}), 0);
    EXPECT_EQ(at("a/file"), "folder");
}

TEST_F(Unzip, AFolderInAFilesPlaceDeliberatelySkipsTheFile) {
    home.makeFolder(QStringLiteral("in/file"));
    EXPECT_EQ(extract({{"file", "lost"}, {"next", "kept"}}), 0);
    EXPECT_EQ(at("file"), "folder");
    EXPECT_EQ(at("next"), "file kept");
}

TEST_F(Unzip, AFileInAFoldersPlaceStays) {
    home.write(QStringLiteral("in/a"), "stays");
    EXPECT_EQ(extract({{"a/", {}}, {"a/file", "lost"}, {"a/b/file", "lost"}, {"next", "kept"}}), 0);
    EXPECT_EQ(extracted(),
              (QMap<QString, QByteArray>{{QStringLiteral("a"), "file stays"}, {QStringLiteral("next"), "file kept"}}));
}

TEST_F(Unzip, APipeInAFilesPlaceIsNotWaitedFor) {
    ASSERT_EQ(::mkfifo(nativePath(in(QStringLiteral("pipe"))).constData(), 0600), 0);
    EXPECT_EQ(extract({{"pipe", "lost"}, {"next", "kept"}}), 0);
    EXPECT_EQ(at("next"), "file kept");
    QFile::remove(in(QStringLiteral("pipe")));
}

TEST_F(Unzip, InAReadOnlyFolderEveryFileIsDeliberatelySkipped) {
    home.write(QStringLiteral("in/folder/file"), "old");
    const QString path =
        archive({{"new", "lost"}, {"folder/file", "lost"}, {"folder/other", "lost"}, {"x/", {}}, {"x/y/z", "lost"}});
    for (const char *name : {".", "in", "in/folder", "in/folder/file"}) {
        ASSERT_EQ(::chmod(nativePath(home.path(QString::fromUtf8(name))).constData(), 0555), 0);
    }
    {
        const OrdinaryUser user;
        EXPECT_EQ(OpenUnzipManager(path).extractAll(), 0);
    }
    for (const char *name : {".", "in", "in/folder"}) {
        ASSERT_EQ(::chmod(nativePath(home.path(QString::fromUtf8(name))).constData(), 0755), 0);
    }
    EXPECT_EQ(extracted(), (QMap<QString, QByteArray>{{QStringLiteral("folder"), "folder"},
                                                      {QStringLiteral("folder/file"), "file old"}}));
}

TEST_F(Unzip, AShortWriteIsTheEntrysStatusAndEndsTheWalk) {
    const QString path = archive({{"large", QByteArray(20000, 'x')}, {"next", "y"}});
    struct rlimit previous {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &previous), 0);
    const struct rlimit low { 10000, previous.rlim_max };
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &low), 0);
    const int entry = OpenUnzipManager(path).extractCurrentFile();
    const int all = OpenUnzipManager(path).extractAll();
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &previous), 0);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(entry, -1);
    EXPECT_EQ(all, 0);
    EXPECT_EQ(at("large"), "file " + QByteArray(10000, 'x'));
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
    const QByteArray name(255, 'n');
    EXPECT_EQ(statusOf({name, "x"}), 0);
    EXPECT_EQ(at(name.constData()), "file x");
}

TEST_F(Unzip, LongerNamesAreDeliberatelyCut) {
    for (const int length : {256, 300, 2000}) {
        const QByteArray name(length, 'n');
        EXPECT_EQ(statusOf({name, QByteArray::number(length)}), 0);
        EXPECT_EQ(extracted().size(), 1);
        EXPECT_EQ(at(name.first(255).constData()), "file " + QByteArray::number(length));
    }
    const QByteArray inFolder = "folder/" + QByteArray(300, 'n');
    EXPECT_EQ(extract({{"folder/", {}}, {inFolder, "y"}}), 0);
    EXPECT_EQ(at(inFolder.first(255).constData()), "file y");
}

TEST_F(Unzip, ANameEndsAtAZeroByte) {
    EXPECT_EQ(statusOf({QByteArray("ab\0/../cd", 9), "x"}), 0);
    EXPECT_EQ(extracted(), (QMap<QString, QByteArray>{{QStringLiteral("ab"), "file x"}}));
}

TEST_F(Unzip, AnEmptyNameIsTheArchivesFolderItself) {
    EXPECT_EQ(extract({{"", "x"}, {"./", {}}, {QByteArray("\0a", 2), "x"}, {"next", "y"}}), 0);
    EXPECT_EQ(extracted(), (QMap<QString, QByteArray>{{QStringLiteral("next"), "file y"}}));
}

TEST_F(Unzip, ABackslashIsAnOrdinaryCharacterOfFilesDeliberately) {
    EXPECT_EQ(extract({{"a\\b", "x"}, {"folder\\", {}}}), 0);
    EXPECT_EQ(extracted(),
              (QMap<QString, QByteArray>{{QStringLiteral("a\\b"), "file x"}, {QStringLiteral("folder\\"), "folder"}}));
}

TEST_F(Unzip, ABackslashSeparatesFoldersThatAreMissingDeliberately) {
    EXPECT_EQ(statusOf({"a\\b/c", "lost"}), 0);
    EXPECT_EQ(extracted(), (QMap<QString, QByteArray>{{QStringLiteral("a"), "folder"},
                                                      {QStringLiteral("a\\b"), "folder"},
                                                      {QStringLiteral("a\\b/c"), "folder"}}));
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
    QByteArray name(GetParam());
    name.replace("HOME", nativePath(home.path()));
    home.makeFolder(QStringLiteral("in/a"));
    for (const char *end : {"", "/", "\\"}) {
        EXPECT_EQ(statusOf({name + end, "x"}), UNZ_BADZIPFILE) << name.constData() << end;
        EXPECT_EQ(extract({{"before", "1"}, {name + end, "x"}, {"after", "2"}}), 0);
        EXPECT_EQ(extracted(),
                  (QMap<QString, QByteArray>{{QStringLiteral("a"), "folder"}, {QStringLiteral("before"), "file 1"}}));
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
    /// The entry is refused, and nothing changes.
    void expectRefused(const QByteArray &name) {
        const auto before = extracted();
        EXPECT_EQ(statusOf({name, "x"}), UNZ_BADZIPFILE) << name.constData();
        EXPECT_EQ(extracted(), before);
        EXPECT_EQ(extract({{name, "x"}, {"after", "y"}}), 0);
        EXPECT_EQ(extracted(), before);
    }
};

TEST_F(Links, InAFilesPlaceAreNotFollowed) {
    link("../outside/file", "file");
    expectRefused("file");
}

TEST_F(Links, ToNothingAreNotFollowed) {
    link("../outside/new", "file");
    expectRefused("file");
    expectRefused("file/");
    expectRefused("file/x");
}

TEST_F(Links, InAFoldersPlaceAreNotFollowed) {
    link("../outside", "folder");
    expectRefused("folder/");
    expectRefused("folder//");
    expectRefused("folder");
    expectRefused("folder/new");
    expectRefused("folder/file");
    expectRefused("folder/new/");
    expectRefused("folder/folder/new");
    expectRefused("folder/no/such/folder");
    expectRefused("./folder/new");
}

TEST_F(Links, FurtherDownAreNotFollowed) {
    home.makeFolder(QStringLiteral("in/a/b"));
    link("../../../outside", "a/b/c");
    expectRefused("a/b/c/new");
    expectRefused("a/b/c/folder/new");
    expectRefused("a/b/c/");
    expectRefused("a/b/c");
}

TEST_F(Links, ToPlacesInsideAreRefusedToo) {
    home.write(QStringLiteral("in/target/file"), "stays");
    link("target", "folder");
    link("target/file", "file");
    expectRefused("folder/new");
    expectRefused("file");
}

TEST_F(Links, InCirclesAreNotFollowed) {
    link("circle", "circle");
    expectRefused("circle");
    expectRefused("circle/new");
}

TEST_F(Links, AreRefusedBehindAnEntryOfTheFolderAbove) {
    home.makeFolder(QStringLiteral("in/a"));
    link("../../outside", "a/b");
    EXPECT_EQ(extract({{"a/1", "1"}, {"a/b/new", "x"}, {"after", "y"}}), 0);
    EXPECT_EQ(at("a/1"), "file 1");
    EXPECT_EQ(at("after"), "absent");
}

TEST_F(Links, ToFoldersAreNotFollowedWhereABackslashSeparates) {
    link("../outside", "folder");
    EXPECT_EQ(statusOf({"folder\\new/file", "x"}), 0);
    EXPECT_EQ(at("folder"), "link to " + nativePath(home.path(QStringLiteral("outside"))));
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
    EXPECT_EQ(extracted().keys(), (QStringList{QStringLiteral("a"), QStringLiteral("a/b"), QStringLiteral("a/b/c"),
                                               QStringLiteral("d"), QStringLiteral("d\\e"), QStringLiteral("d\\e/f")}));
}

TEST_F(Unzip, FoldersBelowOneThatCannotBeMadeAreNotMade) {
    OpenUnzipManager manager(archive({{"entry", "x"}}));
    ASSERT_EQ(::chmod(nativePath(home.path()).constData(), 0755), 0);
    ASSERT_EQ(::chmod(nativePath(home.path(QStringLiteral("in"))).constData(), 0555), 0);
    {
        const OrdinaryUser user;
        EXPECT_EQ(manager.makedir("a/b"), 0);
    }
    ASSERT_EQ(::chmod(nativePath(home.path(QStringLiteral("in"))).constData(), 0755), 0); // so that it can be deleted
}

} // namespace
} // namespace quillmark

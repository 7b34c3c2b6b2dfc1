#include "platform/linux/update_archive.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "harness/forked_process.h"
#include "harness/random.h"
#include "harness/temporary_folder.h"
#include "platform/linux/update_maker.h"
#include "platform/posix/file_descriptor.h"

namespace brimwatch {
namespace {

namespace fs = std::filesystem;
using Kind = test::ArchiveEntry::Kind;
using Entries = std::vector<test::ArchiveEntry>;

class UpdateArchive : public ::testing::Test {
  protected:
    void SetUp() override { fs::create_directory(inside()); }

    // A folder in another one, in which whatever leaves it would be seen.
    std::string inside() const { return folder_.file("inside"); }

    tl::expected<void, UnpackFailure> unpackBytes(const std::string& bytes,
                                                  const UnpackLimits& limits = {}) {
        const FileDescriptor archive(::memfd_create("archive", MFD_CLOEXEC));
        EXPECT_EQ(::write(archive.get(), bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
        ::lseek(archive.get(), 0, SEEK_SET);
        const FileDescriptor folder(::open(inside().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        return unpackArchive(archive.get(), folder.get(), isCancelled_, limits);
    }
    bool unpack(const Entries& entries, const UnpackLimits& limits = {}) {
        return unpackBytes(test::makeArchive(entries), limits).has_value();
    }
    // Refused as it is, with nothing outside of the folder.
    void expectRefused(const Entries& entries) {
        fs::remove_all(inside());
        fs::create_directory(inside());
        const auto result = unpackBytes(test::makeArchive(entries));
        ASSERT_FALSE(result) << entries.back().path << " " << entries.back().content;
        EXPECT_EQ(result.error(), UnpackFailure::archive) << entries.back().path;
        EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()),
                  1);
    }
    std::string content(const std::string& path) const {
        return test::readFile(inside() + '/' + path);
    }
    mode_t mode(const std::string& path) const {
        struct stat status {};
        EXPECT_EQ(::lstat((inside() + '/' + path).c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, ::getuid());
        return status.st_mode & 07777U;
    }

    test::TemporaryFolder folder_;
    std::atomic<bool> isCancelled_ = false;
};

TEST_F(UpdateArchive, GivesFilesFoldersAndLinks) {
    ASSERT_TRUE(unpack({{.path = "a/b/c", .content = "deep"},
                        {.path = "empty", .kind = Kind::folder, .mode = 0755},
                        {.path = "a/nothing"},
                        {.path = "./a//./plain", .content = "plain"},
                        {.path = "a/link", .content = "../empty", .kind = Kind::symbolicLink},
                        {.path = "large", .content = std::string(1'000'000, 'x')}}));
    EXPECT_EQ(content("a/b/c"), "deep");
    EXPECT_TRUE(fs::is_directory(inside() + "/empty"));
    EXPECT_EQ(content("a/nothing"), "");
    EXPECT_EQ(content("a/plain"), "plain");
    EXPECT_EQ(fs::read_symlink(inside() + "/a/link"), "../empty");
    EXPECT_EQ(content("large").size(), 1'000'000U);
}

TEST_F(UpdateArchive, MayBeCompressedInOneOfThreeWaysOrNone) {
    using test::Compression;
    int number = 0;
    for (const Compression compression :
         {Compression::none, Compression::gzip, Compression::xz, Compression::zstd}) {
        const std::string name = "file" + std::to_string(number++);
        EXPECT_TRUE(unpackBytes(test::makeArchive({{.path = name, .content = "x"}}, compression)));
        EXPECT_EQ(content(name), "x");
    }
    EXPECT_FALSE(
        unpackBytes(test::makeArchive({{.path = "b", .content = "x"}}, Compression::bzip2)));
}

TEST_F(UpdateArchive, ModesAreThoseOfProgramsAndFilesWhateverTheUmask) {
    const mode_t former = ::umask(0077);
    const bool isUnpacked = unpack({{.path = "a/program", .mode = 0700},
                                    {.path = "a/everything", .mode = 07777},
                                    {.path = "a/other", .mode = 0001},
                                    {.path = "a/secret", .mode = 0600},
                                    {.path = "a/none", .mode = 0},
                                    {.path = "a/writable", .mode = 0666}});
    ::umask(former);
    ASSERT_TRUE(isUnpacked);
    for (const char* program : {"a/program", "a/everything", "a/other"})
        EXPECT_EQ(mode(program), 0755U) << program;
    for (const char* file : {"a/secret", "a/none", "a/writable"})
        EXPECT_EQ(mode(file), 0644U) << file;
}

TEST_F(UpdateArchive, APathThatLeavesTheFolderIsRefused) {
    for (const char* path :
         {"../out", "a/../../out", "a/../b", "/out", "//out", "..", "a/..", "/", "./../out"})
        expectRefused({{.path = path, .content = "x"}});
}

TEST_F(UpdateArchive, AFileIsNoFolderAndHasAName) {
    expectRefused({{.path = ".", .content = "x"}});
    expectRefused({{.path = "a", .content = "x"}, {.path = "a/b", .content = "x"}});
    expectRefused({{.path = std::string(1025, 'x'), .content = "x"}});
}

TEST_F(UpdateArchive, ANameTwiceIsRefused) {
    expectRefused({{.path = "a", .content = "x"}, {.path = "a", .content = "y"}});
    expectRefused(
        {{.path = "a", .content = "x"}, {.path = "a", .content = "b", .kind = Kind::symbolicLink}});
    expectRefused({{.path = "a/b"}, {.path = "a", .content = "y"}});
    EXPECT_TRUE(unpack({{.path = "f/a"}, {.path = "f", .kind = Kind::folder}, {.path = "f/b"}}));
}

TEST_F(UpdateArchive, ALinkThatLeavesTheFolderIsRefused) {
    for (const char* target : {"/etc/passwd", "../../out", "..", "../..", "b/../../..", "b/..",
                               "../../../x", "", "../b/../../..", "./../.."})
        expectRefused({{.path = "a/link", .content = target, .kind = Kind::symbolicLink}});
    expectRefused({{.path = "link", .content = "../x", .kind = Kind::symbolicLink}});
}

TEST_F(UpdateArchive, ALinkMayClimbAsFarAsTheFolder) {
    EXPECT_TRUE(unpack({{.path = "a/b/l1", .content = "../../c", .kind = Kind::symbolicLink},
                        {.path = "a/l2", .content = "b/x", .kind = Kind::symbolicLink},
                        {.path = "l3", .content = ".", .kind = Kind::symbolicLink}}));
}

TEST_F(UpdateArchive, NothingIsWrittenThroughALink) {
    expectRefused({{.path = "real/file"},
                   {.path = "link", .content = "real", .kind = Kind::symbolicLink},
                   {.path = "link/other", .content = "x"}});
    expectRefused({{.path = "link", .content = "real", .kind = Kind::symbolicLink},
                   {.path = "link", .content = "x"}});
    expectRefused({{.path = "link", .content = "real", .kind = Kind::symbolicLink},
                   {.path = "link", .kind = Kind::folder}});
}

TEST_F(UpdateArchive, DevicesPipesAndHardLinksAreRefused) {
    expectRefused({{.path = "device", .kind = Kind::device}});
    expectRefused({{.path = "pipe", .kind = Kind::pipe}});
    expectRefused(
        {{.path = "a", .content = "x"}, {.path = "b", .content = "a", .kind = Kind::hardLink}});
    expectRefused({{.path = "b", .content = "/etc/passwd", .kind = Kind::hardLink}});
}

TEST_F(UpdateArchive, IsHeldToItsLimits) {
    const Entries two = {{.path = "a", .content = "12345"}, {.path = "b", .content = "67890"}};
    EXPECT_FALSE(unpack(two, {.bytes = 9}));
    fs::remove_all(inside());
    fs::create_directory(inside());
    EXPECT_FALSE(unpack(two, {.bytes = 10, .entries = 1}));
    fs::remove_all(inside());
    fs::create_directory(inside());
    EXPECT_TRUE(unpack(two, {.bytes = 10, .entries = 2}));
}

TEST_F(UpdateArchive, ThatIsCutShortOrDamagedIsRefused) {
    const std::string whole = test::makeArchive({{.path = "a", .content = std::string(500, 'x')},
                                                 {.path = "b", .content = std::string(500, 'y')}});
    for (const std::size_t length :
         {std::size_t{0}, std::size_t{1}, std::size_t{10}, whole.size() / 2, whole.size() - 12}) {
        fs::remove_all(inside());
        fs::create_directory(inside());
        EXPECT_FALSE(unpackBytes(whole.substr(0, length)) && test::exists(inside() + "/b") &&
                     length > 0)
            << length;
    }
    EXPECT_FALSE(unpackBytes("this is no archive"));
    EXPECT_FALSE(unpackBytes(std::string(20'000, '\xff')));
}

TEST_F(UpdateArchive, StopsWhenItIsCancelled) {
    isCancelled_ = true;
    const auto result = unpackBytes(test::makeArchive({{.path = "a", .content = "x"}}));
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), UnpackFailure::cancelled);
    EXPECT_FALSE(test::exists(inside() + "/a"));
}

TEST_F(UpdateArchive, TellsOfADiskThatIsFull) {
    const std::string archive =
        test::makeArchive({{.path = "a", .content = std::string(100'000, 'x')}});
    int status = 0;
    const pid_t child = ::fork();
    if (child == 0) {
        ::signal(SIGXFSZ, SIG_IGN);
        const FileDescriptor file(::memfd_create("archive", MFD_CLOEXEC));
        const bool isWritten = ::write(file.get(), archive.data(), archive.size()) > 0;
        ::lseek(file.get(), 0, SEEK_SET);
        const rlimit limit{.rlim_cur = 50'000, .rlim_max = 50'000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        const FileDescriptor folder(::open(inside().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        const auto result = unpackArchive(file.get(), folder.get(), isCancelled_);
        ::_exit(isWritten && !result && result.error() == UnpackFailure::disk ? 7 : 1);
    }
    ::waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST_F(UpdateArchive, SurvivesAnyBytesInItsPlace) {
    const test::FoldersInMemory quick;
    test::Random random;
    SCOPED_TRACE(random.trace());
    const std::string good = test::makeArchive(test::entriesOf("57"), test::Compression::none);
    for (int round = 0; round < 300; ++round) {
        std::string bytes = good;
        for (int change = 0; change < 5; ++change)
            bytes[random.below(4096)] = static_cast<char>(random.below(256));
        fs::remove_all(inside());
        fs::create_directory(inside());
        static_cast<void>(unpackBytes(bytes));
        EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()),
                  1);
    }
}

}  // namespace
}  // namespace brimwatch

#include "contract/SavedFiles.h"

#include "platform/linux/system/AtomicFile.h"
#include "platform/linux/system/MachineFilesLinux.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillox {

namespace {

    struct stat statusOf(const std::filesystem::path& path)
    {
        struct stat status { };
        EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
        return status;
    }

    TEST(MachineFilesTest, NewFilesGetWhatTheyAreGivenAndOldOnesKeepWhatTheyHave)
    {
        const TemporaryFolder folder;
        MachineFilesLinux files(folder.path);
        const auto mask = ::umask(0077);
        EXPECT_EQ(files.write("/etc/a.d/zz.conf", "one\n", {}), "");
        ::umask(mask);
        const auto path = folder.path / "etc/a.d/zz.conf";
        EXPECT_EQ(statusOf(path).st_mode & 07777, 0644U);
        EXPECT_EQ(statusOf(path.parent_path()).st_mode & 07777, 0755U);

        ::chmod(path.c_str(), 0640);
        const bool isRoot = ::chown(path.c_str(), 12, 34) == 0;
        EXPECT_EQ(files.write("/etc/a.d/zz.conf", "two", {}), "");
        EXPECT_EQ(files.write("/etc/kept", "one\n", { 0600, "/etc/a.d/zz.conf" }), "");
        for (const auto& file : { path, folder.path / "etc/kept" }) {
            EXPECT_EQ(statusOf(file).st_mode & 07777, 0640U) << file;
            EXPECT_EQ(statusOf(file).st_uid, isRoot ? 12U : ::getuid()) << file;
        }
        EXPECT_EQ(files.read("/etc/a.d/zz.conf").text, "two");
        EXPECT_EQ(files.read("/etc/kept").text, "one\n");
        EXPECT_EQ(files.remove("/etc/kept"), "");
        EXPECT_FALSE(files.exists("/etc/kept"));
        EXPECT_EQ(files.remove("/etc/kept"), "/etc/kept: No such file or directory");
    }

    TEST(MachineFilesTest, TellsMissingFromUnreadableAndLeavesNothingBehindAFailure)
    {
        const TemporaryFolder folder;
        MachineFilesLinux files(folder.path);
        EXPECT_EQ(files.read("/etc/none").text, std::nullopt);
        EXPECT_EQ(files.read("/etc/none").failure, "");
        put(folder.path / "etc/file", "");
        std::filesystem::create_directory(folder.path / "etc/folder");
        EXPECT_NE(files.read("/etc/folder").failure, "");
        EXPECT_NE(files.write("/etc/file/below", "x", {}), "");
        EXPECT_NE(files.write("/etc/copy", "x", { 0600, "/etc/none" }), "");
        EXPECT_FALSE(files.exists("/etc/copy"));
        std::filesystem::create_symlink("/lib/x.service", folder.path / "etc/link");
        EXPECT_EQ(files.linkTarget("/etc/link"), "/lib/x.service");
        EXPECT_EQ(files.linkTarget("/etc/file"), std::nullopt);
        EXPECT_EQ(files.userNumber("root"), 0U);
        EXPECT_EQ(files.userNumber("no such user"), std::nullopt);
    }

} // namespace

} // namespace quillox

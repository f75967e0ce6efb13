#include "update/UpdateBed.h"

#include "fakes/FakeSystemLog.h"
#include "platform/linux/launcher/Launcher.h"
#include "platform/linux/system/RunLoopGlib.h"
#include "platform/linux/update/InstallationFolders.h"
#include "platform/linux/update/UnpackArchive.h"
#include "resilience/update/UpdateTrial.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <elf.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>

#include <algorithm>
#include <set>

namespace quillox {

namespace {

    namespace fs = std::filesystem;

    const std::atomic<bool> goOn = false;

    TEST(UnpackArchiveTest, TakesPlainFilesBelowItsFolderAndNothingElse)
    {
        struct Row {
            const char* python; ///< Adds to `tar`; `add(name, type, linkname, bytes)` helps.
            const char* failure; ///< None when it is to succeed.
        };
        constexpr auto notOurs
            = "the archive holds something else than files and folders of its own";
        const Row rows[] {
            { "add('a/b/c'); add('./d'); add('e', tarfile.DIRTYPE)", nullptr },
            { "add('../evil')", notOurs },
            { "add('a/../../evil')", notOurs },
            { "add('/tmp/quillox-evil')", notOurs },
            { "add('link', tarfile.SYMTYPE, '/etc'); add('link/evil')", notOurs },
            { "add('a'); add('hard', tarfile.LNKTYPE, 'a')", notOurs },
            { "add('null', tarfile.CHRTYPE)", notOurs },
            { "add('pipe', tarfile.FIFOTYPE)", notOurs },
            { "add('a'); add('a')", "File exists" },
            { "add('a'); add('a/b')", "Not a directory" },
        };
        for (const auto& row : rows) {
            const TemporaryFolder folder;
            const auto archive = (folder.path / "archive").string();
            const auto target = folder.path / "target";
            fs::create_directory(target);
            const auto script = fmt::format(R"(
import io, tarfile
def add(name, type=tarfile.REGTYPE, linkname=''):
    entry = tarfile.TarInfo(name)
    entry.type, entry.linkname, entry.mode, entry.size = type, linkname, 0o6755, 3
    if type != tarfile.REGTYPE: entry.size = 0
    tar.addfile(entry, io.BytesIO(b'abc'))
with tarfile.open('{}', 'w:gz') as tar:
    {}
)",
                archive, row.python);
            put(folder.path / "make.py", script);
            ASSERT_EQ(
                std::system(("/usr/bin/python3 " + (folder.path / "make.py").string()).c_str()), 0);
            const auto failure = unpackArchive(archive, target.string(), goOn);
            if (row.failure) {
                ASSERT_TRUE(failure) << row.python;
                EXPECT_NE(failure->find(row.failure), std::string::npos) << *failure;
                EXPECT_FALSE(fs::exists(folder.path / "evil") || fs::exists("/tmp/quillox-evil"));
                continue;
            }
            EXPECT_EQ(failure, std::nullopt);
            EXPECT_EQ(contentsOf(target / "a/b/c"), "abc");
            // Neither set-user-id nor writable by others.
            EXPECT_EQ(fs::status(target / "d").permissions(), fs::perms(0755));
        }
        const TemporaryFolder folder;
        put(folder.path / "archive", "no archive");
        EXPECT_TRUE(unpackArchive((folder.path / "archive").string(), folder.path.string(), goOn));
    }

    /// Installs 1.1.0 in the way of the updater.
    bool install(const VersionFolders& folders, const std::string& archive)
    {
        const Version next { 1, 1, 0 };
        UpdateNotes notes;
        if (stageArchive(folders, archive, next, goOn))
            return false;
        notes.staged = next;
        return !folders.writeNotes(notes.text())
            && !folders.writeNotes(UpdateTrial::begun(notes, next, { 1, 0, 0 }).text())
            && !folders.makeCurrent(next);
    }

    /// What leaves a trace on the disk.
    bool isStep(std::uint64_t call)
    {
        static const std::set<std::uint64_t> steps { SYS_openat, SYS_write, SYS_pwrite64, SYS_fsync,
            SYS_mkdir, SYS_rename, SYS_unlink, SYS_unlinkat, SYS_symlink, SYS_fchmod };
        return steps.contains(call);
    }

    /// Runs `work` in another process and kills it at its `last`th step. False when it had ended
    /// before.
    bool killAtStep(int last, const std::function<void()>& work)
    {
        const auto child = ::fork();
        if (child == 0) {
            ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            ::raise(SIGSTOP);
            work();
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
        for (int steps = 0;;) {
            ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
            if (::waitpid(child, &status, 0) != child || !WIFSTOPPED(status))
                return false;
            __ptrace_syscall_info info {};
            ::ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info);
            if (info.op == PTRACE_SYSCALL_INFO_ENTRY && isStep(info.entry.nr) && ++steps == last)
                break;
        }
        ::kill(child, SIGKILL);
        ::waitpid(child, &status, 0);
        return true;
    }

    TEST(InstallationFoldersTest, KilledAtAnyStepTheOldOrTheNewVersionStarts)
    {
        const UpdateBed bed;
        bed.makeProgram(bed.folder.path / "tree", "1.1.0");
        bed.release("keys {0}/key >/dev/null");
        bed.release("publish --key {0}/key --version 1.1.0 --feed {0}/feed {0}/tree");
        const auto original = bed.folder.path / "feed/quillox-1.1.0.tar.gz";
        const auto archive = bed.folder.path / "archive";
        const auto pristine = bed.folder.path / "pristine";
        fs::copy(bed.folders.root(), pristine,
            fs::copy_options::recursive | fs::copy_options::copy_symlinks);
        const auto start = [&bed] {
            EXPECT_EQ(std::system(("DISPLAY=:0 " + bed.folders.launcher()).c_str()), 0);
            return bed.takeTrace();
        };
        std::map<std::string, int> started;
        int step = 1;
        for (;; ++step) {
            fs::remove_all(bed.folders.root());
            fs::copy(pristine, bed.folders.root(),
                fs::copy_options::recursive | fs::copy_options::copy_symlinks);
            fs::copy_file(original, archive, fs::copy_options::overwrite_existing);
            const bool wasKilled
                = killAtStep(step, [&] { install(bed.folders, archive.string()); });
            const auto trace = start();
            ASSERT_TRUE(trace == "1.0.0 " || trace == "1.1.0 ") << step << ": " << trace;
            ASSERT_EQ(bed.folders.current()->text() + " ", trace) << step;
            ++started[trace];
            if (!wasKilled)
                break;
            // What is left behind is in nobody's way.
            fs::copy_file(original, archive, fs::copy_options::overwrite_existing);
            ASSERT_TRUE(install(bed.folders, archive.string())) << step;
            ASSERT_EQ(start(), "1.1.0 ") << step;
        }
        EXPECT_GT(step, 20);
        EXPECT_GT(started["1.0.0 "], 10);
        EXPECT_GT(started["1.1.0 "], 1);
    }

    TEST(InstallationFoldersTest, OnlyAnInstallationOfThisUsersOwnMaintainsItself)
    {
        const UpdateBed bed;
        const auto program = bed.folders.programOf({ 1, 0, 0 });
        const auto place = InstallationFolders::find(program);
        ASSERT_TRUE(place);
        EXPECT_EQ(place->root, bed.folders.root());
        EXPECT_EQ(place->version.text(), "1.0.0");
        EXPECT_FALSE(InstallationFolders::find("/usr/bin/quillox"));
        EXPECT_FALSE(InstallationFolders::find(bed.folders.launcher()));
        EXPECT_FALSE(InstallationFolders::find(bed.folders.folderOf({ 1, 0, 0 }) + "/other"));
        fs::remove(bed.folders.launcher());
        EXPECT_FALSE(InstallationFolders::find(program));
    }

    TEST(InstallationFoldersTest, OldVersionsGoButTheRunningAndTheKeptOnes)
    {
        const UpdateBed bed;
        for (const auto* version : { "0.8.0", "0.9.0", "1.1.0", "1.2.0" })
            bed.makeProgram(bed.folders.folderOf(*Version::parse(version)), version);
        ASSERT_EQ(bed.folders.makeCurrent({ 1, 2, 0 }), std::nullopt);
        RunLoopGlib runLoop;
        InstallationFolders installation({ bed.folders.root(), { 1, 1, 0 } }, runLoop);
        installation.keepOnly({ { 1, 0, 0 } });
        const auto left = [&] { return bed.folders.versions().size(); };
        const auto deadline = runLoop.monotonicNow() + std::chrono::seconds(20);
        while (left() != 3 && runLoop.monotonicNow() < deadline)
            g_main_context_iteration(nullptr, FALSE);
        EXPECT_EQ(bed.folders.versions(),
            (std::vector<Version> { { 1, 2, 0 }, { 1, 1, 0 }, { 1, 0, 0 } }));
    }

} // namespace

} // namespace quillox

#include "platform/linux/launcher/Launcher.h"

#include "platform/linux/launcher/NotifyRelay.h"
#include "ports/SystemLog.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fmt/format.h>
#include <string>

namespace quillox {

namespace {

    using Clock = std::chrono::steady_clock;
    using namespace std::chrono_literals;

    constexpr auto watcherVariable = "QUILLOX_LAUNCHER"; ///< The process that watches this one.
    constexpr std::chrono::seconds patienceForEnd { 5 };
    constexpr std::chrono::hours longWait { 1 }; ///< For what a signal tells anyway.
    constexpr int exitCannotStart = 127;

    sigset_t watchedSignals()
    {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int number : { SIGCHLD, SIGTERM, SIGINT, SIGHUP })
            sigaddset(&signals, number);
        return signals;
    }

    bool isWatched()
    {
        const auto* watcher = std::getenv(watcherVariable);
        return watcher && std::to_string(::getppid()) == watcher;
    }

    /// The next of the watched signals that waits; 0 when none does.
    int takeSignal()
    {
        const auto signals = watchedSignals();
        const timespec atOnce {};
        return std::max(::sigtimedwait(&signals, nullptr, &atOnce), 0);
    }

    /// Ends this process as its child ended, so that whoever watches this one knows.
    int imitate(int status)
    {
        if (!WIFSIGNALED(status))
            return WEXITSTATUS(status);
        const rlimit none { 0, 0 }; // The child has left a core file, if one was wanted.
        ::setrlimit(RLIMIT_CORE, &none);
        ::signal(WTERMSIG(status), SIG_DFL);
        sigset_t signals;
        sigemptyset(&signals);
        ::sigprocmask(SIG_SETMASK, &signals, nullptr);
        ::raise(WTERMSIG(status));
        return 128 + WTERMSIG(status);
    }

    /// Until then, a watched signal or something to pass on, which is done.
    void waitUntil(Clock::time_point time, const NotifyRelay& relay)
    {
        const auto signals = watchedSignals();
        const FileDescriptor signal(::signalfd(-1, &signals, SFD_CLOEXEC));
        std::array<pollfd, 2> waiting { pollfd { signal.get(), POLLIN, 0 },
            pollfd { relay.descriptor(), POLLIN, 0 } };
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(time - Clock::now());
        ::poll(waiting.data(), waiting.size(), static_cast<int>(std::max(left, 0ms).count()));
        if (waiting[1].revents != 0)
            relay.passOn();
    }

    void executeProgram(const std::string& program, char** argv)
    {
        auto* const name = argv[0];
        argv[0] = const_cast<char*>(program.c_str());
        ::execv(program.c_str(), argv);
        argv[0] = name;
    }

} // namespace

Launcher::Launcher(VersionFolders folders, SystemLog& log, std::chrono::milliseconds patience)
    : m_folders(std::move(folders))
    , m_log(log)
    , m_patience(patience)
{
}

int Launcher::run(char** argv)
{
    if (isWatched())
        return exitAgain;
    while (mayWatch(argv)) {
        const auto present = notes();
        if (!present.trial)
            return execute(argv);
        if (UpdateTrial::isOver(present) || !m_folders.hasVersion(present.trial->version)) {
            rollBack(present);
            continue;
        }
        if (int exitCode = 0; watch(argv, present, exitCode))
            return exitCode;
    }
    return execute(argv);
}

/// A command line, a machine without a display and a second start while another launcher watches
/// say nothing about the version.
bool Launcher::mayWatch(char** argv)
{
    if (m_hasGivenUp || argv[1] || (!std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY")))
        return false;
    if (m_lock)
        return true;
    ::mkdir(m_folders.updateFolder().c_str(), S_IRWXU);
    FileDescriptor lock(
        ::open(m_folders.lockPath().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!lock || ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0)
        return false;
    m_lock = std::move(lock);
    return true;
}

UpdateNotes Launcher::notes() const
{
    auto notes = UpdateNotes::parse(m_folders.notes());
    // On a disk that is full, counting goes on here.
    if (notes.trial && m_lastTrial && notes.trial->version == m_lastTrial->version)
        notes.trial->starts = std::max(notes.trial->starts, m_lastTrial->starts);
    return notes;
}

void Launcher::rollBack(const UpdateNotes& present)
{
    const auto& trial = *present.trial;
    // The deed before the note: in between, the trial would only be lost once more.
    const auto failure = m_folders.hasVersion(trial.previous)
        ? m_folders.makeCurrent(trial.previous)
        : VersionFolders::Failure("the version before it is gone");
    const auto unnoted = m_folders.writeNotes(UpdateTrial::rolledBack(present).text());
    m_log.write(fmt::format("Quillox: version {} does not work; {} is back{}.",
        trial.version.text(), trial.previous.text(),
        failure       ? " not: " + *failure
            : unnoted ? ", and that could not be noted: " + *unnoted
                      : ""));
    m_hasGivenUp = unnoted.has_value(); // Not again and again.
}

/// Whether the start has come to its end; otherwise another one follows.
bool Launcher::watch(char** argv, const UpdateNotes& before, int& exitCode)
{
    // Also where the installation ended between its note and its deed.
    if (m_folders.current() != before.trial->version)
        m_folders.makeCurrent(before.trial->version);
    const auto started = UpdateTrial::started(before);
    m_lastTrial = started.trial;
    if (const auto failure = m_folders.writeNotes(started.text()))
        m_log.write(fmt::format("Quillox: a start could not be noted: {}.", *failure));

    const auto signals = watchedSignals();
    sigset_t unblocked;
    ::sigprocmask(SIG_BLOCK, &signals, &unblocked);
    const NotifyRelay relay;
    const auto child = startBeside(m_folders.programOf(before.trial->version), argv, relay);
    const auto end = child > 0 ? waitFor(child, relay) : End { .status = exitCannotStart << 8 };
    ::sigprocmask(SIG_SETMASK, &unblocked, nullptr);
    return !isToGoOn(end, exitCode);
}

bool Launcher::isToGoOn(const End& end, int& exitCode)
{
    const bool isAgain = WIFEXITED(end.status) && WEXITSTATUS(end.status) == exitAgain;
    const auto present = notes();
    // The last: it has just made it when it was told to end.
    if (isAgain || (end.isSilent && !present.trial))
        return true;
    const bool isWell = end.isWished || (WIFEXITED(end.status) && WEXITSTATUS(end.status) == 0);
    const auto ending = end.isSilent ? UpdateTrial::Ending::Silent
        : isWell                     ? UpdateTrial::Ending::Well
                                     : UpdateTrial::Ending::Crashed;
    switch (UpdateTrial::judge(present, ending)) {
    case UpdateTrial::Verdict::Undecided:
        if (isWell && present.trial)
            m_folders.writeNotes(UpdateTrial::endedWell(present).text());
        exitCode = imitate(end.status);
        return false;
    case UpdateTrial::Verdict::RollBack:
        rollBack(present);
        return true;
    case UpdateTrial::Verdict::Again:
        return true;
    }
    return true;
}

pid_t Launcher::startBeside(const std::string& program, char** argv, const NotifyRelay& relay)
{
    const auto self = ::getpid();
    const auto watcher = std::to_string(self);
    const auto child = ::fork();
    if (child != 0)
        return child;
    // Whoever ends this process by force means the program.
    if (::prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || ::getppid() != self)
        ::_exit(exitCannotStart);
    sigset_t signals;
    sigemptyset(&signals);
    ::sigprocmask(SIG_SETMASK, &signals, nullptr);
    ::setenv(watcherVariable, watcher.c_str(), 1);
    // Whoever watches the main loop of this process now watches the child's.
    if (!relay.name().empty())
        ::setenv("NOTIFY_SOCKET", relay.name().c_str(), 1);
    if (std::getenv("WATCHDOG_PID"))
        ::setenv("WATCHDOG_PID", std::to_string(::getpid()).c_str(), 1);
    executeProgram(program, argv);
    ::_exit(exitCannotStart);
}

Launcher::End Launcher::waitFor(pid_t child, const NotifyRelay& relay) const
{
    End end;
    const auto deadline = Clock::now() + m_patience;
    auto killing = Clock::time_point::max();
    bool isJudged = false;
    while (::waitpid(child, &end.status, WNOHANG) != child) {
        const auto now = Clock::now();
        if (!isJudged && now >= deadline) {
            isJudged = true;
            end.isSilent = notes().trial.has_value() && !end.isWished;
            if (end.isSilent) {
                ::kill(child, SIGTERM);
                killing = now + patienceForEnd;
            }
        }
        if (now >= killing) {
            ::kill(child, SIGKILL);
            killing = now + patienceForEnd;
        }
        waitUntil(std::min(isJudged ? now + longWait : deadline, killing), relay);
        for (int number = takeSignal(); number != 0; number = takeSignal()) {
            if (number == SIGCHLD)
                continue;
            end.isWished = true;
            ::kill(child, number);
        }
    }
    return end;
}

/// Puts the current version in this process's place; if it cannot run, another one that can.
int Launcher::execute(char** argv) const
{
    auto candidates = m_folders.versions();
    const auto rolledBack = notes().rolledBack;
    std::erase_if(candidates, [&](Version version) { return rolledBack.contains(version); });
    if (const auto current = m_folders.current())
        candidates.insert(candidates.begin(), *current);
    for (const auto version : candidates)
        executeProgram(m_folders.programOf(version), argv);
    m_log.write(fmt::format("Quillox: no version in {} can be started.", m_folders.root()));
    return exitCannotStart;
}

} // namespace quillox

#include "app/SetupSessionCommand.h"

#include "app/ConfigDocument.h"
#include "app/ConfigurationLines.h"
#include "app/SetupSessionArguments.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <ostream>

namespace quillox {

namespace {

    // People's accounts, as Debian numbers them.
    constexpr unsigned firstPerson = 1000;
    constexpr unsigned lastPerson = 59'999;

    constexpr auto gdmConfiguration = "/etc/gdm3/daemon.conf";

    /// The name becomes part of files in several languages, and of a file's name.
    bool isPlainName(const std::string& name)
    {
        const auto isPlain = [](char character) {
            return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z')
                || (character >= '0' && character <= '9') || character == '_' || character == '-'
                || character == '.' || character == '@';
        };
        return !name.empty() && name[0] != '.' && name[0] != '-'
            && std::ranges::all_of(name, isPlain);
    }

    std::string objectionToUser(const std::string& name, const MachineFiles& files)
    {
        const auto number = files.userNumber(name);
        if (!number) {
            return fmt::format("there is no user {}; make an account first: sudo adduser "
                               "--disabled-password --gecos Kiosk {}",
                name, name);
        }
        if (*number == 0)
            return fmt::format(
                "{} has root's rights, which no display for visitors may have", name);
        if (*number < firstPerson || *number > lastPerson)
            return fmt::format("{} is an account of the system (number {}); take one of {} to {}",
                name, *number, firstPerson, lastPerson);
        return {};
    }

} // namespace

SetupSessionCommand::SetupSessionCommand(Machine machine)
    : m_machine(machine)
{
}

int SetupSessionCommand::run(const SetupSessionRequest& request)
{
    using Action = SetupSessionRequest::Action;
    if (request.action != Action::help && !isPlainName(request.user))
        return fail(exitUsage, fmt::format("{} is no name of a user", quoted(request.user)));
    switch (request.action) {
    case Action::help:
        m_machine.out << setupSessionHelpText() << std::flush;
        return m_machine.out ? exitSuccess : fail(exitFailure, "cannot write standard output");
    case Action::setUp:
        return setUp(request);
    case Action::undo:
        return undo(request);
    }
    return exitUsage;
}

int SetupSessionCommand::setUp(const SetupSessionRequest& request)
{
    const auto& files = m_machine.files;
    if (const auto objection = objectionToUser(request.user, files); !objection.empty())
        return fail(exitUsage, objection);
    std::string reason;
    const auto* manager = activeDisplayManager(files, reason);
    if (!manager)
        return fail(exitFailure, reason);
    if (reason = obstacle(*manager, request.session); !reason.empty())
        return fail(exitFailure, reason);
    auto managed = filesOf(manager->kind, request.user);
    managed.push_back(managedServerFile());
    for (const auto& file : managed)
        add(planToSetUp(file, request.session, files), file.path);
    if (!m_objections.empty()) {
        for (const auto& objection : m_objections)
            fail(exitFailure, objection);
        return fail(exitFailure,
            "nothing was changed; undo it for the earlier user, or put those "
            "files in order by hand");
    }
    return carryOut(request,
        fmt::format("So that {} logs {} in by itself, to the session {}:", manager->name,
            request.user, entryOf(request.session).name),
        fmt::format("It holds from the next start of the display manager on: restart the machine.\n"
                    "{}\n"
                    "For a sealed page without anybody's help, its settings need an address and:\n"
                    "  sudo -u {} -H quillox config set autoStartKiosk true\n",
            manager->afterSession, request.user));
}

int SetupSessionCommand::undo(const SetupSessionRequest& request)
{
    // The machine may have another display manager by now, and the account may be gone.
    for (const auto& manager : displayManagers()) {
        for (const auto& file : filesOf(manager.kind, request.user))
            add(planToUndo(file, m_machine.files), file.path);
    }
    const auto server = managedServerFile();
    add(planToUndo(server, m_machine.files), server.path);
    return carryOut(request,
        fmt::format("So that {} is no longer logged in by itself:", request.user),
        "It holds from the next start of the display manager on: restart the machine.\n");
}

std::string SetupSessionCommand::obstacle(
    const DisplayManager& manager, DedicatedSession session) const
{
    const auto& files = m_machine.files;
    const auto& entry = entryOf(session);
    if (!files.exists(std::string(entry.path)))
        return fmt::format(
            "{} is missing; install the package of Quillox, beneath /usr", entry.path);
    for (const auto& [program, package] : entry.needs) {
        if (!files.exists(std::string(program)))
            return fmt::format(
                "the session {} needs {}: sudo apt install {}", entry.name, program, package);
    }
    const bool isWayland = session == DedicatedSession::wayland;
    if (manager.kind == DisplayManager::Kind::Greetd && !isWayland)
        return "greetd starts no X server; take --session wayland, or another display manager";
    const auto gdm = files.read(gdmConfiguration).text.value_or("");
    if (manager.kind == DisplayManager::Kind::Gdm && isWayland
        && valueOf(gdm, "daemon", "WaylandEnable") == "false")
        return fmt::format("{} switches Wayland off (WaylandEnable=false); take --session x11, or "
                           "take that line out",
            gdmConfiguration);
    return {};
}

std::vector<ManagedFile> SetupSessionCommand::filesOf(
    DisplayManager::Kind kind, const std::string& user) const
{
    std::vector<std::string> commands;
    for (const auto session : { DedicatedSession::wayland, DedicatedSession::x11 }) {
        const auto entry = m_machine.files.read(std::string(entryOf(session).path));
        commands.emplace_back(valueOf(entry.text.value_or(""), "Desktop Entry", "Exec"));
    }
    return managedFiles(kind, user, commands);
}

void SetupSessionCommand::add(FilePlan plan, const std::string& path)
{
    std::ranges::move(plan.changes, std::back_inserter(m_changes));
    if (plan.isHidden)
        m_hidden.push_back(path);
    if (!plan.objection.empty())
        m_objections.push_back(plan.objection);
}

int SetupSessionCommand::carryOut(
    const SetupSessionRequest& request, const std::string& heading, const std::string& ending)
{
    auto& out = m_machine.out;
    const int otherwise = m_objections.empty() ? exitSuccess : exitFailure;
    for (const auto& objection : m_objections)
        fail(exitFailure, objection);
    if (m_changes.empty() && m_hidden.empty()) {
        fmt::print(out, "There is nothing to change.\n");
        return out << std::flush ? otherwise : fail(exitFailure, "cannot write standard output");
    }
    fmt::print(out, "{}\n", heading);
    for (const auto& change : m_changes)
        fmt::print(out, "\n{}", changeText(change));
    for (const auto& path : m_hidden)
        fmt::print(out, "\nOnly root can read {}, and see what becomes of it.\n", path);
    // Nothing happens that could not be read first.
    if (!(out << std::endl))
        return fail(exitFailure, "cannot write standard output; nothing was changed");
    if (!m_machine.files.isRoot())
        return fail(exitUsage, "nothing was changed; run it as root with --yes");
    if (!request.isConfirmed)
        return fail(exitUsage, "nothing was changed; run it with --yes");
    if (const auto failure = applyChanges(m_changes, m_machine.files); !failure.empty())
        return fail(exitFailure, "cannot write " + failure);
    fmt::print(out, "Done. {}", ending);
    out << std::flush;
    return otherwise;
}

int SetupSessionCommand::fail(int exitCode, const std::string& line)
{
    m_machine.err << "quillox: " << line << std::endl;
    return exitCode;
}

} // namespace quillox

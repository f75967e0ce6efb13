#include "app/SetupSessionArguments.h"

#include <fmt/format.h>

namespace quillox {

std::optional<SetupSessionRequest> setupSessionRequest(const std::vector<std::string>& arguments)
{
    using Action = SetupSessionRequest::Action;
    using Session = SetupSessionRequest::Session;
    if (arguments.size() == 1 && (arguments[0] == "--help" || arguments[0] == "-h"))
        return SetupSessionRequest { .action = Action::help };
    SetupSessionRequest request;
    std::optional<Session> session;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const auto value = argument + 1 == arguments.end() ? std::string() : argument[1];
        if (*argument == "--yes") {
            request.isConfirmed = true;
            continue;
        }
        if (*argument == "--undo") {
            request.action = Action::undo;
            continue;
        }
        if (*argument == "--user" && request.user.empty())
            request.user = value;
        else if (*argument == "--session" && !session && (value == "wayland" || value == "x11"))
            session = value == "x11" ? Session::x11 : Session::wayland;
        else
            return std::nullopt;
        if (++argument == arguments.end())
            return std::nullopt;
    }
    if (request.user.empty())
        return std::nullopt;
    request.session = session.value_or(Session::wayland);
    return request;
}

std::string setupSessionHelpText()
{
    return fmt::format(
        "Usage: quillox setup-session {}\n"
        "\n"
        "Has this machine log that user in by itself when it starts, to a session in which "
        "nothing\n"
        "but Quillox runs. It knows LightDM, GDM, SDDM and greetd, and changes the files of the "
        "one\n"
        "that starts with the machine. Every change is printed first; nothing is changed unless\n"
        "root runs it with --yes. The old version of a file that is changed is kept as\n"
        "FILE.before-quillox. No service is started or stopped: it holds from the next start of "
        "the\n"
        "machine on.\n"
        "\n"
        "  --user NAME        An account of a person, not root and none of the system's.\n"
        "  --session wayland  Quillox in cage, which shows one program. That is the default.\n"
        "  --session x11      Quillox on an X server without a window manager. Switches the keys\n"
        "                     for virtual terminals off in every X session of this machine.\n"
        "  --undo             Put the files back byte for byte, for the same user. One that "
        "somebody\n"
        "                     has changed since stays as it is; the exit code is then 1.\n"
        "  --yes              Really do it.\n"
        "\n"
        "The exit code is 0 when it is done or there is nothing to do, 1 when it cannot be done, "
        "and\n"
        "2 when the user is not fit, or root or --yes is missing; with 2, nothing was changed.\n",
        setupSessionUsage);
}

} // namespace quillox

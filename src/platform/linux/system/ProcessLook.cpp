#include "platform/linux/system/ProcessLook.h"

#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <sstream>
#include <sys/socket.h>

namespace quillox {

namespace {

    std::string contents(int process, const char* file)
    {
        std::ifstream stream(fmt::format("/proc/{}/{}", process, file), std::ios::binary);
        return { std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>() };
    }

    int parentProcess(int process)
    {
        const auto status = contents(process, "stat");
        // The name before it, in parentheses, may hold anything.
        const auto nameEnd = status.rfind(')');
        if (nameEnd == std::string::npos)
            return 0;
        std::istringstream rest(status.substr(nameEnd + 1));
        std::string state;
        int parent = 0;
        rest >> state >> parent;
        return parent;
    }

} // namespace

int peerProcess(int socket)
{
    ucred peer {};
    socklen_t size = sizeof(peer);
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

std::string processName(int process)
{
    auto name = process > 0 ? contents(process, "comm") : std::string();
    std::erase(name, '\n');
    return name;
}

std::vector<std::string> processArguments(int process)
{
    std::vector<std::string> arguments;
    std::istringstream line(process > 0 ? contents(process, "cmdline") : std::string());
    for (std::string argument; std::getline(line, argument, '\0');)
        arguments.push_back(argument);
    return arguments;
}

std::optional<bool> readsInputDevices(int process)
{
    namespace fs = std::filesystem;
    std::error_code error;
    fs::directory_iterator descriptor(fmt::format("/proc/{}/fd", process), error);
    if (process <= 0 || error)
        return std::nullopt;
    for (; descriptor != fs::directory_iterator(); descriptor.increment(error)) {
        std::error_code ignored; // It was closed meanwhile.
        if (fs::read_symlink(*descriptor, ignored).string().starts_with("/dev/input/event"))
            return true;
    }
    return error ? std::nullopt : std::optional(false);
}

std::vector<int> childProcesses()
{
    namespace fs = std::filesystem;
    std::vector<int> children;
    std::error_code error;
    // Each thread has its own.
    for (const auto& thread : fs::directory_iterator("/proc/self/task", error)) {
        std::ifstream list(thread.path() / "children");
        for (int child = 0; list >> child;)
            children.push_back(child);
    }
    return children;
}

bool isDescendant(int process, int ancestor)
{
    while (process > 1 && process != ancestor)
        process = parentProcess(process);
    return process > 0 && process == ancestor;
}

} // namespace quillox

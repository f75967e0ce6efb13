#include "platform/linux/webkit/NetworkProcessWatch.h"

#include "platform/linux/system/ProcessLook.h"

#include <algorithm>
#include <glib-unix.h>
#include <string_view>
#include <sys/syscall.h>
#include <utility>

namespace quillox {

namespace {

    /// As the system has it: cut off after 15 characters.
    constexpr std::string_view networkProcessName = "WebKitNetworkPr";

} // namespace

NetworkProcessWatch::NetworkProcessWatch(std::function<void()> onEnd)
    : m_onEnd(std::move(onEnd))
{
}

NetworkProcessWatch::~NetworkProcessWatch()
{
    if (m_source)
        g_source_remove(m_source);
}

void NetworkProcessWatch::refresh()
{
    if (m_source)
        return;
    const auto children = childProcesses();
    const auto found = std::ranges::find_if(
        children, [](int child) { return processName(child) == networkProcessName; });
    if (found == children.end())
        return;
    m_process = FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, *found, 0)));
    if (!m_process)
        return;
    m_source = g_unix_fd_add(
        m_process.get(), G_IO_IN,
        [](int, GIOCondition, gpointer self) -> gboolean {
            static_cast<NetworkProcessWatch*>(self)->handleEnd();
            return G_SOURCE_REMOVE;
        },
        this);
}

void NetworkProcessWatch::handleEnd()
{
    m_source = 0;
    m_process = {};
    const auto onEnd = m_onEnd;
    onEnd();
}

} // namespace quillox

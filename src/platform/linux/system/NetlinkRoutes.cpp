#include "platform/linux/system/NetlinkRoutes.h"

#include <arpa/inet.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <set>
#include <span>
#include <vector>

namespace quillox {

namespace {

    constexpr std::size_t largestAnswer = 64U * 1024;

    FileDescriptor openSocket(unsigned groups)
    {
        FileDescriptor descriptor(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
        sockaddr_nl address {};
        address.nl_family = AF_NETLINK;
        address.nl_groups = groups;
        if (descriptor
            && ::bind(descriptor.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
            return {};
        return descriptor;
    }

    /// Has the kernel list all of one kind; false when it does not do so to the end.
    template <typename Visit> bool list(std::uint16_t what, Visit visit)
    {
        const auto socket = openSocket(0);
        struct {
            nlmsghdr header;
            rtgenmsg family;
        } request {};
        request.header.nlmsg_len = sizeof request;
        request.header.nlmsg_type = what;
        request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
        request.family.rtgen_family = AF_UNSPEC;
        if (!socket || ::send(socket.get(), &request, sizeof request, 0) < 0)
            return false;

        std::vector<std::byte> buffer(largestAnswer);
        for (;;) {
            const auto length = ::recv(socket.get(), buffer.data(), buffer.size(), 0);
            if (length < 0 && errno == EINTR)
                continue;
            if (length <= 0)
                return false;
            auto left = static_cast<int>(length);
            for (auto* message = reinterpret_cast<nlmsghdr*>(buffer.data());
                 NLMSG_OK(message, left); message = NLMSG_NEXT(message, left)) {
                if (message->nlmsg_type == NLMSG_DONE)
                    return true;
                if (message->nlmsg_type == NLMSG_ERROR)
                    return false;
                visit(message);
            }
        }
    }

    using Links = std::set<int>; ///< By the kernel's number.

    void addWorkingLink(Links& links, nlmsghdr* message)
    {
        if (message->nlmsg_type != RTM_NEWLINK)
            return;
        const auto* link = static_cast<ifinfomsg*>(NLMSG_DATA(message));
        constexpr unsigned works = IFF_UP | IFF_RUNNING;
        if ((link->ifi_flags & (works | IFF_LOOPBACK)) == works)
            links.insert(link->ifi_index);
    }

    /// What `hasWorkingRoute` reads of one route.
    struct Route {
        explicit Route(nlmsghdr* message);

        bool leadsToMachines() const;
        bool usesOneOf(const Links&) const;

        unsigned char family;
        unsigned char type;
        unsigned char prefixLength;
        bool isCached;
        std::uint32_t table;
        std::array<std::uint8_t, sizeof(in6_addr)> destination {};
        std::vector<int> links;
        bool hasSharedNextHop = false;
    };

    Route::Route(nlmsghdr* message)
    {
        auto* header = static_cast<rtmsg*>(NLMSG_DATA(message));
        family = header->rtm_family;
        type = header->rtm_type;
        prefixLength = header->rtm_dst_len;
        isCached = (header->rtm_flags & RTM_F_CLONED) != 0;
        table = header->rtm_table;
        auto left = RTM_PAYLOAD(message);
        for (auto* field = RTM_RTA(header); RTA_OK(field, left); field = RTA_NEXT(field, left)) {
            auto* data = RTA_DATA(field);
            const auto size = RTA_PAYLOAD(field);
            if (field->rta_type == RTA_TABLE) {
                std::memcpy(&table, data, sizeof table);
            } else if (field->rta_type == RTA_DST) {
                std::memcpy(destination.data(), data, std::min(size, destination.size()));
            } else if (field->rta_type == RTA_OIF) {
                std::memcpy(&links.emplace_back(), data, sizeof(int));
            } else if (field->rta_type == RTA_MULTIPATH) {
                auto hopsLeft = static_cast<int>(size);
                for (auto* hop = static_cast<rtnexthop*>(data); RTNH_OK(hop, hopsLeft);
                     hopsLeft -= RTNH_ALIGN(hop->rtnh_len), hop = RTNH_NEXT(hop))
                    links.push_back(hop->rtnh_ifindex);
            } else if (field->rta_type == RTA_NH_ID) {
                hasSharedNextHop = true;
            }
        }
    }

    /// Not this machine itself, not groups, and not what needs no network to be set up.
    bool Route::leadsToMachines() const
    {
        if (type != RTN_UNICAST || table == RT_TABLE_LOCAL || isCached)
            return false;
        const auto [first, second] = std::array { destination[0], destination[1] };
        if (family == AF_INET)
            return !(prefixLength >= 4 && first >> 4 == 0xE)
                && !(prefixLength >= 16 && first == 169 && second == 254);
        return family == AF_INET6 && !(prefixLength >= 8 && first == 0xFF)
            && !(prefixLength >= 10 && first == 0xFE && second >> 6 == 2);
    }

    bool Route::usesOneOf(const Links& working) const
    {
        // The kernel can be told to leave out where a shared next hop is; such a route counts.
        if (links.empty())
            return hasSharedNextHop;
        return std::ranges::any_of(links, [&](int link) { return working.contains(link); });
    }

} // namespace

FileDescriptor openRouteNews()
{
    return openSocket(RTMGRP_LINK | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE | RTMGRP_IPV4_IFADDR
        | RTMGRP_IPV6_IFADDR);
}

void discardRouteNews(const FileDescriptor& news)
{
    std::byte rest {}; // What does not fit is dropped.
    while (::recv(news.get(), &rest, sizeof rest, MSG_DONTWAIT) >= 0 || errno == ENOBUFS
        || errno == EINTR) { }
}

std::optional<bool> hasWorkingRoute()
{
    Links working;
    auto found = false;
    const auto isTold = list(RTM_GETLINK, [&](auto* message) { addWorkingLink(working, message); })
        && list(RTM_GETROUTE, [&](auto* message) {
               if (message->nlmsg_type != RTM_NEWROUTE || found)
                   return;
               const Route route(message);
               found = route.leadsToMachines() && route.usesOneOf(working);
           });
    return isTold ? std::optional(found) : std::nullopt;
}

} // namespace quillox

#include "debugger_support/loopback.hpp"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace qiro_plugin::debugger_support {

namespace {

[[noreturn]] void fail(const char* a_what) {
    throw std::system_error(errno, std::generic_category(), a_what);
}

// A bound socket on 127.0.0.1:a_port, listening when a_listen; its port in a_bound.
int bound_socket(std::uint16_t a_port, bool a_listen, std::uint16_t& a_bound) {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd == -1) {
        fail("socket");
    }
    const int on = 1;
    ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(a_port);
    socklen_t length = sizeof(address);
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the sockets API
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(fd, generic, sizeof(address)) != 0 || (a_listen && ::listen(fd, 4) != 0) ||
        ::getsockname(fd, generic, &length) != 0) {
        const int error = errno;
        ::close(fd);
        errno = error;
        fail("127.0.0.1");
    }
    a_bound = ntohs(address.sin_port);
    return fd;
}

} // namespace

loopback_listener::loopback_listener(std::uint16_t a_port) {
    m_fd = bound_socket(a_port, true, m_port);
}

loopback_listener::~loopback_listener() {
    if (m_fd != -1) {
        ::close(m_fd);
    }
}

loopback_listener::loopback_listener(loopback_listener&& a_other) noexcept
    : m_fd(std::exchange(a_other.m_fd, -1)), m_port(a_other.m_port) {}

int loopback_listener::accept_unless_woken(int a_wake_fd) const {
    pollfd waits[2] = {{m_fd, POLLIN, 0}, {a_wake_fd, POLLIN, 0}};
    while (true) {
        if (::poll(waits, 2, -1) == -1) {
            if (errno == EINTR) {
                continue;
            }
            return -1;
        }
        if (waits[1].revents != 0) {
            return -1;
        }
        if (waits[0].revents != 0) {
            const int connection = ::accept4(m_fd, nullptr, nullptr, SOCK_CLOEXEC);
            if (connection != -1 || (errno != EINTR && errno != ECONNABORTED)) {
                return connection;
            }
        }
    }
}

std::uint16_t available_loopback_port(std::uint16_t a_port) {
    std::uint16_t port = 0;
    // Listening, not only bound: a port some program listens on with SO_REUSEADDR would
    // otherwise look free.
    ::close(bound_socket(a_port, true, port));
    return port;
}

} // namespace qiro_plugin::debugger_support

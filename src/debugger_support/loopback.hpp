#pragma once
// TCP on 127.0.0.1 only: where a debugger and the tool meet a plug-in's command.

#include <cstdint>

namespace qiro_plugin::debugger_support {

// A listening socket on 127.0.0.1.
class loopback_listener {
public:
    // On a_port, or on a port the kernel picks when it is 0. Throws std::system_error when
    // nothing can listen there (the port is taken, say).
    explicit loopback_listener(std::uint16_t a_port);
    ~loopback_listener();
    loopback_listener(loopback_listener&& a_other) noexcept;
    loopback_listener& operator=(loopback_listener&&) = delete;
    loopback_listener(const loopback_listener&) = delete;
    loopback_listener& operator=(const loopback_listener&) = delete;

    std::uint16_t port() const { return m_port; }
    // The next connection, or -1 once a_wake_fd became readable (or on an error).
    int accept_unless_woken(int a_wake_fd) const;

private:
    int m_fd = -1;
    std::uint16_t m_port = 0;
};

// A port of 127.0.0.1 that nothing listens on now, for an interpreter that listens itself: the
// given one after checking that it can be had, or a free one for 0. Throws std::system_error
// when the given port is taken.
std::uint16_t available_loopback_port(std::uint16_t a_port);

} // namespace qiro_plugin::debugger_support

#pragma once
// A client connection to a port on 127.0.0.1, made once something listens there.

#include <arpa/inet.h>
#include <chrono>
#include <cstdint>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace test_support {

// The connected descriptor, or -1 when nothing accepted within a_patience.
inline int connect_when_listening(std::uint16_t a_port, std::chrono::milliseconds a_patience) {
    const auto deadline = std::chrono::steady_clock::now() + a_patience;
    while (std::chrono::steady_clock::now() < deadline) {
        const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(a_port);
        if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0) {
            return fd;
        }
        ::close(fd);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return -1;
}

} // namespace test_support

#include "platform/output_stream.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <poll.h>
#include <unistd.h>

namespace qiro_plugin {

command_result::command_result() : finished(0) {}

namespace utility::detail {

namespace {

// One pipe's capacity: a single read takes everything a writer can have buffered.
constexpr std::size_t read_chunk = 64 * 1024;

} // namespace

output_stream::output_stream(int a_fd, std::size_t a_limit) : m_fd(a_fd), m_limit(a_limit) {}

output_stream::~output_stream() {
    if (m_fd != -1) {
        ::close(m_fd);
    }
}

void output_stream::read_available(bool a_keep) {
    if (m_fd == -1) {
        return;
    }
    std::array<char, read_chunk> buffer;
    const ssize_t count = ::read(m_fd, buffer.data(), buffer.size());
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    if (count <= 0) {
        // A read error cannot be retried usefully; it ends the stream like end of file.
        ::close(m_fd);
        m_fd = -1;
        m_result.finished = 1;
        return;
    }
    const auto received = static_cast<std::size_t>(count);
    std::size_t kept = 0;
    if (a_keep) {
        const std::size_t room = m_limit - std::min(m_limit, m_result.data.size());
        kept = std::min(room, received);
        reserve_for(kept);
        m_result.data.insert(m_result.data.end(), buffer.data(), buffer.data() + kept);
    }
    if (kept < received && a_keep) {
        m_cut = true;
    }
}

void output_stream::reserve_for(std::size_t a_count) {
    auto& data = m_result.data;
    const std::size_t needed = data.size() + a_count;
    if (needed <= data.capacity()) {
        return;
    }
    // Doubling as the vector would, but never past the limit and its terminating zero: a full
    // stream would otherwise move into twice its size for that one byte.
    const std::size_t most = m_limit + 1;
    data.reserve(std::min(most, std::max(needed, data.capacity() * 2)));
}

void output_stream::terminate_data() {
    if (!m_result.data.empty()) {
        m_result.data.push_back('\0');
    }
}

void wait_for_streams(output_stream& a_first, output_stream& a_second,
                      std::chrono::steady_clock::time_point a_deadline, bool a_keep,
                      int a_extra_fd) {
    using namespace std::chrono;
    while (!a_first.finished() || !a_second.finished()) {
        const auto left = a_deadline - steady_clock::now();
        if (left <= steady_clock::duration::zero()) {
            return;
        }
        const auto left_ns = duration_cast<nanoseconds>(left).count();
        const timespec wait_time{static_cast<time_t>(left_ns / 1000000000),
                                 static_cast<long>(left_ns % 1000000000)};
        std::array<pollfd, 3> fds{pollfd{a_first.fd(), POLLIN, 0}, pollfd{a_second.fd(), POLLIN, 0},
                                  pollfd{a_extra_fd, POLLIN, 0}};
        const int ready = ::ppoll(fds.data(), fds.size(), &wait_time, nullptr);
        if (ready < 0) {
            if (errno == EINTR) {
                continue;
            }
            // poll itself failing is not recoverable here; keep the pass length without spinning.
            ::nanosleep(&wait_time, nullptr);
            return;
        }
        if (fds[0].revents != 0) {
            a_first.read_available(a_keep);
        }
        if (fds[1].revents != 0) {
            a_second.read_available(a_keep);
        }
        if (fds[2].revents != 0) {
            return;
        }
    }
}

} // namespace utility::detail
} // namespace qiro_plugin

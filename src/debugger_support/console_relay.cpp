#include "debugger_support/console_relay.hpp"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace qiro_plugin::debugger_support {

namespace {

void close_fd(int& a_fd) {
    if (a_fd != -1) {
        ::close(a_fd);
        a_fd = -1;
    }
}

bool write_all(int a_fd, const char* a_data, std::size_t a_size) {
    while (a_size > 0) {
        const ssize_t step = ::send(a_fd, a_data, a_size, MSG_NOSIGNAL);
        if (step == -1 && errno == ENOTSOCK) {
            const ssize_t plain = ::write(a_fd, a_data, a_size);
            if (plain <= 0 && errno != EINTR) {
                return false;
            }
            if (plain > 0) {
                a_data += plain;
                a_size -= static_cast<std::size_t>(plain);
            }
            continue;
        }
        if (step == -1 && errno == EINTR) {
            continue;
        }
        if (step <= 0) {
            return false;
        }
        a_data += step;
        a_size -= static_cast<std::size_t>(step);
    }
    return true;
}

enum class pumped { more, source_ended };

// Moves what a_from has now to a_to.
pumped pump(int a_from, int a_to) {
    std::array<char, 4096> buffer{};
    ssize_t got = 0;
    while ((got = ::read(a_from, buffer.data(), buffer.size())) == -1 && errno == EINTR) {
    }
    if (got <= 0) {
        return got == -1 && errno == EAGAIN ? pumped::more : pumped::source_ended;
    }
    // An author who stopped reading must not end the console: what they miss is dropped.
    write_all(a_to, buffer.data(), static_cast<std::size_t>(got));
    return pumped::more;
}

} // namespace

struct console_relay::impl {
    loopback_listener m_interpreter;
    std::optional<loopback_listener> m_author;
    int m_terminal_in = -1;
    int m_terminal_out = -1;
    std::array<int, 2> m_wake{-1, -1};
    std::thread m_thread;

    impl(loopback_listener a_interpreter, std::optional<loopback_listener> a_author)
        : m_interpreter(std::move(a_interpreter)), m_author(std::move(a_author)) {}

    ~impl() {
        if (m_wake[1] != -1) {
            const char wake = 'w';
            static_cast<void>(::write(m_wake[1], &wake, 1));
        }
        if (m_thread.joinable()) {
            m_thread.join();
        }
        close_fd(m_wake[0]);
        close_fd(m_wake[1]);
        if (m_terminal_out == m_terminal_in) {
            m_terminal_out = -1;
        }
        close_fd(m_terminal_in);
        close_fd(m_terminal_out);
    }

    void start() {
        if (::pipe2(m_wake.data(), O_CLOEXEC) != 0) {
            throw std::system_error(errno, std::generic_category(), "pipe2");
        }
        m_thread = std::thread([this] { relay(); });
    }

    void relay() {
        int interpreter = m_interpreter.accept_unless_woken(m_wake[0]);
        if (interpreter == -1) {
            return;
        }
        if (m_author) {
            while (true) {
                int author = m_author->accept_unless_woken(m_wake[0]);
                if (author == -1) {
                    break;
                }
                const bool interpreter_ended = join(interpreter, author, author);
                ::shutdown(author, SHUT_RDWR);
                close_fd(author);
                if (interpreter_ended) {
                    break;
                }
            }
        } else {
            join(interpreter, m_terminal_in, m_terminal_out);
        }
        ::shutdown(interpreter, SHUT_RDWR);
        close_fd(interpreter);
    }

    // Relays until one side ends or the relay is woken; true when the interpreter's side ended
    // (or the relay must end), false when the author's did.
    bool join(int a_interpreter, int a_author_in, int a_author_out) const {
        std::array<pollfd, 3> waits{
            {{a_interpreter, POLLIN, 0}, {a_author_in, POLLIN, 0}, {m_wake[0], POLLIN, 0}}};
        while (true) {
            if (::poll(waits.data(), waits.size(), -1) == -1) {
                if (errno == EINTR) {
                    continue;
                }
                return true;
            }
            if (waits[2].revents != 0) {
                return true;
            }
            if (waits[0].revents != 0 &&
                pump(a_interpreter, a_author_out) == pumped::source_ended) {
                return true;
            }
            if (waits[1].revents != 0 && pump(a_author_in, a_interpreter) == pumped::source_ended) {
                // From the terminal, the end of input ends the console for good.
                return !m_author;
            }
        }
    }
};

console_relay::console_relay(loopback_listener a_interpreter, loopback_listener a_author)
    : p_impl(std::make_unique<impl>(std::move(a_interpreter), std::move(a_author))) {
    p_impl->start();
}

console_relay::console_relay(loopback_listener a_interpreter, int a_terminal_in, int a_terminal_out)
    : p_impl(std::make_unique<impl>(std::move(a_interpreter), std::nullopt)) {
    p_impl->m_terminal_in = a_terminal_in;
    p_impl->m_terminal_out = a_terminal_out;
    p_impl->start();
}

console_relay::~console_relay() = default;

} // namespace qiro_plugin::debugger_support

#include "bridge_runner.hpp"

#include "bridges/bridge_scripts.hpp"
#include "bridges/protocol.hpp"
#include "text/url_xml_escape.hpp"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

extern char** environ;

namespace qiro_plugin::test {

namespace {

class pipe_pair {
public:
    pipe_pair() {
        if (::pipe2(m_ends.data(), O_CLOEXEC) != 0) {
            throw std::runtime_error("pipe2 failed");
        }
    }
    ~pipe_pair() {
        close_read();
        close_write();
    }
    pipe_pair(const pipe_pair&) = delete;
    pipe_pair& operator=(const pipe_pair&) = delete;

    int read_end() const { return m_ends[0]; }
    int write_end() const { return m_ends[1]; }
    void close_read() { close_end(0); }
    void close_write() { close_end(1); }

private:
    void close_end(std::size_t a_index) {
        if (m_ends[a_index] >= 0) {
            ::close(m_ends[a_index]);
            m_ends[a_index] = -1;
        }
    }
    std::array<int, 2> m_ends{-1, -1};
};

std::vector<std::string> environment_with_home(const std::filesystem::path& a_home) {
    std::vector<std::string> entries;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text(*entry);
        if (!text.starts_with("HOME=")) {
            entries.push_back(text);
        }
    }
    entries.push_back("HOME=" + a_home.string());
    return entries;
}

} // namespace

process_output run_shell(const std::string& a_line, const std::filesystem::path& a_folder,
                         const std::filesystem::path& a_home) {
    pipe_pair out_pipe;
    pipe_pair err_pipe;

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out_pipe.write_end(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, err_pipe.write_end(), STDERR_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addchdir_np(&actions, a_folder.c_str());

    std::vector<std::string> environment = environment_with_home(a_home);
    std::vector<char*> envp;
    for (auto& entry : environment) {
        envp.push_back(entry.data());
    }
    envp.push_back(nullptr);

    std::string shell = "/bin/sh";
    std::string option = "-c";
    std::string line = a_line;
    std::array<char*, 4> argv{shell.data(), option.data(), line.data(), nullptr};

    pid_t child = 0;
    const int spawned =
        posix_spawn(&child, shell.c_str(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        throw std::runtime_error("posix_spawn failed");
    }
    out_pipe.close_write();
    err_pipe.close_write();

    process_output output;
    std::array<pollfd, 2> streams{pollfd{out_pipe.read_end(), POLLIN, 0},
                                  pollfd{err_pipe.read_end(), POLLIN, 0}};
    std::array<std::string*, 2> sinks{&output.out, &output.err};
    int open_streams = 2;
    while (open_streams > 0) {
        if (::poll(streams.data(), streams.size(), -1) < 0) {
            continue;
        }
        for (std::size_t i = 0; i < streams.size(); ++i) {
            if (streams[i].fd < 0 || streams[i].revents == 0) {
                continue;
            }
            char buffer[65536];
            const ssize_t count = ::read(streams[i].fd, buffer, sizeof(buffer));
            if (count > 0) {
                sinks[i]->append(buffer, static_cast<std::size_t>(count));
            } else if (count < 0 && errno == EINTR) {
                continue;
            } else {
                streams[i].fd = -1;
                --open_streams;
            }
        }
    }

    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
    }
    output.exit_status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return output;
}

void PrintTo(const language& a_language, std::ostream* a_stream) {
    *a_stream << a_language.name;
}

const language& perl_language() {
    static const language value{"perl", "perl", "pl", &bridge::perl_script};
    return value;
}

const language& ruby_language() {
    static const language value{"ruby", "ruby", "rb", &bridge::ruby_script};
    return value;
}

const language& python_language() {
    static const language value{"python", "python", "py", &bridge::python_script};
    return value;
}

const std::vector<language>& all_languages() {
    static const std::vector<language> values{perl_language(), ruby_language(), python_language()};
    return values;
}

bridge_folder::bridge_folder(const language& a_language)
    : m_language(a_language),
      m_bridge_name(std::string("0123456789abcdef0123456789abcdef01234567.") +
                    a_language.extension) {
    std::string pattern = (std::filesystem::temp_directory_path() / "qiro_bridges_XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("mkdtemp failed");
    }
    m_folder = pattern;
    std::filesystem::create_directory(m_folder / "home");
    std::ofstream file(m_folder / m_bridge_name, std::ios::binary);
    file << utility::url_decode(m_language.stored_script());
}

bridge_folder::~bridge_folder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

process_output bridge_folder::run(const std::vector<std::string>& a_values) const {
    std::string line = m_language.interpreter;
    line += QIRO_PLUGIN_SCRIPT_COMMAND_LINE_QUOTATION_START;
    line += m_bridge_name;
    line += QIRO_PLUGIN_SCRIPT_COMMAND_LINE_QUOTATION_END;
    for (const auto& value : a_values) {
        line += QIRO_PLUGIN_SCRIPT_COMMAND_LINE_QUOTATION_START;
        line += value;
        line += QIRO_PLUGIN_SCRIPT_COMMAND_LINE_QUOTATION_END;
    }
    return run_shell(line, m_folder, m_folder / "home");
}

std::string encoded(const std::string& a_text) {
    return utility::url_encode(a_text);
}

std::filesystem::path fixture(const language& a_language, const std::string& a_stem) {
    return std::filesystem::path(QIRO_TEST_DATA_DIR) / "bridges" /
           (a_stem + "." + a_language.extension);
}

std::string repeat(const std::string& a_text, std::size_t a_count) {
    std::string result;
    for (std::size_t i = 0; i < a_count; ++i) {
        result += a_text;
    }
    return result;
}

} // namespace qiro_plugin::test

#pragma once
// One pipe's reading end and the bytes a child wrote to it, kept up to a limit.

#include "platform/command_runner.hpp"

#include <chrono>
#include <cstddef>

namespace qiro_plugin::utility::detail {

class output_stream {
public:
    output_stream(int a_fd, std::size_t a_limit);
    ~output_stream();
    output_stream(const output_stream&) = delete;
    output_stream& operator=(const output_stream&) = delete;

    // -1 once the stream has reached end of file.
    int fd() const { return m_fd; }
    bool finished() const { return m_result.finished != 0; }
    // True when bytes beyond the limit arrived and were dropped.
    bool cut() const { return m_cut; }
    // One read of what is buffered; bytes are dropped when a_keep is false or past the limit.
    void read_available(bool a_keep);
    // Adds the terminating zero byte to a stream that produced output.
    void terminate_data();
    command_result& result() { return m_result; }

private:
    // Makes room for a_count more bytes without growing past what the stream can keep.
    void reserve_for(std::size_t a_count);

    int m_fd;
    std::size_t m_limit;
    bool m_cut = false;
    command_result m_result;
};

// Reads both streams as data arrives until both have ended or the deadline has passed.
// a_extra_fd (when not -1) also ends the wait when it becomes readable.
void wait_for_streams(output_stream& a_first, output_stream& a_second,
                      std::chrono::steady_clock::time_point a_deadline, bool a_keep,
                      int a_extra_fd = -1);

} // namespace qiro_plugin::utility::detail

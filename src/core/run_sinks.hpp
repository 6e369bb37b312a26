#pragma once
// What a front end gives the run logic: the two output panes, the busy indicator and alerts.

#include "text/utf16_string.hpp"

#include <string>

namespace qiro_plugin::debugger {

// The standard-output and standard-error panes and the busy indicator of one window.
class run_output_sink {
public:
    run_output_sink() = default;
    run_output_sink(const run_output_sink&) = delete;
    run_output_sink& operator=(const run_output_sink&) = delete;
    virtual ~run_output_sink() = default;

    // Each appends the text followed by CR LF at the end of its pane.
    virtual void add_std_output_text(const utf16_string& a_text) = 0;
    virtual void add_std_error_output_text(const utf16_string& a_text) = 0;
    // The same for output as the interpreter wrote it: text that is not UTF-8 throws before
    // anything is appended. By default converted and passed to the two above; a sink that keeps
    // UTF-8 itself spares the conversion and the copy.
    virtual void add_std_output_utf8(const std::string& a_text);
    virtual void add_std_error_output_utf8(const std::string& a_text);
    // Each replaces its pane's whole content by the empty text.
    virtual void clear_std_output_text() = 0;
    virtual void clear_std_error_output_text() = 0;
    // The busy indicator: it keeps moving while a run blocks the calling thread.
    virtual void start_progress() = 0;
    virtual void stop_progress() = 0;
    // While an entry runs: the last lines of what it has written on standard error so far
    // (UTF-8, see std_error_tail), at most about ten times a second. For a progress view
    // beside the panes, never for the panes: they get the run's outputs when it has ended.
    virtual void show_std_error_so_far(const std::string& a_last_lines);
};

// Modal alerts, named by the key of their localized title.
class alert_sink {
public:
    alert_sink() = default;
    alert_sink(const alert_sink&) = delete;
    alert_sink& operator=(const alert_sink&) = delete;
    virtual ~alert_sink() = default;

    virtual void show_alert(const std::string& a_key) = 0;
};

} // namespace qiro_plugin::debugger

#pragma once
// What one run names: the entry, the plug-in, its inputs, and options that only add to the
// faithful run. Every front end fills one and hands it to debug_runner::run.

#include "core/entry_companion.hpp"
#include "core/plugin_discovery.hpp"
#include "diagnosis/run_evidence.hpp"
#include "platform/command_executor.hpp"
#include "platform/sandbox.hpp"
#include "settings/manager_preference_snapshot.hpp"

#include <memory>
#include <vector>

namespace qiro_plugin::debugger {

// When the author-side probes run the plug-in a second time to see what its entry returned.
enum class probe_policy { after_failure, always, never };

struct run_options {
    // off: the command runs as the host would run it. Otherwise every command of the run is
    // confined, and a run where bubblewrap cannot confine it is refused, never run unconfined.
    utility::sandbox_mode sandbox = utility::sandbox_mode::off;
    probe_policy probes = probe_policy::after_failure;
    // Tools joined to the entry's command (never the syntax check); none for the faithful run.
    std::vector<std::shared_ptr<entry_companion>> companions;
    // The fast mode of soak and test (a fork worker): serves the run's bridge commands in place
    // of new interpreters. None for the faithful run, which run and the window always are.
    std::shared_ptr<utility::command_executor> executor;
    // The manager's settings shared by the many runs of one soak or test session, read again
    // only when their files change. None: the run reads them itself, as run and the window do.
    std::shared_ptr<manager_preference_snapshot> settings;
};

struct run_request {
    diagnosis::entry_kind entry = diagnosis::entry_kind::processing;
    plugin_entry plugin;
    utf16_string written_form; // every entry but preference
    utf16_string reading;      // processing; empty is the manager's own request
    utf16_string candidate;    // callback: the committed candidate's title
    run_options options;
};

// The request of each entry with the faithful options.
run_request processing_request(const plugin_entry& a_plugin, const utf16_string& a_written_form,
                               const utf16_string& a_reading = {});
run_request callback_request(const plugin_entry& a_plugin, const utf16_string& a_candidate,
                             const utf16_string& a_written_form);
run_request preference_request(const plugin_entry& a_plugin);

} // namespace qiro_plugin::debugger

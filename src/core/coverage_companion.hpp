#pragma once
// Coverage of plug-ins by their cases: each case's entry runs under its language's coverage
// tool, joined through the environment alone, and what the runs reached is merged per plug-in.

#include "core/entry_companion.hpp"
#include "coverage/coverage_record.hpp"

#include <memory>
#include <string>
#include <vector>

namespace qiro_plugin::debugger {

class coverage_collection {
public:
    coverage_collection();
    ~coverage_collection();
    coverage_collection(const coverage_collection&) = delete;
    coverage_collection& operator=(const coverage_collection&) = delete;

    // A companion for one run, to put into its run_options: it refuses the run when the
    // language's tool is missing (naming the Debian package), measures the plug-in file alone
    // in a private folder of the data folder, and adds what it measured here when the run ends.
    // Companions of one collection may run on several threads at once.
    std::shared_ptr<entry_companion> companion();

    // One record per plug-in measured, ordered by path.
    std::vector<coverage::file_coverage> files() const;
    // What could not be measured, one text per run, such as a run that ended before its
    // tool wrote anything.
    std::vector<std::string> problems() const;

    struct impl;

private:
    std::shared_ptr<impl> p_impl;
};

} // namespace qiro_plugin::debugger

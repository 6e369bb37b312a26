#pragma once
// The two documents CI systems and report tools read: an lcov tracefile and a Cobertura XML.

#include "coverage/coverage_record.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace qiro_plugin::coverage {

// One record per file (SF, BRDA/BRF/BRH, DA/LF/LH, end_of_record) in the order given. A branch
// of a line never reached is written "-" (never evaluated), as lcov writes it.
std::string lcov_tracefile(const std::vector<file_coverage>& a_files);

// Cobertura's coverage-04 document: one package per folder, one class per file, its lines with
// their hits and, on a line with branches, how many were taken. a_timestamp is in milliseconds
// since 1970, as Cobertura writes it.
std::string cobertura_xml(const std::vector<file_coverage>& a_files, const std::string& a_version,
                          std::uint64_t a_timestamp);

} // namespace qiro_plugin::coverage

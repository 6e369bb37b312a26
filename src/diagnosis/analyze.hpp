#pragma once
// The diagnosis of one run: what went wrong, where in the author's file, and what to do.

#include "diagnosis/diagnosis_texts.hpp"
#include "diagnosis/finding.hpp"
#include "diagnosis/run_evidence.hpp"

#include <string>
#include <vector>

namespace qiro_plugin::diagnosis {

// The findings of the run, most basic first; empty when nothing is wrong. Reads nothing but
// the evidence, the plug-in's companion document and, for a slow start, the interpreter's
// path; starts no process.
std::vector<finding> diagnose(const run_evidence& a_evidence, ui_language a_language);

// One line for a status bar: the first error's message, else the first warning's, else empty.
std::string summarize(const std::vector<finding>& a_findings);

// The processor time the bridge's syntax check takes in each language on a plain system of the
// reference machine, in milliseconds; a start that takes 100 ms more there is reported. Both
// figures are multiplied by the machine's cpu_time_scale().
double expected_start_ms(const std::string& a_language);

// How many times the processor time of the reference machine this one needs for the same
// work: a fixed computation timed on the calling thread's processor clock, the best of a few
// short tries, measured once per process (about 4 ms) and kept within 1/10 and 10. A
// different processor changes it; heavy load raises it somewhat, as it raises the processor
// time an interpreter needs to start.
double cpu_time_scale();

} // namespace qiro_plugin::diagnosis

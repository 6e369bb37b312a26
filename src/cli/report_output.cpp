#include "cli/report_output.hpp"

#include "cli/cli_support.hpp"
#include "cli/diagnosis_output.hpp"
#include "text/utf8_text.hpp"

#include <cstddef>
#include <iostream>
#include <utility>

namespace qiro_plugin::cli {

namespace {

// More than the report's members, so that adding one needs no change here.
constexpr std::size_t members_room = 32;

nlohmann::ordered_json candidates_json(const debugger::run_report& a_report) {
    auto candidates = nlohmann::ordered_json::array();
    for (const auto& candidate : a_report.candidates) {
        nlohmann::ordered_json item;
        item["title"] = string_encode::to_utf8_marked(candidate.title);
        item["comment"] = string_encode::to_utf8_marked(candidate.comment);
        item["alternative"] = string_encode::to_utf8_marked(candidate.alternative);
        item["alternative_alias"] = string_encode::to_utf8_marked(candidate.alternative_alias);
        item["alternative_type"] = string_encode::to_utf8_marked(candidate.alternative_type);
        item["info"] = string_encode::to_utf8_marked(candidate.info);
        candidates.push_back(std::move(item));
    }
    return candidates;
}

} // namespace

nlohmann::ordered_json report_json(const report_context& a_context, debugger::run_report& a_report,
                                   debugger::pane_text_sink& a_panes) {
    auto json = nlohmann::ordered_json::object();
    // The members live in a vector whose growth copies every value (a pair with a const key
    // cannot be moved), and a flooded pane is 64 MiB: room for all members from the start.
    json.get_ref<nlohmann::ordered_json::object_t&>().reserve(members_room);
    json["plugin_folder"] = string_encode::to_utf8_marked(a_context.plugin.first);
    json["plugin_file"] = string_encode::to_utf8_marked(a_context.plugin.second);
    if (a_context.candidate != nullptr) {
        json["candidate"] = *a_context.candidate;
    }
    if (a_context.written_form != nullptr) {
        json["written_form"] = *a_context.written_form;
    }
    json["module_type"] =
        a_report.module_type
            ? nlohmann::ordered_json(string_encode::to_utf8_marked(*a_report.module_type))
            : nlohmann::ordered_json(nullptr);
    json["load_error"] = string_encode::to_utf8_marked(a_report.load_error);
    json["stdout_pane"] = a_panes.take_std_output_utf8();
    json["stderr_pane"] = a_panes.take_std_error_output_utf8();
    json["run_stdout"] = std::move(a_report.run_std_output);
    json["run_stderr"] = std::move(a_report.run_std_error);
    if (a_context.with_candidates) {
        json["document_parsed"] = a_report.document_parsed;
        json["candidates"] = candidates_json(a_report);
        json["return_type"] = a_report.return_type ? nlohmann::ordered_json(*a_report.return_type)
                                                   : nlohmann::ordered_json(nullptr);
        json["candidate_list"] =
            a_report.return_type && *a_report.return_type == 0 ? a_report.candidate_list : "";
    }
    json["timings_ms"] = {{"syntax_check", a_report.syntax_check_ms},
                          {"run", a_report.run_ms},
                          {"total", a_report.total_ms}};
    json["error"] = run_error_text(a_report);
    json["diagnosis"] = diagnosis_json(a_report.findings);
    json["sandbox"] = utility::sandbox_mode_name(a_report.sandbox);
    return json;
}

void print_json(std::ostream& a_out, const nlohmann::ordered_json& a_json) {
    // Written straight to the stream, as dump(2, ' ', false, replace) would give it, without
    // holding the whole text once more.
    nlohmann::detail::serializer<nlohmann::ordered_json> serializer(
        nlohmann::detail::output_adapter<char>(a_out), ' ',
        nlohmann::ordered_json::error_handler_t::replace);
    serializer.dump(a_json, true, false, 2);
    a_out << '\n';
}

void print_panes(const debugger::pane_text_sink& a_panes) {
    std::cout << a_panes.std_output_utf8();
    std::cout.flush();
    std::cerr << a_panes.std_error_output_utf8();
    std::cerr.flush();
}

void print_candidates(std::ostream& a_out, const debugger::run_report& a_report) {
    if (!a_report.document_parsed) {
        a_out << "-- the run's output is not a result document: no candidates\n";
        return;
    }
    a_out << "-- " << a_report.candidates.size()
          << (a_report.candidates.size() == 1 ? " candidate\n" : " candidates\n");
    std::size_t number = 0;
    for (const auto& candidate : a_report.candidates) {
        a_out << ++number << ". " << string_encode::to_utf8_marked(candidate.title) << '\n';
        const auto field = [&a_out](const char* a_name, const utf16_string& a_value) {
            if (!a_value.empty()) {
                a_out << "   " << a_name << ": " << string_encode::to_utf8_marked(a_value) << '\n';
            }
        };
        field("comment", candidate.comment);
        field("alternative", candidate.alternative);
        field("alternative_alias", candidate.alternative_alias);
        field("alternative_type", candidate.alternative_type);
        field("info", candidate.info);
    }
}

} // namespace qiro_plugin::cli

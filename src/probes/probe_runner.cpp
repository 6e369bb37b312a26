#include "probes/probe_runner.hpp"

#include "bridges/protocol.hpp"
#include "platform/command_runner.hpp"
#include "platform/data_folder.hpp"
#include "probes/stored_probes.hpp"
#include "runtime/script_file_access.hpp"
#include "runtime/unique_file_name.hpp"
#include "text/string_encode.hpp"
#include "text/url_xml_escape.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace qiro_plugin::probes {

namespace {

constexpr std::string_view report_mark = "QIRO-PROBE:";

std::string quote(const std::string& a_value) {
    return QIRO_PLUGIN_SCRIPT_COMMAND_LINE_QUOTATION_START + a_value +
           QIRO_PLUGIN_SCRIPT_COMMAND_LINE_QUOTATION_END;
}

std::string text_of(const std::vector<char>& a_bytes) {
    return std::string(a_bytes.begin(), std::find(a_bytes.begin(), a_bytes.end(), '\0'));
}

template <typename Value>
std::optional<Value> optional_member(const nlohmann::json& a_object, const char* a_name) {
    const auto found = a_object.find(a_name);
    if (found == a_object.end() || found->is_null()) {
        return std::nullopt;
    }
    return found->get<Value>();
}

std::optional<diagnosis::probe_evidence::failure> read_failure(const nlohmann::json& a_report,
                                                               const char* a_name) {
    const auto found = a_report.find(a_name);
    if (found == a_report.end() || !found->is_object() || found->value("ok", false)) {
        return std::nullopt;
    }
    diagnosis::probe_evidence::failure failure;
    failure.type = found->value("type", std::string());
    failure.module = optional_member<std::string>(*found, "module").value_or("");
    failure.message = found->value("message", std::string());
    failure.file = optional_member<std::string>(*found, "file");
    failure.line = optional_member<std::uint32_t>(*found, "line");
    failure.column = optional_member<std::uint32_t>(*found, "column");
    return failure;
}

std::optional<diagnosis::probe_evidence::source_line> read_line(const nlohmann::json& a_object) {
    const auto line = optional_member<std::uint32_t>(a_object, "line");
    if (!line) {
        return std::nullopt;
    }
    return diagnosis::probe_evidence::source_line{
        *line, optional_member<std::string>(a_object, "found").value_or("")};
}

} // namespace

const std::string& probe_script(std::string_view a_language) {
    static const std::string perl(bridge::stored::probe_perl, bridge::stored::probe_perl_size);
    static const std::string ruby(bridge::stored::probe_ruby, bridge::stored::probe_ruby_size);
    static const std::string python(bridge::stored::probe_python,
                                    bridge::stored::probe_python_size);
    static const std::string none;
    if (a_language == "perl") {
        return perl;
    }
    if (a_language == "ruby") {
        return ruby;
    }
    return a_language == "python" ? python : none;
}

diagnosis::probe_evidence read_probe_output(std::string_view a_std_output) {
    diagnosis::probe_evidence evidence;
    const std::size_t mark = a_std_output.rfind(report_mark);
    if (mark == std::string_view::npos) {
        return evidence;
    }
    const std::string_view rest = a_std_output.substr(mark + report_mark.size());
    const auto report = nlohmann::json::parse(rest.substr(0, rest.find('\n')), nullptr, false);
    if (!report.is_object()) {
        return evidence;
    }
    try {
        evidence.answered = true;
        evidence.compile_failure = read_failure(report, "compile");
        evidence.load_failure = read_failure(report, "load");
        evidence.call_failure = read_failure(report, "call");
        if (const auto entry = report.find("entry"); entry != report.end() && entry->is_object()) {
            evidence.entry_found = entry->value("found", false);
            evidence.entry_name = entry->value("name", std::string());
            evidence.module_found = entry->value("module", true);
            if (const auto shape = entry->find("shape");
                shape != entry->end() && shape->is_object()) {
                diagnosis::probe_evidence::entry_shape declared;
                declared.kind = shape->value("kind", std::string());
                declared.declaration = read_line(*shape);
                declared.takes = optional_member<std::uint32_t>(*shape, "takes");
                evidence.shape = declared;
            }
        }
        if (const auto returned = report.find("returned");
            returned != report.end() && returned->is_object()) {
            diagnosis::probe_evidence::returned_shape shape;
            shape.type = returned->value("type", std::string());
            shape.keys = optional_member<std::vector<std::string>>(*returned, "keys");
            shape.candidate_type = optional_member<std::string>(*returned, "candidate");
            shape.ok = returned->value("ok", false);
            shape.flattened = optional_member<std::uint64_t>(*returned, "flattened");
            if (const auto slip = returned->find("slip");
                slip != returned->end() && slip->is_object()) {
                shape.slip = read_line(*slip);
            }
            evidence.returned = shape;
        }
        for (const auto& item : report.value("candidates", nlohmann::json::array())) {
            diagnosis::probe_evidence::candidate_note note;
            note.index = item.value("index", 0U);
            note.kept = item.value("kept", true);
            note.field = optional_member<std::string>(item, "field").value_or("");
            note.reason = item.value("reason", std::string());
            note.type = optional_member<std::string>(item, "type").value_or("");
            note.length = optional_member<std::uint64_t>(item, "length");
            note.limit = optional_member<std::uint64_t>(item, "limit");
            evidence.candidates.push_back(std::move(note));
        }
    } catch (const nlohmann::json::exception&) {
        // A report of the wrong form says nothing we can rely on.
        return diagnosis::probe_evidence{};
    }
    return evidence;
}

diagnosis::probe_evidence run_probe(const probe_request& a_request) {
    const std::string& script = probe_script(a_request.language);
    if (script.empty()) {
        return {};
    }
    const std::string folder = utility::get_qiro_lumen_data_folder();
    const std::string extension = a_request.language == "perl"   ? ".pl"
                                  : a_request.language == "ruby" ? ".rb"
                                                                 : ".py";
    const std::string file_name = get_unique_file_name(folder, extension);
    if (file_name.empty()) {
        return {};
    }
    std::string command_line = a_request.language;
    command_line += quote(file_name);
    command_line += quote(utility::url_encode(a_request.plugin_path));
    command_line += quote(a_request.method);
    for (const auto& value : a_request.values) {
        command_line += quote(utility::url_encode(value));
    }
    const script_file_access probe_file(folder, file_name, script);
    std::vector<char> std_output;
    std::vector<char> std_error;
    utility::run_command_report report;
    const int result = utility::run_command(
        command_line, string_encode::MultiByteFilePathToWideChar(folder.c_str()), std_output,
        std_error, true, &report);
    if (result != 0) {
        diagnosis::probe_evidence evidence;
        evidence.timed_out = report.timed_out;
        evidence.std_error = report.partial_std_error;
        return evidence;
    }
    auto evidence = read_probe_output(text_of(std_output));
    evidence.std_error = text_of(std_error);
    return evidence;
}

} // namespace qiro_plugin::probes

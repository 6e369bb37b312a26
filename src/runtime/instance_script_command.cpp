#include "bridges/protocol.hpp"
#include "platform/command_executor.hpp"
#include "platform/command_runner.hpp"
#include "platform/data_folder.hpp"
#include "platform/file_path.hpp"
#include "runtime/instance_script_impl.hpp"
#include "runtime/script_file_access.hpp"
#include "runtime/unique_file_name.hpp"
#include "text/string_encode.hpp"
#include "text/url_xml_escape.hpp"

#include <algorithm>
#include <optional>
#include <vector>

namespace qiro_plugin {

namespace {

constexpr int RUN_COMMAND_SUCCESS = 0;
constexpr int RUN_COMMAND_NOT_STARTED = 3;

// The runner ends a stream that produced bytes with one zero byte; the text stops at the first.
std::string text_of_stream(const std::vector<char>& a_bytes) {
    return std::string(a_bytes.begin(), std::find(a_bytes.begin(), a_bytes.end(), '\0'));
}

} // namespace

std::string quote_argument(const std::string& a_value) {
    return QIRO_PLUGIN_SCRIPT_COMMAND_LINE_QUOTATION_START + a_value +
           QIRO_PLUGIN_SCRIPT_COMMAND_LINE_QUOTATION_END;
}

std::string make_text_argument(const utf16_string& a_text) {
    return quote_argument(
        utility::url_encode(string_encode::WideCharToMultiByteUTF8(a_text.c_str())));
}

std::string qiro_plugin_instance_script::impl::make_preference_path_argument() const {
    const utf16_string path = utility::get_convert_path(
        utility::create_plugin_preference_path(m_plugin_preference_data.name));
    return make_text_argument(path);
}

std::string qiro_plugin_instance_script::impl::run_command_rapper(const std::string& a_method,
                                                                  const std::string& a_arguments,
                                                                  bool a_is_timeout) {
    m_is_last_document_parsed = false;
    m_last_command_result = -1;
    if (!utility::check_file_existence(m_plugin_file_path)) {
        return {};
    }
    const std::string bridge_file_name =
        get_unique_file_name(m_data_folder, m_scripy_extension_name);
    if (bridge_file_name.empty()) {
        return {};
    }

    // Python's bridge decodes the path as UTF-8; the others hand the bytes to the file system.
    const utf16_string plugin_path = utility::get_convert_path(m_plugin_file_path);
    const std::string plugin_path_bytes =
        m_script_command_name == "python"
            ? string_encode::WideCharToMultiByteUTF8(plugin_path.c_str())
            : string_encode::WideCharToMultiByteFilePath(plugin_path.c_str());

    // The bridge file is named bare because the command runs inside the data folder.
    std::string command_line = m_script_command_name;
    command_line += quote_argument(bridge_file_name);
    command_line += quote_argument(utility::url_encode(plugin_path_bytes));
    if (!a_method.empty()) {
        command_line += quote_argument(a_method);
    }
    command_line += a_arguments;

    // A fast mode that answers the command from memory reads no file; every other run has one.
    std::optional<script_file_access> bridge_file;
    if (utility::command_executor* executor = utility::offered_command_executor();
        executor == nullptr ||
        !executor->answers_without_script_file(command_line, m_script_code)) {
        bridge_file.emplace(m_data_folder, bridge_file_name, m_script_code);
    }
    std::vector<char> std_output;
    std::vector<char> std_error;
    m_last_command_report = utility::run_command_report{};
    const int result = utility::run_command(
        command_line, string_encode::MultiByteFilePathToWideChar(m_data_folder.c_str()), std_output,
        std_error, a_is_timeout, &m_last_command_report);
    m_last_command_result = result;
    if (result == RUN_COMMAND_SUCCESS) {
        m_last_std_output = text_of_stream(std_output);
        m_last_std_err_output = text_of_stream(std_error);
        return m_last_std_output;
    }
    if (result == RUN_COMMAND_NOT_STARTED) {
        m_load_error_message =
            m_plugin_file_name + u" : [SCRIPT] " +
            string_encode::MultiByteUTF8ToWideChar(m_script_command_name.c_str()) +
            u"コマンドが実行できませんでした";
    }
    return {};
}

} // namespace qiro_plugin

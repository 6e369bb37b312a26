#include "runtime/plugin_instance_script.hpp"

#include "platform/data_folder.hpp"
#include "platform/failed_assertion.hpp"
#include "platform/file_path.hpp"
#include "runtime/instance_script_impl.hpp"
#include "runtime/message_script.hpp"
#include "text/string_encode.hpp"
#include "text/wide_string.hpp"

#include <stdexcept>
#include <utility>

namespace qiro_plugin {

namespace {

constexpr std::size_t SHORT_NAME_LIMIT = 16;

bool has_extension(const utf16_string& a_file_name, const utf16_string& a_extension) {
    return a_file_name.size() > a_extension.size() &&
           utility::is_same_extensions(a_file_name.substr(a_file_name.size() - a_extension.size()),
                                       a_extension);
}

} // namespace

qiro_plugin_instance_script::qiro_plugin_instance_script(const utf16_string& a_folder,
                                                         const utf16_string& a_file_name,
                                                         const std::string& a_command_name,
                                                         const std::string& a_extension,
                                                         const utf16_string& a_module_type,
                                                         const std::string& a_script_code)
    : p_impl(std::make_unique<impl>()) {
    p_impl->m_script_command_name = a_command_name;
    p_impl->m_scripy_extension_name = a_extension;
    p_impl->m_script_code = a_script_code;
    p_impl->m_plugin_file_path = a_folder + a_file_name;
    p_impl->m_data_folder = utility::get_qiro_lumen_data_folder();
    p_impl->m_plugin_file_name = a_file_name;
    p_impl->m_module_type = a_module_type;

    const utf16_string extension = string_encode::MultiByteFilePathToWideChar(a_extension.c_str());
    if (!has_extension(a_file_name, extension)) {
        return;
    }
    if (!utility::check_file_existence(p_impl->m_plugin_file_path)) {
        p_impl->m_load_error_message = a_file_name + u" : [SCRIPT] ファイルが見つかりませんでした";
        return;
    }
    p_impl->m_plugin_preference_data = p_impl->get_plugin_preference();
    if (p_impl->m_plugin_preference_data.name.empty()) {
        p_impl->m_plugin_preference_data.name = a_file_name;
    }
    p_impl->m_is_load = 1;
}

qiro_plugin_instance_script::~qiro_plugin_instance_script() = default;

bool qiro_plugin_instance_script::is_load() const {
    return p_impl->m_is_load != 0;
}

utf16_string qiro_plugin_instance_script::get_load_error_message() const {
    return p_impl->m_load_error_message;
}

bool qiro_plugin_instance_script::run_initialize() {
    QIRO_ASSERT(is_load());
    return true;
}

bool qiro_plugin_instance_script::run_destroy() {
    QIRO_ASSERT(is_load());
    return true;
}

utf16_string qiro_plugin_instance_script::run_get_name() const {
    QIRO_ASSERT(is_load());
    return p_impl->m_plugin_preference_data.name;
}

utf16_string qiro_plugin_instance_script::run_get_short_name() const {
    QIRO_ASSERT(is_load());
    if (!p_impl->m_plugin_preference_data.name_short.empty()) {
        return p_impl->m_plugin_preference_data.name_short;
    }
    utf16_string name = run_get_name();
    if (name.size() > SHORT_NAME_LIMIT) {
        name.resize(SHORT_NAME_LIMIT - 1);
        name += u'\u2026';
    }
    return name;
}

utf16_string qiro_plugin_instance_script::run_get_description() const {
    QIRO_ASSERT(is_load());
    return p_impl->m_plugin_preference_data.description;
}

utf16_string qiro_plugin_instance_script::run_get_copyright() const {
    QIRO_ASSERT(is_load());
    return p_impl->m_plugin_preference_data.copyright;
}

utf16_string qiro_plugin_instance_script::run_get_module_type() const {
    return p_impl->m_module_type;
}

std::int32_t qiro_plugin_instance_script::run_get_major_version() const {
    QIRO_ASSERT(is_load());
    return static_cast<std::int32_t>(p_impl->m_plugin_preference_data.major_version);
}

std::int32_t qiro_plugin_instance_script::run_get_minor_version() const {
    QIRO_ASSERT(is_load());
    return static_cast<std::int32_t>(p_impl->m_plugin_preference_data.minor_version);
}

bool qiro_plugin_instance_script::is_enable_palette() const {
    return false;
}

bool qiro_plugin_instance_script::is_enable_processing() const {
    QIRO_ASSERT(is_load());
    return true;
}

bool qiro_plugin_instance_script::is_enable_callback() const {
    QIRO_ASSERT(is_load());
    return p_impl->m_plugin_preference_data.callback;
}

std::set<utf16_string> qiro_plugin_instance_script::get_detailed_processing_type() const {
    QIRO_ASSERT(is_load());
    return {u"候補取得"};
}

bool qiro_plugin_instance_script::is_enable_preference() const {
    return p_impl->m_plugin_preference_data.preference;
}

bool qiro_plugin_instance_script::is_corresponding_auto_search() const {
    QIRO_ASSERT(is_load());
    return true;
}

bool qiro_plugin_instance_script::is_digital_signature() const {
    return false;
}

std::shared_ptr<abstract_qiro_plugin_message>
qiro_plugin_instance_script::alloc_qiro_plugin_message(void* /*a_data*/, int /*a_size*/) const {
    return std::make_shared<message_script>();
}

// The palette getter reports with the request setter's text, which framework hosts expect.
qiro_plugin_receive_palette_data qiro_plugin_instance_script::get_plugin_receive_palette_data(
    std::shared_ptr<abstract_qiro_plugin_message> /*a_message*/) const {
    throw std::runtime_error("qiro_plugin_instance_script::set_plugin_request_data() : fault.");
}

void qiro_plugin_instance_script::set_plugin_request_data(
    std::shared_ptr<abstract_qiro_plugin_message> /*a_message*/,
    const qiro_plugin_request& /*a_request*/) {
    throw std::runtime_error("qiro_plugin_instance_script::set_plugin_request_data() : fault.");
}

void qiro_plugin_instance_script::set_plugin_error_data(
    std::shared_ptr<abstract_qiro_plugin_message> /*a_message*/) {}

void qiro_plugin_instance_script::set_quit_request_for_palette() {
    throw std::runtime_error(
        "qiro_plugin_instance_script::set_quit_request_for_palette() : fault.");
}

const std::string& qiro_plugin_instance_script::get_last_std_output_string() const {
    return p_impl->m_last_std_output;
}

const std::string& qiro_plugin_instance_script::get_last_std_err_output_string() const {
    return p_impl->m_last_std_err_output;
}

std::string qiro_plugin_instance_script::release_last_std_output_string() {
    return std::exchange(p_impl->m_last_std_output, {});
}

std::string qiro_plugin_instance_script::release_last_std_err_output_string() {
    return std::exchange(p_impl->m_last_std_err_output, {});
}

bool qiro_plugin_instance_script::is_last_document_parsed() const {
    return p_impl->m_is_last_document_parsed;
}

const utility::run_command_report& qiro_plugin_instance_script::get_last_command_report() const {
    return p_impl->m_last_command_report;
}

int qiro_plugin_instance_script::get_last_command_result() const {
    return p_impl->m_last_command_result;
}

const std::string& qiro_plugin_instance_script::get_script_command_name() const {
    return p_impl->m_script_command_name;
}

} // namespace qiro_plugin

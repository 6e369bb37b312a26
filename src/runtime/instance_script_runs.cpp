#include "bridges/protocol.hpp"
#include "platform/failed_assertion.hpp"
#include "runtime/bridge_values.hpp"
#include "runtime/instance_script_impl.hpp"
#include "runtime/message_script.hpp"
#include "text/wide_string.hpp"
#include "xml/script_load.hpp"

#include <stdexcept>

namespace qiro_plugin {

namespace {

// Every value but the port is URL-encoded; the bridges read the port as plain digits.
std::string make_value_arguments(const std::vector<bridge_value>& a_values) {
    std::string arguments;
    for (const auto& value : a_values) {
        arguments += value.is_port
                         ? quote_argument(std::string(value.text.begin(), value.text.end()))
                         : make_text_argument(value.text);
    }
    return arguments;
}

message_script::candidate
make_candidate(const xml_access_library::script_load::candidate_data& a_data) {
    message_script::candidate item;
    item.title = a_data.title;
    item.comment = a_data.comment;
    item.alternative = a_data.alternative;
    item.alternative_alias = a_data.alternative_alias;
    item.alternative_type = a_data.alternative_type;
    item.info = a_data.info;
    return item;
}

// Adds the candidates of a run result document; false when the output is not one. An output
// longer than the reader takes throws from its constructor, and that reaches the caller: a
// result of that size means the plug-in went wrong, not that it found nothing.
bool add_candidates(const std::string& a_output, message_script& a_message) {
    xml_access_library::script_load reader(a_output);
    if (!reader.parse()) {
        return false;
    }
    for (const auto& data : reader.get_candidate_data_array()) {
        a_message.add_candidate(make_candidate(data));
    }
    return true;
}

} // namespace

bool qiro_plugin_instance_script::syntax_check() {
    const std::string output =
        p_impl->run_command_rapper(QIRO_PLUGIN_SCRIPT_METHOD_NAME_SYNTAX_CHECK, {}, true);
    const std::string expected =
        utility::toupper_string(std::string(QIRO_PLUGIN_SCRIPT_SYNTAX_OK_MESSAGE));
    if (utility::toupper_string(output).find(expected) == 0) {
        return true;
    }
    // A text from an earlier failure says more than this one, so it is kept, and so is the
    // loaded flag that went with it.
    if (p_impl->m_load_error_message.empty()) {
        p_impl->m_load_error_message =
            p_impl->m_plugin_file_name +
            u" : [SCRIPT] スクリプトファイルのプラグインの文法チェックに失敗しました";
        p_impl->m_is_load = 0;
    }
    return false;
}

bool qiro_plugin_instance_script::run_processing(
    std::shared_ptr<abstract_qiro_plugin_message> a_message, const qiro_plugin_request& a_request,
    const qiro_plugin_message_quit_flag& /*a_quit_flag*/) {
    QIRO_ASSERT(is_load());
    if (!a_message) {
        throw std::runtime_error("qiro_plugin_instance_script::run_processing() : fault1.");
    }
    auto* message = dynamic_cast<message_script*>(a_message.get());
    if (message == nullptr) {
        throw std::runtime_error("qiro_plugin_instance_script::run_processing() : fault2.");
    }

    std::string arguments = make_value_arguments(bridge_values_of(a_request));
    if (p_impl->m_plugin_preference_data.preference) {
        arguments += p_impl->make_preference_path_argument();
    }

    const std::string output =
        p_impl->run_command_rapper(QIRO_PLUGIN_SCRIPT_METHOD_NAME_RUN_PROCESS, arguments, true);
    if (!output.empty()) {
        p_impl->m_is_last_document_parsed = add_candidates(output, *message);
    }
    return true;
}

qiro_plugin_receive_data qiro_plugin_instance_script::get_plugin_receive_data(
    std::shared_ptr<abstract_qiro_plugin_message> a_message, unsigned int a_plugin_index,
    unsigned int a_generation_id) const {
    QIRO_ASSERT(is_load());
    qiro_plugin_receive_data receive_data;
    if (!a_message) {
        throw std::runtime_error(
            "qiro_plugin_instance_script::get_plugin_receive_data() : fault1.");
    }
    const auto* message = dynamic_cast<const message_script*>(a_message.get());
    if (message == nullptr) {
        throw std::runtime_error(
            "qiro_plugin_instance_script::get_plugin_receive_data() : fault2.");
    }
    receive_data.return_type = static_cast<std::uint32_t>(message->get_return_type());
    if (receive_data.return_type != 0) {
        return receive_data;
    }
    receive_data.xml_string =
        message->make_xml_string_to_candidate(a_plugin_index, a_generation_id);
    return receive_data;
}

bool qiro_plugin_instance_script::run_callback(
    std::shared_ptr<abstract_qiro_plugin_message> /*a_message*/,
    const qiro_plugin_callback& a_callback, const qiro_plugin_message_quit_flag& /*a_quit_flag*/) {
    QIRO_ASSERT(is_load());
    QIRO_ASSERT_TEXT(p_impl->m_plugin_preference_data.callback,
                     "p_impl->m_plugin_preference_data.m_callback");

    std::string arguments = make_value_arguments(bridge_values_of(a_callback));
    if (p_impl->m_plugin_preference_data.preference) {
        arguments += p_impl->make_preference_path_argument();
    }
    p_impl->run_command_rapper(QIRO_PLUGIN_SCRIPT_METHOD_NAME_RUN_CALLBACK, arguments, false);
    return true;
}

bool qiro_plugin_instance_script::run_preference(void* /*a_parent*/) {
    // Unlike the other runs this one does not require the loaded flag.
    QIRO_ASSERT_TEXT(p_impl->m_plugin_preference_data.preference,
                     "p_impl->m_plugin_preference_data.m_preference");
    p_impl->run_command_rapper(QIRO_PLUGIN_SCRIPT_METHOD_NAME_RUN_PREFERENCE,
                               p_impl->make_preference_path_argument(), false);
    return true;
}

} // namespace qiro_plugin

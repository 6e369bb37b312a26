// Feeds arbitrary bytes to the result document reader and checks what it promises about its
// records, and that the candidates it reads make a candidate-list document that reads back.

#include "candidate_list_check.hpp"
#include "fuzz_require.hpp"
#include "xml/script_load.hpp"

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size) {
    const std::string text(reinterpret_cast<const char*>(a_data), a_size);
    xml_access_library::script_load reader(text);
    require(reader.get_candidate_data_array().empty());
    if (!reader.parse()) {
        require(reader.get_candidate_data_array().empty());
        return 0;
    }
    const auto candidates = reader.get_candidate_data_array();
    require(candidates.size() <= 101);
    for (const auto& candidate : candidates) {
        require(candidate.title.size() <= 100);
        require(candidate.comment.size() <= 10240);
        require(candidate.alternative.size() <= 512);
        require(candidate.alternative_alias.size() <= 100);
        require(candidate.info.size() <= 64);
        require(candidate.alternative_type.empty() ||
                candidate.alternative_type == u"definite_string" ||
                candidate.alternative_type == u"url_jump_string");
        require(!candidate.alternative_type.empty() || candidate.alternative.empty());
    }
    // A reader that produced records refuses a second parse and keeps them.
    require(reader.parse() == candidates.empty());
    require(reader.get_candidate_data_array().size() == candidates.size());

    qiro_plugin::message_script message;
    for (const auto& read : candidates) {
        message.add_candidate({read.title, read.comment, read.alternative, read.alternative_alias,
                               read.alternative_type, read.info});
    }
    candidate_list_check::require_readable(message, 3, 17);
    return 0;
}

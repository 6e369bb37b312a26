#pragma once
// The written forms a soak runs a plug-in with: built in (edge), from SKK-JISYO.L (skk), or
// from a file of one form per line.

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace qiro_plugin::soak {

struct soak_input {
    std::string written_form; // UTF-8
    std::string reading;      // UTF-8; empty: the manager's own request
    std::string note;         // why an edge form is there; empty for the others
};

// A corpus that cannot be read; the text says why and what to do.
class corpus_error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

inline constexpr char skk_dictionary_path[] = "/usr/share/skk/SKK-JISYO.L";

// The built-in forms that once broke real programs, each with its note.
std::vector<soak_input> edge_corpus();

// The written forms of an SKK dictionary (EUC-JP bytes) with their readings, in the file's
// order, each (form, reading) once. Entries with okurigana are left out: their written form is
// only a stem. Annotations after ";" and Lisp forms are dropped; a line that is not EUC-JP is
// skipped and counted in a_skipped_lines.
std::vector<soak_input> parse_skk_dictionary(std::string_view a_euc_jp,
                                             std::size_t* a_skipped_lines = nullptr);
// The file at a_path (skk_dictionary_path for the corpus "skk"); a missing file names the
// Debian package skkdic.
std::vector<soak_input> read_skk_dictionary(const std::string& a_path);

// One form per line (UTF-8), an optional TAB and its reading; empty lines are skipped, a final
// CR is dropped.
std::vector<soak_input> parse_form_lines(std::string_view a_text);

// "edge", "skk", or a file of forms.
std::vector<soak_input> load_corpus(const std::string& a_name_or_file);

// a_limit inputs drawn without repetition, the same ones for the same seed, in corpus order;
// all of them when there is no limit or the limit is not smaller.
std::vector<soak_input> sample_inputs(std::vector<soak_input> a_inputs,
                                      std::optional<std::size_t> a_limit, std::uint64_t a_seed);

} // namespace qiro_plugin::soak

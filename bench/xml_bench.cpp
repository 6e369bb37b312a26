// The result document reader on a bridge document at the 10 MiB limit against a bare libxml2
// parse of the same text: the difference is what the reader's walk and copies add. The
// *_peak_memory cases run once in a child process and report its peak resident growth.

#include "xml/script_load.hpp"

#include <benchmark/benchmark.h>
#include <libxml/parser.h>

#include <fstream>
#include <functional>
#include <malloc.h>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr std::size_t k_document_size = 10485760;

std::string escaped(const std::string& a_text) {
    std::string out;
    for (const char c : a_text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\'':
            out += "&apos;";
            break;
        default:
            out += c;
        }
    }
    return out;
}

// Items as the bridges write them, cycling through the shapes a dictionary plug-in returns,
// until the document reaches exactly the reader's size limit.
std::string bridge_document() {
    std::string document = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n\n<itemlist>\n";
    const std::string closing = "</itemlist>\n";
    const std::string xhtml_comment = escaped(
        "<?xml version=\"1.0\" encoding=\"UTF-8\" ?><html xmlns=\"http://www.w3.org/1999/xhtml\">"
        "<head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=UTF-8\" /></head>"
        "<body><h2>\xE6\xBC\xA2\xE5\xAD\x97</h2>\xE8\xAA\xAC\xE6\x98\x8E&lt;br "
        "/&gt;</body></html>");
    for (std::size_t i = 0;; ++i) {
        std::string item =
            "\t<item type=\"script_candidate\">\n\t\t<title>\xE5\x80\x99\xE8\xA3\x9C" +
            std::to_string(i) + "</title>\n";
        if (i % 4 == 0) {
            item += "\t\t<comment>" + xhtml_comment + "</comment>\n";
        }
        if (i % 2 == 0) {
            item += "\t\t<alternative type=\"url_jump_string\">http://example.com/?q=" +
                    std::to_string(i) + "&amp;x=1</alternative>\n";
            item += "\t\t<alternative_alias>\xE8\xA9\xB3\xE7\xB4\xB0</alternative_alias>\n";
        }
        item += "\t\t<info>[\xE5\x90\x8D\xE8\xA9\x9E]</info>\n\t</item>\n";
        if (document.size() + item.size() + closing.size() > k_document_size) {
            break;
        }
        document += item;
    }
    document += closing;
    document.append(k_document_size - document.size(), '\n');
    return document;
}

const std::string& shared_document() {
    static const std::string document = bridge_document();
    return document;
}

constexpr int k_bare_options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
// The reader's own options also drop blank runs at parse time and keep short texts inline.
constexpr int k_reader_options = k_bare_options | XML_PARSE_NOBLANKS | XML_PARSE_COMPACT;

void bare_parse(const std::string& a_document, int a_options = k_bare_options) {
    xmlDoc* document = xmlReadMemory(a_document.data(), static_cast<int>(a_document.size()),
                                     nullptr, nullptr, a_options);
    benchmark::DoNotOptimize(document);
    xmlFreeDoc(document);
}

std::size_t reader_parse(const std::string& a_document) {
    xml_access_library::script_load reader(a_document);
    if (!reader.parse()) {
        return 0;
    }
    return reader.get_candidate_data_array().size();
}

void bare_xml_read_memory(benchmark::State& a_state) {
    const std::string& document = shared_document();
    for (auto _ : a_state) {
        bare_parse(document);
    }
    std::size_t items = 0;
    for (auto at = document.find("<item "); at != std::string::npos;
         at = document.find("<item ", at + 1)) {
        ++items;
    }
    a_state.counters["items"] = static_cast<double>(items);
    a_state.SetBytesProcessed(static_cast<std::int64_t>(a_state.iterations() * document.size()));
}

void bare_xml_read_memory_reader_options(benchmark::State& a_state) {
    const std::string& document = shared_document();
    for (auto _ : a_state) {
        bare_parse(document, k_reader_options);
    }
    a_state.SetBytesProcessed(static_cast<std::int64_t>(a_state.iterations() * document.size()));
}

void script_load_parse(benchmark::State& a_state) {
    const std::string& document = shared_document();
    for (auto _ : a_state) {
        const std::size_t count = reader_parse(document);
        if (count != 101) {
            a_state.SkipWithError("the reader did not return 101 records");
            break;
        }
    }
    a_state.SetBytesProcessed(static_cast<std::int64_t>(a_state.iterations() * document.size()));
}

std::size_t status_kib(const char* a_field) {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word) {
        if (word == a_field) {
            std::size_t value = 0;
            status >> value;
            return value;
        }
    }
    return 0;
}

// Runs the action in a child that already holds the document, and returns the growth of the
// child's peak resident size over its resident size before the action, in bytes.
double peak_growth(const std::function<void()>& a_action) {
    auto* shared = static_cast<double*>(
        mmap(nullptr, sizeof(double), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    *shared = -1;
    const pid_t child = fork();
    if (child == 0) {
        // Heap the earlier cases freed but malloc kept would hide the action's growth.
        malloc_trim(0);
        std::ofstream("/proc/self/clear_refs") << "5";
        const std::size_t before = status_kib("VmRSS:");
        a_action();
        *shared = static_cast<double>(status_kib("VmHWM:") - before) * 1024.0;
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const double growth = *shared;
    munmap(shared, sizeof(double));
    return growth;
}

void report_peak(benchmark::State& a_state, const std::function<void()>& a_action) {
    const std::string& document = shared_document();
    double growth = 0;
    for (auto _ : a_state) {
        growth = peak_growth(a_action);
    }
    a_state.counters["peak_growth_MiB"] = growth / 1048576.0;
    a_state.counters["peak_per_document_byte"] = growth / static_cast<double>(document.size());
}

void bare_xml_read_memory_peak_memory(benchmark::State& a_state) {
    report_peak(a_state, [] { bare_parse(shared_document()); });
}

void script_load_parse_peak_memory(benchmark::State& a_state) {
    report_peak(a_state, [] { benchmark::DoNotOptimize(reader_parse(shared_document())); });
}

} // namespace

BENCHMARK(bare_xml_read_memory)->Unit(benchmark::kMillisecond)->MinTime(3);
BENCHMARK(bare_xml_read_memory_reader_options)->Unit(benchmark::kMillisecond)->MinTime(3);
BENCHMARK(script_load_parse)->Unit(benchmark::kMillisecond)->MinTime(3);
BENCHMARK(bare_xml_read_memory_peak_memory)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(script_load_parse_peak_memory)->Unit(benchmark::kMillisecond)->Iterations(1);

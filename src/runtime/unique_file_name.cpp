#include "runtime/unique_file_name.hpp"

#include "runtime/sha_hash.hpp"

#include <sys/random.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>

namespace qiro_plugin {

namespace {

bool draw_random_number(std::uint64_t& a_number) {
    std::size_t filled = 0;
    auto* bytes = reinterpret_cast<unsigned char*>(&a_number);
    while (filled < sizeof a_number) {
        const ssize_t count = getrandom(bytes + filled, sizeof a_number - filled, 0);
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        filled += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

std::string get_unique_file_name(const std::string& /*a_folder*/, const std::string& a_extension) {
    std::uint64_t number = 0;
    if (!draw_random_number(number)) {
        return {};
    }
    const std::string name =
        create_sha_hash("qiro_lumen_script_" + std::to_string(number)) + a_extension;
    // The clash test looks at the bare name, in the current folder, not in the data folder: a
    // file left there under this name is then met when the bridge file is written, which
    // takes it over when it holds the bridge (and removes it afterwards) and fails loudly when
    // it holds anything else, instead of every command failing in silence. No retry on a
    // clash: with 64 random bits one means something else is wrong.
    struct stat status {};
    if (lstat(name.c_str(), &status) == 0) {
        return {};
    }
    return name;
}

} // namespace qiro_plugin

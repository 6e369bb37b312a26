#pragma once
// The last lines of a running entry's standard error, as a progress view shows them.

#include <cstddef>
#include <string>
#include <string_view>

namespace qiro_plugin::debugger {

// How much of standard error a progress view gets: a plug-in that writes megabytes costs
// the window no more than this, at every update.
inline constexpr std::size_t live_std_error_lines = 4;
inline constexpr std::size_t live_std_error_bytes = 4096;

// The last a_lines lines of a_so_far (the last one may be unfinished), at most a_max_bytes of
// it, cut between characters: a character the child has not finished writing is left for the
// next look. Line ends are LF; bytes that are not UTF-8 become U+FFFD, so the text is always
// valid UTF-8.
std::string std_error_tail(std::string_view a_so_far, std::size_t a_lines = live_std_error_lines,
                           std::size_t a_max_bytes = live_std_error_bytes);

} // namespace qiro_plugin::debugger

#pragma once
// Joins an interpreter's debugger console, which connects to a listener of the tool, to the
// author: to whoever connects to a second listener, or to the terminal.

#include "debugger_support/loopback.hpp"

#include <memory>

namespace qiro_plugin::debugger_support {

class console_relay {
public:
    // Relays between the first connection to a_interpreter and a connection to a_author; when
    // the author leaves, the next connection to a_author takes over the console.
    console_relay(loopback_listener a_interpreter, loopback_listener a_author);
    // Relays between the first connection to a_interpreter and the terminal (descriptors owned
    // by the relay from now on); the end of the terminal's input ends the console.
    console_relay(loopback_listener a_interpreter, int a_terminal_in, int a_terminal_out);
    // Stops relaying and closes every connection.
    ~console_relay();
    console_relay(const console_relay&) = delete;
    console_relay& operator=(const console_relay&) = delete;

private:
    struct impl;
    std::unique_ptr<impl> p_impl;
};

} // namespace qiro_plugin::debugger_support

#pragma once
// One-shot timers on a window, scheduled and cancelled on the main thread through its owner.

#include "platform/framework/timer_owner.hpp"
#include "platform/framework/window_handle.hpp"

namespace qiro_plugin::utility {

// Starts a one-shot timer of a_milliseconds that calls a_handle->timer_timeout(a_identifier)
// and hands it to a_handle->add_timer; waits until the owner has it. Callable from any
// thread. A null handle is a failed assertion. Returns 1.
int set_timer(window_handle a_handle, int a_identifier, int a_milliseconds);

// Has a_handle->delete_timer(a_identifier) run on the main thread and waits for it.
// Callable from any thread. A null handle is a failed assertion. Returns 1.
int kill_timer(window_handle a_handle, int a_identifier);

} // namespace qiro_plugin::utility

#pragma once
// Running work on the application's main thread and waiting until it is done.

#include <functional>

namespace qiro_plugin::utility {

// Runs a_work at once on the main thread, or as a blocking queued call from any other
// thread, so the caller's main thread must be turning its event loop. Without an
// application object there is no main loop to hop to, and a_work runs on the caller's thread.
void run_on_main_thread(const std::function<void()>& a_work);

} // namespace qiro_plugin::utility

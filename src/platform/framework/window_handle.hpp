#pragma once
// The window handle of the plug-in framework: here, the object that owns a window's timers.

namespace qiro_plugin {

class abstract_timer_owner;

using window_handle = abstract_timer_owner*;

} // namespace qiro_plugin

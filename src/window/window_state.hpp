#pragma once
// The window's own state between sessions, in the user's configuration folder (QSettings).

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace qiro_plugin::debugger {

// Only what the window itself remembers; the plug-in manager's settings live elsewhere.
struct window_state {
    QByteArray geometry;
    QByteArray main_splitter;
    QByteArray pane_splitter;
    QString folder;
    QString plugin;
    QString written_form;
    QString reading;
    int tab = 0;
    bool run_on_save = false;
};

// $XDG_CONFIG_HOME/qiro/qiro-lumen-debugger.ini (~/.config when unset).
window_state load_window_state();
void save_window_state(const window_state& a_state);

// The plug-in folders the window listed last, the most recent first, at most five.
QStringList recent_folders();
// Puts a_folder first in that list (once) and returns the list.
QStringList add_recent_folder(const QString& a_folder);

} // namespace qiro_plugin::debugger

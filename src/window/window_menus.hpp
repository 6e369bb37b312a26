#pragma once
// The window's menu bar: File, Run, Help, with the shortcuts desktop users expect.

#include <QObject>

class QAction;
class QMenu;
class QMainWindow;

namespace qiro_plugin::debugger {

struct window_menus {
    QAction* new_plugin = nullptr;
    QAction* open_folder = nullptr;
    QMenu* open_recent = nullptr;
    QAction* save_output = nullptr;
    QAction* save_error = nullptr;
    QAction* reload = nullptr;
    QAction* settings = nullptr;
    QAction* quit = nullptr;
    QAction* run = nullptr;
    QAction* callback = nullptr;
    QAction* preference = nullptr;
    QAction* stop = nullptr;
    QAction* debug = nullptr;
    QAction* copy_attach = nullptr;
    QAction* run_on_save = nullptr;
    QAction* readme = nullptr;
    QAction* about = nullptr;
    QMenu* run_menu = nullptr;
};

// Adds the menus to the window's menu bar; the caller connects the actions.
window_menus make_window_menus(QMainWindow* a_window);

} // namespace qiro_plugin::debugger

#pragma once
// The author's tools around the faithful window: menus, preview, entries, stop, watch, history.

#include "core/plugin_discovery.hpp"
#include "diagnosis/run_evidence.hpp"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class QMainWindow;

namespace qiro_plugin::debugger {

class candidate_preview;
class folder_watch;
class history_panel;
class stop_control;
class ui_controller;
struct window_menus;

// What the command line asks of the window at start.
struct start_options {
    std::optional<QString> plugin_folder; // --plugin-folder
    std::optional<QString> run_file;      // --run FILE (a name in the folder, or a path)
    QString run_written_form;
    bool restore_state = true; // the remembered window state and inputs
};

class workbench : public QObject {
    Q_OBJECT

public:
    explicit workbench(ui_controller& a_controller);
    ~workbench() override;

    // Sets the folder, shows the window, then reloads (and runs when asked) once it is up.
    void start(const start_options& a_options);

    candidate_preview& preview() const;
    history_panel& history() const;
    stop_control& stopper() const;
    folder_watch& watch() const;
    const window_menus& menus() const;

    // The folder's path, shown in the title (the notice pane's "plugin folder").
    QString folder_path() const;
    // Opens another plug-in folder: the title, the watch and the menu follow.
    void open_folder(const QString& a_folder);
    // Makes a plug-in from a template in the plug-in folder and selects it; when the folder
    // is not writable, asks for another one (a_ask_folder) and opens it. Empty on success,
    // else the reason.
    QString create_plugin(int a_language, const QString& a_name);
    // Selects a plug-in of the menu by file name; false when the menu has no such item.
    bool select_plugin(const QString& a_file_name);
    void run_callback();
    void run_preference();
    // Runs the selected plug-in as Run does, with its interpreter's debugger waiting for an
    // editor on 127.0.0.1; the status line says where, and the attach configuration can be
    // copied while it waits.
    void run_debug();
    void save_state() const;

    // Replaces the folder question asked when the plug-in folder is not writable (tests).
    void set_folder_question(std::function<QString()> a_ask) { m_ask_folder = std::move(a_ask); }

protected:
    // Closing the window during a run stops the plug-in first, so the run ends at once.
    bool eventFilter(QObject* a_watched, QEvent* a_event) override;

signals:
    // The menu was filled again or another plug-in chosen.
    void selection_changed();

private:
    void after_menu_change();
    // Puts the folder listed now first in File › Open Recent Plug-in Folder.
    void remember_folder();
    // Sizes of the splitters whose state was not remembered, once the window has its size.
    void give_first_splitter_sizes(bool a_main, bool a_panes);
    void update_entries();
    void show_entry_summary(diagnosis::entry_kind a_entry, const struct run_report& a_report);
    void save_pane(bool a_error_pane);
    void show_readme();
    void show_about();
    void show_settings();
    void new_plugin();

    struct impl;
    std::unique_ptr<impl> p_impl;
    std::function<QString()> m_ask_folder;
};

} // namespace qiro_plugin::debugger

#pragma once
// Watches the plug-in folder and the chosen plug-in: reloads the menu, and runs on save.

#include "core/change_watch.hpp"

#include <QObject>

#include <functional>
#include <optional>

class QFileSystemWatcher;
class QTimer;

namespace qiro_plugin::debugger {

class folder_watch : public QObject {
    Q_OBJECT

public:
    explicit folder_watch(QObject* a_parent = nullptr);

    // The folder whose entries feed the menu, and the plug-in whose saves re-run it.
    void watch_folder(const QString& a_folder);
    void watch_plugin(const std::optional<plugin_entry>& a_plugin);
    // Whether saves of the plug-in or its document re-run it.
    void set_run_on_save(bool a_on) { m_run_on_save = a_on; }
    bool run_on_save() const { return m_run_on_save; }
    // Asked before acting: nothing is reloaded or re-run while a run is going.
    void set_busy_check(std::function<bool()> a_busy) { m_busy = std::move(a_busy); }

signals:
    // Files came, went or were renamed in the folder.
    void folder_changed();
    // The plug-in or its document was saved, the changes have settled, and no run is going.
    void rerun_due();

private:
    void on_path_changed();
    void check();
    void rewatch();

    QFileSystemWatcher* m_watcher;
    QTimer* m_check_timer;
    QString m_folder;
    std::optional<plugin_entry> m_plugin;
    file_snapshot m_plugin_files;
    change_debouncer m_rerun;
    change_debouncer m_reload;
    bool m_run_on_save = false;
    std::function<bool()> m_busy;
};

} // namespace qiro_plugin::debugger

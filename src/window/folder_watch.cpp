#include "window/folder_watch.hpp"

#include <QDir>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QTimer>

namespace qiro_plugin::debugger {

namespace {

QString path_text(const std::filesystem::path& a_path) {
    return QString::fromStdString(a_path.string());
}

} // namespace

folder_watch::folder_watch(QObject* a_parent)
    : QObject(a_parent), m_watcher(new QFileSystemWatcher(this)), m_check_timer(new QTimer(this)),
      m_reload(std::chrono::milliseconds(200)) {
    m_check_timer->setInterval(100);
    connect(m_check_timer, &QTimer::timeout, this, &folder_watch::check);
    connect(m_watcher, &QFileSystemWatcher::directoryChanged, this, [this] {
        m_reload.note_change(change_debouncer::clock::now());
        on_path_changed();
    });
    connect(m_watcher, &QFileSystemWatcher::fileChanged, this, &folder_watch::on_path_changed);
}

void folder_watch::watch_folder(const QString& a_folder) {
    m_folder = a_folder;
    rewatch();
}

void folder_watch::watch_plugin(const std::optional<plugin_entry>& a_plugin) {
    if (a_plugin == m_plugin) {
        return;
    }
    m_plugin = a_plugin;
    m_plugin_files = m_plugin ? file_snapshot::take(watched_files(*m_plugin)) : file_snapshot();
    rewatch();
}

void folder_watch::rewatch() {
    QStringList wanted;
    if (!m_folder.isEmpty() && QDir(m_folder).exists()) {
        wanted << QDir(m_folder).absolutePath();
    }
    if (m_plugin) {
        // Editors that save by renaming a new file over the old one end the watch of that
        // file, so each change puts the watches back; missing files are simply not watched.
        for (const auto& file : watched_files(*m_plugin)) {
            if (QFileInfo::exists(path_text(file))) {
                wanted << path_text(file);
            }
        }
    }
    // Only the differences change: a watch taken away and put back would drop the events
    // already waiting on it.
    const QStringList watched = m_watcher->files() + m_watcher->directories();
    QStringList gone;
    for (const QString& path : watched) {
        if (!wanted.contains(path)) {
            gone << path;
        }
    }
    if (!gone.isEmpty()) {
        m_watcher->removePaths(gone);
    }
    QStringList added;
    for (const QString& path : wanted) {
        if (!watched.contains(path)) {
            added << path;
        }
    }
    if (!added.isEmpty()) {
        m_watcher->addPaths(added);
    }
}

void folder_watch::on_path_changed() {
    if (m_plugin) {
        auto now = file_snapshot::take(watched_files(*m_plugin));
        if (!(now == m_plugin_files)) {
            m_plugin_files = std::move(now);
            if (m_run_on_save) {
                m_rerun.note_change(change_debouncer::clock::now());
            }
        }
    }
    rewatch();
    m_check_timer->start();
}

void folder_watch::check() {
    const auto now = change_debouncer::clock::now();
    const bool busy = m_busy && m_busy();
    if (m_reload.take_due(now, busy)) {
        emit folder_changed();
    }
    if (m_rerun.take_due(now, busy) && m_run_on_save) {
        emit rerun_due();
    }
    if (!m_reload.is_pending() && !m_rerun.is_pending()) {
        m_check_timer->stop();
    }
}

} // namespace qiro_plugin::debugger

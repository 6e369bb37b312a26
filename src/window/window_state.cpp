#include "window/window_state.hpp"

#include <QSettings>

namespace qiro_plugin::debugger {

namespace {

constexpr qsizetype recent_folder_count = 5;
const QString recent_key = QStringLiteral("inputs/recent_folders");

QSettings window_settings() {
    return QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("qiro"),
                     QStringLiteral("qiro-lumen-debugger"));
}

} // namespace

QStringList recent_folders() {
    return window_settings().value(recent_key).toStringList().mid(0, recent_folder_count);
}

QStringList add_recent_folder(const QString& a_folder) {
    QStringList folders = recent_folders();
    folders.removeAll(a_folder);
    folders.prepend(a_folder);
    folders = folders.mid(0, recent_folder_count);
    auto settings = window_settings();
    settings.setValue(recent_key, folders);
    settings.sync();
    return folders;
}

window_state load_window_state() {
    QSettings settings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("qiro"),
                       QStringLiteral("qiro-lumen-debugger"));
    window_state state;
    state.geometry = settings.value(QStringLiteral("window/geometry")).toByteArray();
    state.main_splitter = settings.value(QStringLiteral("window/main_splitter")).toByteArray();
    state.pane_splitter = settings.value(QStringLiteral("window/pane_splitter")).toByteArray();
    state.tab = settings.value(QStringLiteral("window/tab"), 0).toInt();
    state.folder = settings.value(QStringLiteral("inputs/folder")).toString();
    state.plugin = settings.value(QStringLiteral("inputs/plugin")).toString();
    state.written_form = settings.value(QStringLiteral("inputs/written_form")).toString();
    state.reading = settings.value(QStringLiteral("inputs/reading")).toString();
    state.run_on_save = settings.value(QStringLiteral("inputs/run_on_save"), false).toBool();
    return state;
}

void save_window_state(const window_state& a_state) {
    QSettings settings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("qiro"),
                       QStringLiteral("qiro-lumen-debugger"));
    settings.setValue(QStringLiteral("window/geometry"), a_state.geometry);
    settings.setValue(QStringLiteral("window/main_splitter"), a_state.main_splitter);
    settings.setValue(QStringLiteral("window/pane_splitter"), a_state.pane_splitter);
    settings.setValue(QStringLiteral("window/tab"), a_state.tab);
    settings.setValue(QStringLiteral("inputs/folder"), a_state.folder);
    settings.setValue(QStringLiteral("inputs/plugin"), a_state.plugin);
    settings.setValue(QStringLiteral("inputs/written_form"), a_state.written_form);
    settings.setValue(QStringLiteral("inputs/reading"), a_state.reading);
    settings.setValue(QStringLiteral("inputs/run_on_save"), a_state.run_on_save);
    settings.sync();
}

} // namespace qiro_plugin::debugger

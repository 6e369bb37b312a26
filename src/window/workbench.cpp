#include "window/workbench.hpp"

#include "core/debug_companion.hpp"

#include "core/companion_document.hpp"
#include "core/plugin_templates.hpp"
#include "core/run_verdict.hpp"
#include "ui_main_window.h"
#include "window/candidate_preview.hpp"
#include "window/diagnosis_list.hpp"
#include "window/folder_watch.hpp"
#include "window/history_panel.hpp"
#include "window/keyring_probe.hpp"
#include "window/new_plugin_dialog.hpp"
#include "window/output_pane.hpp"
#include "window/qt_text.hpp"
#include "window/settings_dialog.hpp"
#include "window/stop_control.hpp"
#include "window/ui_controller.hpp"
#include "window/window_menus.hpp"
#include "window/window_state.hpp"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QTabWidget>
#include <QTextBrowser>
#include <QTimer>
#include <QVBoxLayout>

#include <cerrno>
#include <chrono>

namespace qiro_plugin::debugger {

namespace {

// The README of the installed package (the programs live in PREFIX/lib/qiro-lumen), else the
// one of the source tree the program was built from.
QString find_readme() {
    const QDir program(QCoreApplication::applicationDirPath());
    for (const char* relative : {"../../share/doc/qiro-lumen-debugger/README.md",
                                 "../share/doc/qiro-lumen-debugger/README.md", "../README.md"}) {
        const QString path = program.absoluteFilePath(QString::fromLatin1(relative));
        if (QFileInfo::exists(path)) {
            return QDir::cleanPath(path);
        }
    }
#ifdef QIRO_SOURCE_README
    if (const QString source = QStringLiteral(QIRO_SOURCE_README); QFileInfo::exists(source)) {
        return source;
    }
#endif
    return {};
}

// At the first start: two thirds of the screen, and at least what shows the panes, the
// diagnosis list and every column of the candidate table; never more than the screen holds.
QSize first_window_size(const QWidget& a_window) {
    const QScreen* screen =
        a_window.screen() != nullptr ? a_window.screen() : QGuiApplication::primaryScreen();
    QSize size = a_window.size();
    if (screen != nullptr) {
        const QSize available = screen->availableGeometry().size();
        size = (available * 2 / 3).expandedTo(QSize(960, 720)).boundedTo(available);
    }
    return size.expandedTo(a_window.minimumSize()).boundedTo(a_window.maximumSize());
}

// How many findings the diagnosis list shows at the first start.
constexpr int first_diagnosis_rows = 3;

} // namespace

struct workbench::impl {
    ui_controller& m_controller;
    QMainWindow* m_window;
    QComboBox* m_menu;
    QLineEdit* m_written_form;
    QLineEdit* m_reading;
    QPushButton* m_callback_button;
    QPushButton* m_preference_button;
    QSplitter* m_main_splitter;
    QSplitter* m_pane_splitter;
    QTabWidget* m_tabs;
    output_pane* m_std_output;
    output_pane* m_std_error;
    window_menus m_menus;
    candidate_preview* m_preview;
    history_panel* m_history;
    stop_control* m_stop;
    folder_watch* m_watch;
    std::optional<xml_access_library::script_preference::plugin_preference_data> m_companion;
    // The attach configuration of the debugged run waiting now.
    QString m_attach;

    explicit impl(ui_controller& a_controller, const Ui::main_window& a_form)
        : m_controller(a_controller), m_window(a_controller.window()),
          m_menu(a_form.m_loaded_plusins_popup_button), m_written_form(a_form.m_hyoki_text_field),
          m_reading(a_form.m_reading_text_field), m_callback_button(a_form.m_callback_button),
          m_preference_button(a_form.m_preference_button), m_main_splitter(a_form.m_main_splitter),
          m_pane_splitter(a_form.m_pane_splitter), m_tabs(a_form.m_result_tabs),
          m_std_output(a_form.m_std_output_text_view),
          m_std_error(a_form.m_std_error_output_text_view), m_menus(make_window_menus(m_window)),
          m_preview(new candidate_preview(m_tabs)), m_history(new history_panel(m_tabs)),
          m_stop(new stop_control(a_form.m_stop_button, a_form.m_elapsed_label, m_window)),
          m_watch(new folder_watch(m_window)) {}

    std::optional<plugin_entry> selected() const {
        return m_controller.menu_model().selected_plugin();
    }

    void record(const char* a_entry, const run_report& a_report, const plugin_entry& a_plugin,
                const utf16_string& a_written_form, const utf16_string& a_reading) {
        history_entry entry{a_plugin, a_written_form, a_reading, std::chrono::system_clock::now(),
                            a_report};
        entry.entry = a_entry;
        entry.stopped = m_stop->was_stopped();
        m_history->add(std::move(entry));
    }
};

void workbench::run_debug() {
    auto& d = *p_impl;
    const auto plugin = d.selected();
    if (d.m_stop->is_running() || !plugin) {
        return;
    }
    const QString name = to_qstring(plugin->second);
    auto companion = std::make_shared<debug_companion>(
        debug_options{}, [this, name](const debug_endpoint& a_at) {
            auto& state = *p_impl;
            state.m_attach = QString::fromStdString(
                attach_configuration("vscode", a_at.language, name.toStdString(), a_at.port));
            state.m_menus.copy_attach->setEnabled(!state.m_attach.isEmpty());
            const QString where = tr("Waiting for a debugger on %1:%2")
                                      .arg(QString::fromStdString(a_at.host))
                                      .arg(a_at.port);
            state.m_window->statusBar()->showMessage(
                state.m_attach.isEmpty() ? where + tr(" (Perl's console: nc %1 %2)")
                                                       .arg(QString::fromStdString(a_at.host))
                                                       .arg(a_at.port)
                                         : where + tr(" (Run > Copy Attach Configuration)"));
        });
    auto& companions = d.m_controller.options().companions;
    companions.push_back(companion);
    // The Run button's own path, so the run is the faithful one in every other respect.
    d.m_controller.form().m_run_debug_button->click();
    std::erase(companions, companion);
    d.m_menus.copy_attach->setEnabled(false);
    d.m_attach.clear();
    if (const auto endpoint = companion->endpoint(); endpoint && !d.m_stop->was_stopped()) {
        d.m_window->statusBar()->showMessage(tr("Debugging %1 ended.").arg(name));
    }
}

workbench::workbench(ui_controller& a_controller)
    : QObject(a_controller.window()),
      p_impl(std::make_unique<impl>(a_controller, a_controller.form())) {
    auto& d = *p_impl;
    const window_menus& menus = d.m_menus;
    d.m_stop->let_through(menus.stop);
    d.m_stop->let_through(menus.quit);
    d.m_stop->let_through(menus.copy_attach);
    d.m_watch->set_busy_check([this] { return p_impl->m_stop->is_running(); });
    d.m_pane_splitter->setStretchFactor(0, 3);
    d.m_pane_splitter->setStretchFactor(1, 1);
    d.m_main_splitter->setStretchFactor(0, 1);
    d.m_main_splitter->setStretchFactor(1, 0);

    connect(&a_controller, &ui_controller::busy_changed, d.m_stop, &stop_control::set_running);
    connect(&a_controller, &ui_controller::busy_changed, this, [this](bool a_busy) {
        const auto& actions = p_impl->m_menus;
        actions.stop->setEnabled(a_busy);
        // Callback and Preference wait for the run's end, as Run does.
        update_entries();
    });
    connect(&a_controller, &ui_controller::run_finished, this,
            [this](const run_report& a_report, const plugin_entry& a_plugin) {
                auto& state = *p_impl;
                if (a_report.result == run_report::outcome::refused) {
                    return;
                }
                state.m_preview->show_report(a_report);
                state.record("run", a_report, a_plugin, to_utf16(state.m_written_form->text()),
                             to_utf16(state.m_reading->text()));
                if (state.m_stop->was_stopped()) {
                    state.m_window->statusBar()->showMessage(
                        tr("%1 was stopped.").arg(to_qstring(a_plugin.second)));
                    // One duration for the run everywhere: the one its finding and History give.
                    if (const auto seconds = a_report.timed_out_after_s) {
                        state.m_controller.form().m_elapsed_label->setText(
                            QCoreApplication::translate("qiro_plugin::debugger::stop_control",
                                                        "%1 s, stopped")
                                .arg(*seconds, 0, 'f', 1));
                    }
                }
            });
    connect(d.m_preview, &candidate_preview::selection_changed, this, &workbench::update_entries);
    connect(
        d.m_history, &history_panel::entry_selected, this,
        [this](const history_entry& a_entry) { p_impl->m_preview->show_report(a_entry.report); });

    // The controller's own connections come first, so the menu is already up to date here.
    connect(a_controller.form().m_reload_button, &QPushButton::clicked, this,
            &workbench::after_menu_change);
    connect(d.m_menu, &QComboBox::activated, this, &workbench::after_menu_change);
    connect(d.m_callback_button, &QPushButton::clicked, this, &workbench::run_callback);
    connect(d.m_preference_button, &QPushButton::clicked, this, &workbench::run_preference);

    connect(menus.new_plugin, &QAction::triggered, this, &workbench::new_plugin);
    connect(menus.open_folder, &QAction::triggered, this, [this] {
        const QString folder = QFileDialog::getExistingDirectory(
            p_impl->m_window, tr("Open Plug-in Folder"), folder_path());
        if (!folder.isEmpty()) {
            open_folder(folder);
        }
    });
    connect(menus.reload, &QAction::triggered, this, [this] {
        p_impl->m_controller.reload();
        after_menu_change();
    });
    connect(menus.save_output, &QAction::triggered, this, [this] { save_pane(false); });
    connect(menus.save_error, &QAction::triggered, this, [this] { save_pane(true); });
    connect(menus.settings, &QAction::triggered, this, &workbench::show_settings);
    connect(menus.quit, &QAction::triggered, this, [this] {
        p_impl->m_stop->stop();
        p_impl->m_window->close();
    });
    // The menu items press the buttons: each action is wired once, at its button.
    connect(menus.run, &QAction::triggered, a_controller.form().m_run_debug_button,
            &QPushButton::click);
    connect(menus.callback, &QAction::triggered, d.m_callback_button, &QPushButton::click);
    connect(menus.preference, &QAction::triggered, d.m_preference_button, &QPushButton::click);
    connect(menus.stop, &QAction::triggered, d.m_stop, &stop_control::stop);
    connect(menus.debug, &QAction::triggered, this, &workbench::run_debug);
    connect(menus.copy_attach, &QAction::triggered, this,
            [this] { QGuiApplication::clipboard()->setText(p_impl->m_attach); });
    connect(menus.run_on_save, &QAction::toggled, this,
            [this](bool a_on) { p_impl->m_watch->set_run_on_save(a_on); });
    connect(menus.readme, &QAction::triggered, this, &workbench::show_readme);
    connect(menus.about, &QAction::triggered, this, &workbench::show_about);
    menus.stop->setEnabled(false);
    menus.run_menu->insertMenu(menus.run_on_save, a_controller.diagnosis_view()->probe_menu());

    connect(d.m_watch, &folder_watch::folder_changed, this, [this] {
        p_impl->m_controller.reload();
        after_menu_change();
    });
    connect(d.m_watch, &folder_watch::rerun_due, this, [this] {
        // A re-run with an empty written form would only raise the alert at every save.
        if (!p_impl->m_written_form->text().isEmpty() && p_impl->selected()) {
            p_impl->m_controller.run_debug();
        }
    });
    connect(qApp, &QCoreApplication::aboutToQuit, this, &workbench::save_state);
    d.m_window->installEventFilter(this);
    update_entries();
}

bool workbench::eventFilter(QObject* a_watched, QEvent* a_event) {
    if (a_watched == p_impl->m_window && a_event->type() == QEvent::Close) {
        p_impl->m_stop->stop();
    }
    return QObject::eventFilter(a_watched, a_event);
}

workbench::~workbench() = default;

candidate_preview& workbench::preview() const {
    return *p_impl->m_preview;
}
history_panel& workbench::history() const {
    return *p_impl->m_history;
}
stop_control& workbench::stopper() const {
    return *p_impl->m_stop;
}
folder_watch& workbench::watch() const {
    return *p_impl->m_watch;
}
const window_menus& workbench::menus() const {
    return p_impl->m_menus;
}

QString workbench::folder_path() const {
    return to_qstring(plugin_folder());
}

void workbench::start(const start_options& a_options) {
    auto& d = *p_impl;
    const window_state state = a_options.restore_state ? load_window_state() : window_state{};
    QString folder;
    QString file = state.plugin;
    if (a_options.run_file) {
        const QFileInfo run_file(*a_options.run_file);
        if (a_options.run_file->contains(QLatin1Char('/'))) {
            folder = run_file.absolutePath();
        }
        file = run_file.fileName();
    }
    if (folder.isEmpty() && a_options.plugin_folder) {
        folder = *a_options.plugin_folder;
    }
    // The plugin folder beside the program unless told otherwise, as at every start; the
    // folders opened before are one click away in File › Open Recent Plug-in Folder.
    set_plugin_folder(folder.isEmpty() ? default_plugin_folder()
                                       : make_plugin_folder(folder.toStdString()));
    remember_folder();
    if (!state.geometry.isEmpty()) {
        d.m_window->restoreGeometry(state.geometry);
    } else {
        d.m_window->resize(first_window_size(*d.m_window));
    }
    const bool main_restored = d.m_main_splitter->restoreState(state.main_splitter);
    const bool panes_restored = d.m_pane_splitter->restoreState(state.pane_splitter);
    d.m_tabs->setCurrentIndex(a_options.run_file ? 0 : state.tab);
    d.m_menus.run_on_save->setChecked(state.run_on_save);
    d.m_written_form->setText(a_options.run_file ? a_options.run_written_form : state.written_form);
    d.m_reading->setText(a_options.run_file ? QString() : state.reading);
    d.m_watch->watch_folder(folder_path());
    d.m_window->show();
    // The sizes the user dragged to come back; until then the output panes get the room.
    give_first_splitter_sizes(!main_restored, !panes_restored);

    const bool run = a_options.run_file.has_value();
    QTimer::singleShot(0, this, [this, file, run] {
        p_impl->m_controller.reload();
        if (!file.isEmpty() && !select_plugin(file) && run) {
            p_impl->m_window->statusBar()->showMessage(
                tr("%1 is not in the plug-in folder %2.").arg(file, folder_path()));
            return;
        }
        after_menu_change();
        if (run) {
            p_impl->m_controller.run_debug();
        }
    });
}

void workbench::give_first_splitter_sizes(bool a_main, bool a_panes) {
    auto& d = *p_impl;
    if (!a_main && !a_panes) {
        return;
    }
    // The window has its first size now; its layout places the splitters before they share.
    d.m_window->layout()->activate();
    d.m_window->centralWidget()->layout()->activate();
    if (a_main) {
        // The diagnosis list a few rows high: a run's findings are few, its output is long.
        const int total = d.m_main_splitter->height() - d.m_main_splitter->handleWidth();
        const int diagnosis =
            std::min(d.m_controller.diagnosis_view()->height_for_rows(first_diagnosis_rows),
                     total / 3);
        d.m_main_splitter->setSizes({total - diagnosis, diagnosis});
    }
    if (a_panes) {
        // Standard output holds the document; standard error is mostly short.
        d.m_tabs->widget(0)->layout()->activate();
        const int total = d.m_pane_splitter->height() - d.m_pane_splitter->handleWidth();
        d.m_pane_splitter->setSizes({total * 3 / 4, total - total * 3 / 4});
    }
}

bool workbench::select_plugin(const QString& a_file_name) {
    const int index = p_impl->m_menu->findText(a_file_name, Qt::MatchExactly);
    if (index < 0) {
        return false;
    }
    p_impl->m_menu->setCurrentIndex(index);
    // Through the menu's own signal, so the controller's choice follows as for a click.
    emit p_impl->m_menu->activated(index);
    return true;
}

void workbench::remember_folder() {
    QMenu* menu = p_impl->m_menus.open_recent;
    menu->clear();
    int number = 0;
    for (const QString& folder : add_recent_folder(folder_path())) {
        // "&1 /path": the digit is the item's mnemonic, the path stays as it is written.
        QString shown = folder;
        shown.replace(QLatin1Char('&'), QStringLiteral("&&"));
        QAction* item = menu->addAction(QStringLiteral("&%1 ").arg(++number) + shown);
        item->setEnabled(QFileInfo(folder).isDir());
        connect(item, &QAction::triggered, this, [this, folder] { open_folder(folder); });
    }
}

void workbench::open_folder(const QString& a_folder) {
    set_plugin_folder(make_plugin_folder(a_folder.toStdString()));
    remember_folder();
    p_impl->m_watch->watch_folder(folder_path());
    p_impl->m_controller.reload();
    after_menu_change();
}

void workbench::after_menu_change() {
    auto& d = *p_impl;
    d.m_window->setWindowTitle(tr("QIRO Lumen Script Plug-in Debugger — %1").arg(folder_path()));
    d.m_watch->watch_folder(folder_path());
    d.m_watch->watch_plugin(d.selected());
    update_entries();
    emit selection_changed();
}

void workbench::update_entries() {
    auto& d = *p_impl;
    const auto plugin = d.selected();
    d.m_companion = plugin ? read_companion_document(*plugin) : std::nullopt;
    const bool idle = !d.m_stop->is_running();
    const bool callback = idle && d.m_companion && d.m_companion->callback &&
                          d.m_preview->selected_candidate().has_value();
    const bool preference = idle && d.m_companion && d.m_companion->preference;
    d.m_callback_button->setEnabled(callback);
    d.m_menus.callback->setEnabled(callback);
    d.m_preference_button->setEnabled(preference);
    d.m_menus.preference->setEnabled(preference);
    d.m_menus.run->setEnabled(idle && plugin.has_value());
}

void workbench::run_callback() {
    auto& d = *p_impl;
    const auto plugin = d.selected();
    const auto candidate = d.m_preview->selected_candidate();
    if (!plugin || !candidate || d.m_stop->is_running()) {
        return;
    }
    const utf16_string written_form = to_utf16(d.m_written_form->text());
    const run_report report =
        d.m_controller.run(callback_request(*plugin, candidate->title, written_form));
    show_entry_summary(diagnosis::entry_kind::callback, report);
    if (report.result != run_report::outcome::refused) {
        d.record("callback", report, *plugin, written_form, {});
    }
}

void workbench::run_preference() {
    auto& d = *p_impl;
    const auto plugin = d.selected();
    if (!plugin || d.m_stop->is_running()) {
        return;
    }
    const run_report report = d.m_controller.run(preference_request(*plugin));
    show_entry_summary(diagnosis::entry_kind::preference, report);
    d.record("preference", report, *plugin, {}, {});
}

void workbench::show_entry_summary(diagnosis::entry_kind a_entry, const run_report& a_report) {
    const auto plugin = p_impl->selected();
    const auto verdict = judge_run(a_report, a_entry, plugin ? plugin->second : utf16_string());
    QString summary = to_qstring(verdict_text(verdict, installed_text_language()));
    if (!verdict.hint.empty()) {
        summary += QLatin1Char(' ') + to_qstring(verdict.hint);
    }
    p_impl->m_window->statusBar()->showMessage(summary);
}

void workbench::save_pane(bool a_error_pane) {
    output_pane* pane = a_error_pane ? p_impl->m_std_error : p_impl->m_std_output;
    const QString path = QFileDialog::getSaveFileName(
        p_impl->m_window, a_error_pane ? tr("Save Error Output") : tr("Save Output"));
    QString error;
    if (!path.isEmpty() && !pane->save_to_file(path, &error)) {
        QMessageBox::warning(p_impl->m_window, tr("Save Output"), error);
    }
}

QString workbench::create_plugin(int a_language, const QString& a_name) {
    auto& d = *p_impl;
    const auto language = static_cast<template_language>(a_language);
    QString folder = folder_path();
    // An installed system folder is not the author's to write: ask for one that is.
    if (!QFileInfo(folder).isWritable()) {
        const QString other = m_ask_folder
                                  ? m_ask_folder()
                                  : QFileDialog::getExistingDirectory(
                                        d.m_window, tr("The plug-in folder %1 is not writable: "
                                                       "choose a folder for the new plug-in")
                                                        .arg(folder));
        if (other.isEmpty()) {
            return tr("No folder was chosen.");
        }
        folder = other;
    }
    try {
        const auto created = create_plugin_from_template(QFile::encodeName(folder).toStdString(),
                                                         language, a_name.toStdString());
        if (QDir(folder) != QDir(folder_path())) {
            open_folder(folder);
        } else {
            d.m_controller.reload();
        }
        select_plugin(QFile::decodeName(created.plugin_file.filename().c_str()));
        after_menu_change();
        d.m_window->statusBar()->showMessage(
            tr("Created %1 and its .xml document.")
                .arg(QFile::decodeName(created.plugin_file.c_str())));
        return {};
    } catch (const std::exception& error) {
        return QString::fromStdString(error.what());
    }
}

void workbench::new_plugin() {
    new_plugin_dialog dialog(folder_path(), p_impl->m_window);
    while (dialog.exec() == QDialog::Accepted) {
        const QString error = create_plugin(static_cast<int>(dialog.language()), dialog.name());
        if (error.isEmpty()) {
            return;
        }
        QMessageBox::warning(p_impl->m_window, tr("New Plug-in"), error);
    }
}

void workbench::show_settings() {
    QStringList names;
    for (const auto& title : p_impl->m_controller.menu_model().item_titles()) {
        names << to_qstring(title);
    }
    settings_dialog dialog(names, is_keyring_available(), p_impl->m_window);
    dialog.exec();
}

void workbench::show_readme() {
    const QString path = find_readme();
    if (path.isEmpty()) {
        QMessageBox::information(p_impl->m_window, tr("README"),
                                 tr("The README was not found beside the program."));
        return;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    QDialog dialog(p_impl->m_window);
    dialog.setWindowTitle(tr("README"));
    dialog.resize(760, 600);
    auto* layout = new QVBoxLayout(&dialog);
    auto* view = new QTextBrowser;
    view->setOpenExternalLinks(false);
    view->setSearchPaths({QFileInfo(path).absolutePath()});
    view->setMarkdown(QString::fromUtf8(file.readAll()));
    layout->addWidget(view);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout->addWidget(buttons);
    dialog.exec();
}

void workbench::show_about() {
    QMessageBox::about(
        p_impl->m_window, tr("About QIRO Lumen Script Plug-in Debugger"),
        tr("<p><b>QIRO Lumen Script Plug-in Debugger</b></p>"
           "<p>Runs the candidate plug-ins of the qiro input method (Python, Ruby, Perl) "
           "exactly as its plug-in manager would, and shows what they print.</p>"));
}

void workbench::save_state() const {
    const auto& d = *p_impl;
    window_state state;
    state.geometry = d.m_window->saveGeometry();
    state.main_splitter = d.m_main_splitter->saveState();
    state.pane_splitter = d.m_pane_splitter->saveState();
    state.tab = d.m_tabs->currentIndex();
    state.folder = folder_path();
    state.plugin = d.m_menu->currentText();
    state.written_form = d.m_written_form->text();
    state.reading = d.m_reading->text();
    state.run_on_save = d.m_menus.run_on_save->isChecked();
    save_window_state(state);
}

} // namespace qiro_plugin::debugger

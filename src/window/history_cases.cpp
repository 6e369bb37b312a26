#include "window/history_cases.hpp"

#include "cases/case_check.hpp"
#include "text/string_encode.hpp"
#include "text/utf8_text.hpp"
#include "ui_main_window.h"
#include "window/cases_tab.hpp"
#include "window/folder_watch.hpp"
#include "window/history_panel.hpp"
#include "window/stop_control.hpp"
#include "window/ui_controller.hpp"
#include "window/window_menus.hpp"
#include "window/workbench.hpp"

#include <QAction>
#include <QComboBox>
#include <QCoreApplication>
#include <QInputDialog>
#include <QListWidget>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>

namespace qiro_plugin::debugger {

namespace {

QString tr(const char* a_source) {
    return QCoreApplication::translate("history_cases", a_source);
}

// The error text, or empty once the entry is a case of its plug-in.
QString save_entry(const history_entry& a_entry, const QString& a_name, cases_tab& a_cases) {
    cases::test_case inputs;
    if (a_entry.entry == "callback") {
        // The history does not keep the committed candidate a callback case needs.
        return tr("A callback run cannot be saved as a case from the history.");
    }
    inputs.kind =
        a_entry.entry == "preference" ? cases::case_kind::preference : cases::case_kind::processing;
    inputs.written_form = string_encode::to_utf8_marked(a_entry.written_form);
    inputs.reading = string_encode::to_utf8_marked(a_entry.reading);
    cases::case_run run;
    run.report = a_entry.report;
    return a_cases.save_as_case(a_name, inputs, run);
}

void connect_history(history_panel& a_history, cases_tab& a_cases) {
    QListWidget* list = a_history.list();
    auto* save = new QAction(tr("Save as Case…"), list);
    list->setContextMenuPolicy(Qt::ActionsContextMenu);
    list->addAction(save);
    QObject::connect(save, &QAction::triggered, list, [&a_history, &a_cases, list] {
        const int row = list->currentRow();
        const auto& entries = a_history.history().entries();
        if (row < 0 || static_cast<std::size_t>(row) >= entries.size()) {
            return;
        }
        const auto& entry = entries[static_cast<std::size_t>(row)];
        bool accepted = false;
        const QString name = QInputDialog::getText(
            list, tr("Save as Case"), tr("Name of the case:"), QLineEdit::Normal,
            QString::fromStdString(string_encode::to_utf8_marked(entry.written_form)), &accepted);
        if (!accepted || name.trimmed().isEmpty()) {
            return;
        }
        if (const QString error = save_entry(entry, name.trimmed(), a_cases); !error.isEmpty()) {
            QMessageBox::warning(list, tr("Save as Case"), error);
        }
    });
}

} // namespace

cases_tab* add_cases_tab(ui_controller& a_controller, workbench& a_bench) {
    auto* cases =
        new cases_tab([&a_controller] { return a_controller.menu_model().selected_plugin(); });
    const Ui::main_window& form = a_controller.form();
    form.m_result_tabs->addTab(cases, tr("Cas&es"));
    // Connected after the controller's own handlers, so the tab reads the new selection.
    // Every way the menu changes (Reload, F5, another plug-in or folder, the folder watch)
    // reads the cases again, so the tab needs no Reload of its own.
    QObject::connect(&a_bench, &workbench::selection_changed, cases, &cases_tab::reload);
    connect_history(a_bench.history(), *cases);
    // The window's Stop (its button, Esc, Run › Stop) ends the cases too, and while they run
    // other clicks and keys wait, as during a run of the window.
    QObject::connect(cases, &cases_tab::running_changed, &a_bench.stopper(),
                     &stop_control::set_running);
    QObject::connect(cases, &cases_tab::running_changed, a_bench.menus().stop,
                     &QAction::setEnabled);
    QObject::connect(&a_bench.stopper(), &stop_control::stopped, cases, &cases_tab::stop);
    // Connected after the workbench's own re-run, which blocks until the plug-in has ended, so
    // the cases start after it and never inside it.
    QObject::connect(&a_bench.watch(), &folder_watch::rerun_due, cases, &cases_tab::run_all);
    QTimer::singleShot(0, cases, &cases_tab::reload);
    return cases;
}

} // namespace qiro_plugin::debugger

#pragma once
// The controller of the debugger's one window: plug-in menu, written form, Run, output panes.

#include "core/debug_runner.hpp"
#include "core/plugin_menu_model.hpp"
#include "core/run_sinks.hpp"

#include <QObject>

#include <memory>

class QApplication;
class QString;
class QComboBox;
class QLabel;
class QLineEdit;
class QMainWindow;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

namespace Ui {
class main_window;
}

namespace qiro_plugin::debugger {

class diagnosis_list;

class ui_controller : public QObject, private run_output_sink, private alert_sink {
    Q_OBJECT

public:
    // The one controller of the process, made with its window on first call.
    static ui_controller& getInstance();
    ~ui_controller() override;

    QMainWindow* window() const;
    // Every widget of the window's form, typed, for the parts built around the controller.
    const Ui::main_window& form() const;
    // The run logic the window drives; tests replace its settings and instance sources.
    debug_runner& runner();
    // The options every run of the window takes (sandbox, probes), as its controls set them.
    run_options& options();
    // Runs the request with the window's options, as Run, Callback and Preference do.
    run_report run(run_request a_request);
    const plugin_menu_model& menu_model() const { return m_menu_model; }
    diagnosis_list* diagnosis_view() const { return m_diagnosis_list; }

    // Makes a loaded, syntax-checked instance for the file, appending the check's outputs.
    std::shared_ptr<abstract_qiro_plugin_instance>
    get_script_instance_path(const utf16_string& a_folder, const utf16_string& a_name);

public slots:
    void reload();
    void run_debug();
    void add_std_output_text(const qiro_plugin::utf16_string& a_text) override;
    void add_std_error_output_text(const qiro_plugin::utf16_string& a_text) override;
    void add_std_output_utf8(const std::string& a_text) override;
    void add_std_error_output_utf8(const std::string& a_text) override;
    void clear_std_output_text() override;
    void clear_std_error_output_text() override;

signals:
    // The busy indicator started (a run began) or stopped.
    void busy_changed(bool a_busy);
    // A Run finished, refused or not, with everything it produced.
    void run_finished(const qiro_plugin::debugger::run_report& a_report,
                      const qiro_plugin::debugger::plugin_entry& a_plugin);

protected:
    bool eventFilter(QObject* a_watched, QEvent* a_event) override;

private:
    ui_controller();
    void awake_from_nib();
    void fill_menu();
    // Clears the status line and the diagnosis list of the last run shown.
    void forget_shown_run();
    // The same, when another plug-in than the one that ran is chosen now.
    void forget_other_plugins_run();
    // One line under the panes on how the run went: language, candidates, timings.
    void show_run_summary(const run_report& a_report, const QString& a_file_name);
    void start_progress() override;
    void stop_progress() override;
    void show_std_error_so_far(const std::string& a_last_lines) override;
    void show_alert(const std::string& a_key) override;

    struct impl;
    std::unique_ptr<impl> p_impl;
    plugin_menu_model m_menu_model;

    QApplication* m_self_application = nullptr;
    QMainWindow* m_self_window = nullptr;
    QPlainTextEdit* m_warning_text_view = nullptr;
    QProgressBar* m_progress = nullptr;
    QLabel* m_progress_label = nullptr;
    QLineEdit* m_hyoki_text_field = nullptr;
    QPlainTextEdit* m_std_output_text_view = nullptr;
    QPlainTextEdit* m_std_error_output_text_view = nullptr;
    QComboBox* m_loaded_plusins_popup_button = nullptr;
    QPushButton* m_run_debug_button = nullptr;
    QLineEdit* m_reading_text_field = nullptr;
    diagnosis_list* m_diagnosis_list = nullptr;
};

} // namespace qiro_plugin::debugger

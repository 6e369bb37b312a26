#pragma once
// The Soak tab: the chosen plug-in against a corpus, run beside the window, with its progress,
// outcome counts and failures; a failure opens as a run in the panes or is kept as a case.

#include "core/plugin_discovery.hpp"

#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class QCheckBox;
class QComboBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QSpinBox;
class QTreeWidget;

namespace qiro_plugin::debugger {

class soak_tab : public QWidget {
    Q_OBJECT

public:
    using plugin_source = std::function<std::optional<plugin_entry>()>;

    // a_selected answers the plug-in chosen in the window now (none when the menu is empty).
    explicit soak_tab(plugin_source a_selected, QWidget* a_parent = nullptr);
    // Stops a soak still running and waits for it, so that none of its processes or files
    // outlives the tab.
    ~soak_tab() override;

    // Takes a file of forms (one per line, an optional TAB and reading) as the corpus.
    void set_corpus_file(const QString& a_path);
    bool is_running() const;
    // The plug-in of the last soak started; none before the first.
    std::optional<plugin_entry> soaked_plugin() const;

    QComboBox* corpus() const { return m_corpus; }
    QCheckBox* fast_check() const { return m_fast_check; }
    QSpinBox* limit() const { return m_limit; }
    QProgressBar* progress() const { return m_progress; }
    // "candidates: 120, plugin_exception: 3" after a soak.
    QLabel* counts() const { return m_counts; }
    // One row per distinct failure: code, count, shortest input, message.
    QTreeWidget* failure_list() const { return m_failures; }

public slots:
    void start();
    // Ends the runs in progress at once; the tab then shows what was done until then.
    void stop();
    // Asks for the selected failure's shortest input to run in the panes, as Run runs it.
    void open_selected_failure();
    // Appends the selected failure's shortest input to the plug-in's cases file as a case that
    // fails until the plug-in is fixed. An error text, or empty.
    QString save_selected_failure();

signals:
    // The soak ended (stopped or not): how many distinct failures it found.
    void finished(int a_failures);
    void run_requested(const QString& a_written_form, const QString& a_reading);
    void case_saved();

private:
    void choose_corpus(int a_index);
    void show_progress(std::size_t a_done, std::size_t a_total);
    void show_report(const QString& a_error);
    void wait();

    struct impl;
    std::unique_ptr<impl> p_impl;
    QComboBox* m_corpus = nullptr;
    QCheckBox* m_fast_check = nullptr;
    QSpinBox* m_limit = nullptr;
    QPushButton* m_start_button = nullptr;
    QPushButton* m_stop_button = nullptr;
    QProgressBar* m_progress = nullptr;
    QLabel* m_status = nullptr;
    QLabel* m_counts = nullptr;
    QTreeWidget* m_failures = nullptr;
    QPushButton* m_open_button = nullptr;
    QPushButton* m_save_button = nullptr;
};

class ui_controller;
class workbench;

// Adds the Soak tab to the window's result tabs: a failure opened runs in the panes through the
// window's own Run, with the soaked plug-in chosen in the menu, and a saved case reloads the
// Cases tab (a_cases_reload).
soak_tab* add_soak_tab(ui_controller& a_controller, workbench& a_bench,
                       std::function<void()> a_cases_reload);

} // namespace qiro_plugin::debugger

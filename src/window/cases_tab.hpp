#pragma once
// The Cases tab: the selected plug-in's cases with pass or fail, run all or one, a failure's diff.

#include "cases/case_runner.hpp"
#include "core/plugin_discovery.hpp"

#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class QAction;
class QCheckBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;
class QTreeWidget;

namespace qiro_plugin::debugger {

class coverage_collection;

class cases_tab : public QWidget {
    Q_OBJECT

public:
    using plugin_source = std::function<std::optional<plugin_entry>()>;

    // a_selected answers the plug-in chosen in the window now (none when the menu is empty).
    explicit cases_tab(plugin_source a_selected, QWidget* a_parent = nullptr);
    ~cases_tab() override;

    // Adds the run as a new case of the selected plug-in (its cases file is made when missing),
    // then lists it; "Save as case…" of a history entry calls this. An error text, or empty.
    QString save_as_case(const QString& a_name, const cases::test_case& a_inputs,
                         const cases::case_run& a_run);

    QTreeWidget* case_list() const { return m_list; }
    QPlainTextEdit* detail() const { return m_detail; }
    // Ticked, each case's entry runs under its language's coverage tool.
    QCheckBox* coverage_check() const { return m_coverage_check; }
    // After a run with coverage: "my.py: 37 of 42 lines (88 %), 9 of 12 branches".
    QLabel* coverage_summary() const { return m_coverage_summary; }
    // The first line of the plug-in that no case of the last run with coverage reached; 0 when
    // every line was reached or nothing was measured.
    unsigned first_line_not_reached() const;
    // Writes the last run's tracefile and starts genhtml on it in a folder of this tab's own
    // (removed with it); the window stays live while it works. html_report_made follows.
    void make_html_report();

public slots:
    // Reads the selected plug-in's cases file again; every case shows as not run.
    void reload();
    void run_all();
    void run_selected();
    // Opens the plug-in in the editor at first_line_not_reached().
    void open_first_line_not_reached();
    // Makes the HTML report and opens its index.html in the desktop's browser once made.
    void open_html_report();
    // Ends the cases running now (their processes and bridge files go) and starts no other;
    // they show as stopped, not failed.
    void stop();

signals:
    void cases_finished(int a_passed, int a_failed);
    // Cases began or ended running.
    void running_changed(bool a_running);
    // The report's index.html, or empty when it could not be made (the status line says why).
    void html_report_made(const QString& a_index);

private:
    void run(const std::vector<std::size_t>& a_indexes);
    void show_detail();
    void show_coverage(const coverage_collection& a_measured);
    void html_report_done(const QString& a_index, const QString& a_status);

    struct impl;
    std::unique_ptr<impl> p_impl;
    QTreeWidget* m_list = nullptr;
    QPlainTextEdit* m_detail = nullptr;
    QLabel* m_status = nullptr;
    QPushButton* m_run_all_button = nullptr;
    QPushButton* m_run_selected_button = nullptr;
    QCheckBox* m_coverage_check = nullptr;
    QLabel* m_coverage_summary = nullptr;
    QPushButton* m_coverage_button = nullptr;
    QAction* m_open_uncovered = nullptr;
    QAction* m_open_report = nullptr;
};

} // namespace qiro_plugin::debugger

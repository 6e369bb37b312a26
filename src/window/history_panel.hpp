#pragma once
// The History tab: the session's last runs, one shown again, or two compared.

#include "core/run_history.hpp"

#include <QObject>

class QListWidget;
class QTabWidget;
class QTextBrowser;

namespace qiro_plugin::debugger {

class history_panel : public QObject {
    Q_OBJECT

public:
    explicit history_panel(QTabWidget* a_tabs);

    void add(history_entry a_entry);
    const run_history& history() const { return m_history; }
    QListWidget* list() const { return m_list; }
    QTextBrowser* details() const { return m_details; }

signals:
    // One run was selected: its results are to be shown again.
    void entry_selected(const qiro_plugin::debugger::history_entry& a_entry);

private:
    void show_selection();
    void refill();

    run_history m_history;
    QListWidget* m_list;
    QTextBrowser* m_details;
};

// One line for the list: time, plug-in, written form, reading, outcome, candidates, timings.
QString history_title(const history_entry& a_entry);
// The difference of two runs' candidates as HTML for the details view.
QString difference_html(const history_entry& a_first, const history_entry& a_second);

} // namespace qiro_plugin::debugger

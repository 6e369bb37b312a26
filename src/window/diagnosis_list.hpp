#pragma once
// The findings of the last run under the panes, and the probe choice for the Run menu; a double
// click opens the place in the author's editor.

#include "core/debug_runner.hpp"
#include "diagnosis/finding.hpp"

#include <QWidget>

#include <vector>

class QActionGroup;
class QLabel;
class QMenu;
class QPlainTextEdit;
class QTreeWidget;
class QTreeWidgetItem;

namespace qiro_plugin::debugger {

class diagnosis_list : public QWidget {
    Q_OBJECT

public:
    explicit diagnosis_list(QWidget* a_parent = nullptr);

    // Replaces the list; the hint of each finding is its tooltip.
    void show_findings(const std::vector<diagnosis::finding>& a_findings);
    // The last lines the running entry wrote on standard error, shown while the list is empty;
    // they stay after the run until the next one starts. Empty hides them.
    void show_live_std_error(const QString& a_last_lines);
    QPlainTextEdit* live_std_error() const { return m_live; }
    // The height that shows the heading and a_rows findings of one line.
    int height_for_rows(int a_rows) const;
    probe_policy policy() const;
    QTreeWidget* tree() const { return m_tree; }
    // When to probe, one checkable item per policy; the window puts it into its Run menu.
    QMenu* probe_menu() const { return m_probe_menu; }

signals:
    void probe_policy_changed(qiro_plugin::debugger::probe_policy a_policy);

private:
    void open_place(QTreeWidgetItem* a_item);
    void show_live_or_findings();

    QTreeWidget* m_tree = nullptr;
    QLabel* m_live_label = nullptr;
    QPlainTextEdit* m_live = nullptr;
    QMenu* m_probe_menu = nullptr;
    QActionGroup* m_probe = nullptr;
};

} // namespace qiro_plugin::debugger

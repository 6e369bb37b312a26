#pragma once
// The findings of the last run under the panes, with the probe choice; a double click opens the
// place in the author's editor.

#include "core/debug_runner.hpp"
#include "diagnosis/finding.hpp"

#include <QWidget>

#include <vector>

class QComboBox;
class QTreeWidget;
class QTreeWidgetItem;

namespace qiro_plugin::debugger {

class diagnosis_list : public QWidget {
    Q_OBJECT

public:
    explicit diagnosis_list(QWidget* a_parent = nullptr);

    // Replaces the list; the hint of each finding is its tooltip.
    void show_findings(const std::vector<diagnosis::finding>& a_findings);
    probe_policy policy() const;
    QTreeWidget* tree() const { return m_tree; }

signals:
    void probe_policy_changed(qiro_plugin::debugger::probe_policy a_policy);

private:
    void open_place(QTreeWidgetItem* a_item);

    QTreeWidget* m_tree = nullptr;
    QComboBox* m_probe = nullptr;
};

} // namespace qiro_plugin::debugger

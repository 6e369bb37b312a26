#pragma once
// The candidates of a run as the input method offers them, and the document it receives.

#include "core/run_report.hpp"

#include <QWidget>

#include <optional>

class QPlainTextEdit;
class QTableWidget;
class QTabWidget;
class QTextBrowser;

namespace qiro_plugin::debugger {

// Two tabs added to the window's result tabs: a table of the candidates (title, comment
// rendered from its XHTML, alternative with its type and alias, info) with the selected
// comment shown whole, and the candidate-list document.
class candidate_preview : public QObject {
    Q_OBJECT

public:
    explicit candidate_preview(QTabWidget* a_tabs);

    // Shows the candidates and the document of a run; a run without them empties both.
    void show_report(const run_report& a_report);
    std::optional<message_script::candidate> selected_candidate() const;
    QTableWidget* table() const { return m_table; }
    QTextBrowser* comment_view() const { return m_comment_view; }
    QPlainTextEdit* document_view() const { return m_document_view; }

    // The comment's text as the candidate window would render it: the markup's text only,
    // nothing fetched, no script run.
    static QString comment_text(const utf16_string& a_comment);

signals:
    void selection_changed();

private:
    void show_selected_comment();

    QTableWidget* m_table;
    QTextBrowser* m_comment_view;
    QPlainTextEdit* m_document_view;
    std::vector<message_script::candidate> m_candidates;
};

} // namespace qiro_plugin::debugger

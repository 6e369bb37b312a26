#include "window/candidate_preview.hpp"

#include "window/qt_text.hpp"
#include <QHeaderView>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QTabWidget>
#include <QTableWidget>
#include <QTextBrowser>
#include <QTextDocument>
#include <QVBoxLayout>

namespace qiro_plugin::debugger {

namespace {

// Comments come from the plug-in and may name any address or file: nothing they name is
// ever loaded, and links do not open.
class sealed_document : public QTextDocument {
public:
    using QTextDocument::QTextDocument;

protected:
    QVariant loadResource(int, const QUrl&) override { return {}; }
};

class sealed_browser : public QTextBrowser {
public:
    explicit sealed_browser(QWidget* a_parent) : QTextBrowser(a_parent) {
        setDocument(new sealed_document(this));
        setOpenLinks(false);
        setOpenExternalLinks(false);
    }
    QVariant loadResource(int, const QUrl&) override { return {}; }
};

// A table cell shows a comment's start; the whole of it is in the view under the table.
constexpr qsizetype cell_text_limit = 200;

// The start of a comment's text for its cell: markup left out, a line break shown as ⏎. A
// result may hold many thousands of candidates, so each cell reads only as far as it shows;
// the selected comment is rendered properly under the table.
QString decoded(QString a_text) {
    a_text.replace(QLatin1String("&lt;"), QLatin1String("<"))
        .replace(QLatin1String("&gt;"), QLatin1String(">"))
        .replace(QLatin1String("&quot;"), QLatin1String("\""))
        .replace(QLatin1String("&apos;"), QLatin1String("'"))
        .replace(QLatin1String("&amp;"), QLatin1String("&"));
    return a_text;
}

QString cell_text(const utf16_string& a_comment) {
    QString text;
    bool in_markup = false;
    QString tag;
    for (const char16_t unit : a_comment) {
        const QChar character(unit);
        if (in_markup) {
            if (character == QLatin1Char('>')) {
                in_markup = false;
                const QString name = tag.trimmed().toLower();
                if (name.startsWith(QLatin1String("br")) || name == QLatin1String("/h2") ||
                    name == QLatin1String("/p")) {
                    text += QStringLiteral(" ⏎ ");
                }
            } else {
                tag += character;
            }
        } else if (character == QLatin1Char('<')) {
            in_markup = true;
            tag.clear();
        } else if (character != QLatin1Char('\n') && character != QLatin1Char('\r')) {
            text += character;
        }
        if (text.size() > cell_text_limit) {
            return decoded(text.left(cell_text_limit)) + QStringLiteral("…");
        }
    }
    return decoded(text);
}

} // namespace

candidate_preview::candidate_preview(QTabWidget* a_tabs) : QObject(a_tabs) {
    auto* page = new QSplitter(Qt::Vertical);
    page->setObjectName(QStringLiteral("m_preview_page"));
    m_table = new QTableWidget(0, 6, page);
    m_table->setObjectName(QStringLiteral("m_candidate_table"));
    m_table->setHorizontalHeaderLabels(
        {tr("Title"), tr("Comment"), tr("Alternative"), tr("Type"), tr("Alias"), tr("Info")});
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->horizontalHeader()->setStretchLastSection(true);
    // Column widths from the first rows only: measuring every row of a long result is slow.
    m_table->horizontalHeader()->setResizeContentsPrecision(50);
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() + 6);
    m_comment_view = new sealed_browser(page);
    m_comment_view->setObjectName(QStringLiteral("m_comment_view"));
    page->setStretchFactor(0, 3);
    page->setStretchFactor(1, 1);
    a_tabs->addTab(page, tr("Cand&idates"));

    m_document_view = new QPlainTextEdit;
    m_document_view->setObjectName(QStringLiteral("m_candidate_list_view"));
    m_document_view->setReadOnly(true);
    m_document_view->setLineWrapMode(QPlainTextEdit::NoWrap);
    a_tabs->addTab(m_document_view, tr("Candidate list docu&ment"));

    connect(m_table, &QTableWidget::itemSelectionChanged, this, [this] {
        show_selected_comment();
        emit selection_changed();
    });
}

QString candidate_preview::comment_text(const utf16_string& a_comment) {
    sealed_document document;
    document.setHtml(to_qstring(a_comment));
    return document.toPlainText().trimmed();
}

void candidate_preview::show_report(const run_report& a_report) {
    m_candidates = a_report.candidates;
    m_table->clearContents();
    m_table->setRowCount(static_cast<int>(m_candidates.size()));
    int row = 0;
    for (const auto& candidate : m_candidates) {
        const QString cells[] = {to_qstring(candidate.title),
                                 cell_text(candidate.comment),
                                 to_qstring(candidate.alternative),
                                 to_qstring(candidate.alternative_type),
                                 to_qstring(candidate.alternative_alias),
                                 to_qstring(candidate.info)};
        int column = 0;
        for (const QString& text : cells) {
            m_table->setItem(row, column++, new QTableWidgetItem(text));
        }
        ++row;
    }
    m_table->resizeColumnsToContents();
    // A long comment or address must not push the other columns out of sight.
    for (int column = 0; column < m_table->columnCount() - 1; ++column) {
        m_table->setColumnWidth(column, std::min(m_table->columnWidth(column), 260));
    }
    m_comment_view->clear();
    m_document_view->setPlainText(QString::fromUtf8(a_report.candidate_list));
    if (!m_candidates.empty()) {
        m_table->selectRow(0);
    }
    emit selection_changed();
}

std::optional<message_script::candidate> candidate_preview::selected_candidate() const {
    const auto rows = m_table->selectionModel()->selectedRows();
    if (rows.isEmpty() || rows.front().row() >= static_cast<int>(m_candidates.size())) {
        return std::nullopt;
    }
    return m_candidates[static_cast<std::size_t>(rows.front().row())];
}

void candidate_preview::show_selected_comment() {
    const auto candidate = selected_candidate();
    if (!candidate) {
        m_comment_view->clear();
        return;
    }
    m_comment_view->setHtml(to_qstring(candidate->comment));
}

} // namespace qiro_plugin::debugger

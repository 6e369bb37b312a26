#include "window/history_panel.hpp"

#include "window/qt_text.hpp"
#include <QDateTime>
#include <QListWidget>
#include <QSplitter>
#include <QTabWidget>
#include <QTextBrowser>

namespace qiro_plugin::debugger {

namespace {

QString outcome_text(const history_entry& a_entry) {
    // A run that Stop or the time-out ended is not a broken one: its output was never complete.
    if (const auto seconds = a_entry.report.timed_out_after_s) {
        return (a_entry.stopped ? history_panel::tr("stopped after %1 s")
                                : history_panel::tr("timed out after %1 s"))
            .arg(*seconds, 0, 'f', 1);
    }
    const std::string word = outcome_word(a_entry.report);
    if (word == "parsed") {
        return history_panel::tr("%n candidate(s)", "",
                                 static_cast<int>(a_entry.report.candidates.size()));
    }
    if (word == "not parsed") {
        return history_panel::tr("output not a result document");
    }
    if (word == "not run") {
        return history_panel::tr("not run");
    }
    if (word == "failed") {
        return history_panel::tr("ended with an error");
    }
    return a_entry.entry == "run" ? history_panel::tr("refused") : history_panel::tr("not offered");
}

constexpr std::size_t shown_output_limit = 8192;

QString candidate_line(const message_script::candidate& a_candidate) {
    QString line = to_qstring(a_candidate.title).toHtmlEscaped();
    if (!a_candidate.alternative.empty()) {
        line += QStringLiteral(" → ") + to_qstring(a_candidate.alternative).toHtmlEscaped();
    }
    if (!a_candidate.info.empty()) {
        line +=
            QStringLiteral(" [") + to_qstring(a_candidate.info).toHtmlEscaped() + QLatin1Char(']');
    }
    return line;
}

QString entry_html(const history_entry& a_entry) {
    QString html = QStringLiteral("<h3>") + history_title(a_entry).toHtmlEscaped() +
                   QStringLiteral("</h3><ol>");
    for (const auto& candidate : a_entry.report.candidates) {
        html += QStringLiteral("<li>") + candidate_line(candidate) + QStringLiteral("</li>");
    }
    html += QStringLiteral("</ol>");
    for (const auto& [label, text] : {std::pair{history_panel::tr("Standard output of the run"),
                                                &a_entry.report.run_std_output},
                                      std::pair{history_panel::tr("Standard error of the run"),
                                                &a_entry.report.run_std_error}}) {
        // A rich-text view lays out long lines slowly: the start is enough to recognise a run.
        QString shown = QString::fromUtf8(
            text->data(),
            static_cast<qsizetype>(std::min<std::size_t>(text->size(), shown_output_limit)));
        if (text->size() > shown_output_limit) {
            shown += QStringLiteral("…");
        }
        html += QStringLiteral("<h4>") + label.toHtmlEscaped() + QStringLiteral("</h4><pre>") +
                shown.toHtmlEscaped() + QStringLiteral("</pre>");
    }
    if (a_entry.outputs_cut) {
        html += QStringLiteral("<p>") +
                history_panel::tr("Only the first MiB of each output was kept.").toHtmlEscaped() +
                QStringLiteral("</p>");
    }
    return html;
}

} // namespace

QString history_title(const history_entry& a_entry) {
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(
        std::chrono::duration_cast<std::chrono::milliseconds>(a_entry.time.time_since_epoch())
            .count());
    QString title = time.toString(QStringLiteral("HH:mm:ss")) + QLatin1Char(' ') +
                    to_qstring(a_entry.plugin.second);
    if (a_entry.entry == "run") {
        // Quoted as the language quotes: “…” in English, 「…」 in Japanese.
        title += QLatin1Char(' ') + history_panel::tr("“%1”").arg(to_qstring(a_entry.written_form));
        if (!a_entry.reading.empty()) {
            title += history_panel::tr(" reading “%1”").arg(to_qstring(a_entry.reading));
        }
    } else {
        title += QLatin1Char(' ') + (a_entry.entry == "callback" ? history_panel::tr("callback")
                                                                 : history_panel::tr("preference"));
    }
    title += QStringLiteral(": ") + outcome_text(a_entry);
    if (!a_entry.report.timed_out_after_s) {
        title += history_panel::tr(" (%1 + %2 ms)")
                     .arg(a_entry.report.syntax_check_ms, 0, 'f', 0)
                     .arg(a_entry.report.run_ms, 0, 'f', 0);
    }
    return title;
}

QString difference_html(const history_entry& a_first, const history_entry& a_second) {
    const candidate_difference difference =
        compare_candidates(a_first.report.candidates, a_second.report.candidates);
    QString html = QStringLiteral("<h3>") +
                   history_panel::tr("From %1 to %2")
                       .arg(history_title(a_first), history_title(a_second))
                       .toHtmlEscaped() +
                   QStringLiteral("</h3>");
    if (difference.empty()) {
        html +=
            QStringLiteral("<p>") +
            (difference.order_changed ? history_panel::tr("The same candidates, in another order.")
                                      : history_panel::tr("The same candidates."))
                .toHtmlEscaped() +
            QStringLiteral("</p>");
        return html;
    }
    html += QStringLiteral("<ul>");
    for (const auto& candidate : difference.removed) {
        html += QStringLiteral("<li style=\"color:#b00000\">− ") + candidate_line(candidate) +
                QStringLiteral("</li>");
    }
    for (const auto& candidate : difference.added) {
        html += QStringLiteral("<li style=\"color:#006000\">+ ") + candidate_line(candidate) +
                QStringLiteral("</li>");
    }
    for (const auto& [before, after] : difference.changed) {
        html += QStringLiteral("<li>~ ") + candidate_line(before) + QStringLiteral(" ⇒ ") +
                candidate_line(after) + QStringLiteral("</li>");
    }
    html += QStringLiteral("</ul>");
    if (difference.order_changed) {
        html += QStringLiteral("<p>") +
                history_panel::tr("The candidates both runs offer are in another order.")
                    .toHtmlEscaped() +
                QStringLiteral("</p>");
    }
    return html;
}

history_panel::history_panel(QTabWidget* a_tabs) : QObject(a_tabs) {
    auto* page = new QSplitter(Qt::Vertical);
    m_list = new QListWidget(page);
    m_list->setObjectName(QStringLiteral("m_history_list"));
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_details = new QTextBrowser(page);
    m_details->setObjectName(QStringLiteral("m_history_details"));
    m_details->setOpenLinks(false);
    a_tabs->addTab(page, tr("Histor&y"));
    connect(m_list, &QListWidget::itemSelectionChanged, this, &history_panel::show_selection);
}

void history_panel::add(history_entry a_entry) {
    m_history.add(std::move(a_entry));
    refill();
}

void history_panel::refill() {
    const QSignalBlocker quiet(m_list);
    m_list->clear();
    for (const auto& entry : m_history.entries()) {
        m_list->addItem(history_title(entry));
    }
    m_details->clear();
}

void history_panel::show_selection() {
    std::vector<int> rows;
    for (const QListWidgetItem* item : m_list->selectedItems()) {
        rows.push_back(m_list->row(item));
    }
    std::sort(rows.begin(), rows.end());
    const auto& entries = m_history.entries();
    if (rows.size() == 1) {
        const auto& entry = entries[static_cast<std::size_t>(rows[0])];
        m_details->setHtml(entry_html(entry));
        emit entry_selected(entry);
    } else if (rows.size() == 2) {
        // Newest first in the list: the lower row is the later run.
        m_details->setHtml(difference_html(entries[static_cast<std::size_t>(rows[1])],
                                           entries[static_cast<std::size_t>(rows[0])]));
    } else {
        m_details->clear();
    }
}

} // namespace qiro_plugin::debugger

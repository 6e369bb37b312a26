#include "debugger/window/output_pane.hpp"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QSaveFile>
#include <QTextBlock>
#include <QTextCursor>
#include <QTimer>

namespace qiro_plugin::debugger {

namespace {

// Appends this small are shown at once, as the faithful pane always did.
constexpr qsizetype immediate_limit = 64 * 1024;
// What one pass of the event loop inserts at most, and how long it may keep at it.
constexpr qsizetype slice_units = 16 * 1024;
constexpr qint64 slice_budget_ms = 25;
// A block that continues the line of the block before it, broken only for display.
constexpr int continuation_state = 1;

bool has_long_line(QStringView a_text, qsizetype a_column) {
    for (const QChar unit : a_text) {
        if (unit == QLatin1Char('\n') || unit == QLatin1Char('\r')) {
            a_column = 0;
        } else if (++a_column > output_pane::display_line_limit) {
            return true;
        }
    }
    return false;
}

} // namespace

output_pane::output_pane(QWidget* a_parent) : QPlainTextEdit(a_parent) {
    m_slice_timer = new QTimer(this);
    m_slice_timer->setInterval(0);
    connect(m_slice_timer, &QTimer::timeout, this, &output_pane::show_slice);
}

void output_pane::append_line(const QString& a_text) {
    m_exact += a_text;
    m_exact += QLatin1Char('\n');
    const QString shown = a_text + QStringLiteral("\r\n");
    if (m_pending.isEmpty() && shown.size() <= immediate_limit && !has_long_line(shown, m_column)) {
        insert_for_display(shown);
        return;
    }
    if (m_pending_start > 0) {
        m_pending.remove(0, m_pending_start);
        m_pending_start = 0;
    }
    m_pending += shown;
    m_slice_timer->start();
}

void output_pane::clear_text() {
    m_exact.clear();
    m_pending.clear();
    m_pending_start = 0;
    m_column = 0;
    m_slice_timer->stop();
    setPlainText(QString());
}

void output_pane::show_slice() {
    QElapsedTimer spent;
    spent.start();
    while (m_pending_start < m_pending.size() && spent.elapsed() < slice_budget_ms) {
        qsizetype length = std::min(slice_units, m_pending.size() - m_pending_start);
        const qsizetype end = m_pending_start + length;
        // CR LF split over two slices would become two paragraph breaks, and a surrogate
        // pair split over two would be two broken characters.
        if (end < m_pending.size() && (m_pending.at(end - 1) == QLatin1Char('\r') ||
                                       m_pending.at(end - 1).isHighSurrogate())) {
            ++length;
        }
        insert_for_display(QStringView(m_pending).mid(m_pending_start, length));
        m_pending_start += length;
    }
    if (m_pending_start >= m_pending.size()) {
        m_pending.clear();
        m_pending_start = 0;
        m_slice_timer->stop();
        emit showing_finished();
    }
}

void output_pane::insert_for_display(QStringView a_text) {
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    qsizetype run_start = 0;
    for (qsizetype index = 0; index < a_text.size(); ++index) {
        const QChar unit = a_text.at(index);
        if (unit == QLatin1Char('\n') || unit == QLatin1Char('\r')) {
            m_column = 0;
            continue;
        }
        if (m_column >= display_line_limit && !unit.isLowSurrogate()) {
            cursor.insertText(a_text.mid(run_start, index - run_start).toString());
            cursor.insertBlock();
            cursor.block().setUserState(continuation_state);
            run_start = index;
            m_column = 0;
        }
        ++m_column;
    }
    cursor.insertText(a_text.mid(run_start).toString());
}

QMimeData* output_pane::createMimeDataFromSelection() const {
    const QTextCursor selection = textCursor();
    auto* mime = new QMimeData;
    if (!selection.hasSelection()) {
        return mime;
    }
    const int start = selection.selectionStart();
    const int end = selection.selectionEnd();
    // The whole pane copies as it was received, carriage returns included.
    if (start == 0 && end >= document()->characterCount() - 1 && m_pending.isEmpty()) {
        mime->setText(m_exact);
        return mime;
    }
    QString text;
    for (QTextBlock block = document()->findBlock(start); block.isValid(); block = block.next()) {
        if (block.position() > end) {
            break;
        }
        if (block.position() > start && block.userState() != continuation_state) {
            text += QLatin1Char('\n');
        }
        const int from = std::max(start - block.position(), 0);
        const int to = std::min(end - block.position(), block.length() - 1);
        if (to > from) {
            text += block.text().mid(from, to - from);
        }
    }
    mime->setText(text);
    return mime;
}

void output_pane::contextMenuEvent(QContextMenuEvent* a_event) {
    std::unique_ptr<QMenu> menu(createStandardContextMenu(a_event->pos()));
    menu->addSeparator();
    menu->addAction(tr("Copy &All"), this, [this] { QApplication::clipboard()->setText(m_exact); });
    menu->addAction(tr("&Save As…"), this, [this] {
        const QString path = QFileDialog::getSaveFileName(this, tr("Save Output"));
        QString error;
        if (!path.isEmpty() && !save_to_file(path, &error)) {
            QMessageBox::warning(this, tr("Save Output"), error);
        }
    });
    menu->exec(a_event->globalPos());
}

bool output_pane::save_to_file(const QString& a_path, QString* a_error) const {
    QSaveFile file(a_path);
    const QByteArray bytes = m_exact.toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        if (a_error != nullptr) {
            *a_error = tr("%1 could not be written: %2").arg(a_path, file.errorString());
        }
        return false;
    }
    return true;
}

} // namespace qiro_plugin::debugger

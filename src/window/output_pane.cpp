#include "window/output_pane.hpp"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QSaveFile>
#include <QStringDecoder>
#include <QTextBlock>
#include <QTextCursor>
#include <QTimer>

#include <climits>

namespace qiro_plugin::debugger {

namespace {

// Appends this small are shown at once, as the faithful pane always did.
constexpr qsizetype immediate_limit = 64 * 1024;
// What one pass of the event loop inserts at most, and how long it may keep at it.
constexpr qsizetype slice_units = 4 * 1024;
constexpr qint64 slice_budget_ms = 20;
// A block that continues the line of the block before it, broken only for display, and a
// block holding a note of the pane's own; copying leaves out both kinds of break and notes.
constexpr int continuation_state = 1;
constexpr int note_state = 2;

// What one pass counts of a stream no longer shown, in bytes or units.
constexpr qsizetype hidden_slice = 1024 * 1024;

bool is_continuation(char a_byte) {
    return (static_cast<unsigned char>(a_byte) & 0xC0) == 0x80;
}

// The UTF-16 length of checked UTF-8: one unit a character, two for one of four bytes.
qsizetype utf16_units(QByteArrayView a_bytes) {
    qsizetype units = 0;
    for (const char byte : a_bytes) {
        units += is_continuation(byte) ? 0 : (static_cast<unsigned char>(byte) >= 0xF0 ? 2 : 1);
    }
    return units;
}

// Checked UTF-8 as UTF-16, a leading byte-order mark kept as the character it is (Qt's own
// conversion drops it; the core's keeps it).
QString from_utf8(QByteArrayView a_bytes) {
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless |
                                                       QStringConverter::Flag::ConvertInitialBom);
    return decoder.decode(a_bytes);
}

bool is_break(QChar a_unit) {
    return a_unit == QLatin1Char('\n') || a_unit == QLatin1Char('\r');
}

bool has_long_line(QStringView a_text, qsizetype a_column) {
    for (const QChar unit : a_text) {
        if (is_break(unit)) {
            a_column = 0;
        } else if (++a_column > output_pane::display_line_limit) {
            return true;
        }
    }
    return false;
}

void insert_note(QTextCursor& a_cursor, const QString& a_note) {
    a_cursor.insertBlock();
    a_cursor.block().setUserState(note_state);
    a_cursor.insertText(a_note);
}

} // namespace

output_pane::output_pane(QWidget* a_parent) : QPlainTextEdit(a_parent) {
    m_slice_timer = new QTimer(this);
    m_slice_timer->setInterval(0);
    connect(m_slice_timer, &QTimer::timeout, this, &output_pane::show_slice);
}

void output_pane::append_line(QString a_text) {
    if (m_pending.empty() && m_hidden == 0 && a_text.size() + 2 <= immediate_limit &&
        m_shown + a_text.size() + 2 <= display_limit && !has_long_line(a_text, m_column)) {
        m_exact.emplace_back(a_text);
        m_exact.emplace_back(QStringLiteral("\n"));
        insert_for_display(QString(a_text + QStringLiteral("\r\n")));
        return;
    }
    append_piece(std::move(a_text));
}

void output_pane::append_utf8_line(QByteArray a_text) {
    if (a_text.size() <= immediate_limit) {
        append_line(from_utf8(a_text));
        return;
    }
    append_piece(std::move(a_text));
}

void output_pane::append_piece(piece a_text) {
    m_exact.push_back(a_text);
    m_exact.emplace_back(QStringLiteral("\n"));
    m_pending.push_back(std::move(a_text));
    m_pending.emplace_back(QStringLiteral("\r\n"));
    m_slice_timer->start();
}

void output_pane::clear_text() {
    m_exact.clear();
    m_pending.clear();
    m_pending_start = 0;
    m_column = 0;
    m_line_hidden = 0;
    m_shown = 0;
    m_hidden = 0;
    m_slice_timer->stop();
    setPlainText(QString());
}

QString output_pane::exact_text() const {
    qsizetype size = 0;
    for (const piece& part : m_exact) {
        // A UTF-8 byte never makes more than one UTF-16 unit.
        size += std::visit([](const auto& a_part) { return a_part.size(); }, part);
    }
    QString text;
    text.reserve(size);
    for (const piece& part : m_exact) {
        if (const auto* bytes = std::get_if<QByteArray>(&part)) {
            text += from_utf8(*bytes);
        } else {
            text += std::get<QString>(part);
        }
    }
    return text;
}

void output_pane::show_slice() {
    QElapsedTimer spent;
    spent.start();
    while (!m_pending.empty() && spent.elapsed() < slice_budget_ms) {
        const piece& part = m_pending.front();
        const qsizetype size = std::visit([](const auto& a_part) { return a_part.size(); }, part);
        const auto* bytes = std::get_if<QByteArray>(&part);
        qsizetype length = 0;
        if (m_shown >= display_limit) {
            // Counted in slices too: tens of megabytes at once would stall the loop.
            length = std::min(hidden_slice, size - m_pending_start);
            m_hidden +=
                bytes != nullptr
                    ? utf16_units(QByteArrayView(bytes->constData() + m_pending_start, length))
                    : length;
        } else if (bytes != nullptr) {
            length = std::min(slice_units, size - m_pending_start);
            qsizetype end = m_pending_start + length;
            // Never inside a character, and never between CR and LF.
            while (end < size && is_continuation(bytes->at(end))) {
                ++end;
            }
            if (end < size && bytes->at(end - 1) == '\r' && bytes->at(end) == '\n') {
                ++end;
            }
            length = end - m_pending_start;
            insert_for_display(
                from_utf8(QByteArrayView(bytes->constData() + m_pending_start, length)));
        } else {
            const QString& text = std::get<QString>(part);
            length = std::min(slice_units, size - m_pending_start);
            const qsizetype end = m_pending_start + length;
            // CR LF split over two slices would become two paragraph breaks, and a surrogate
            // pair split over two would be two broken characters.
            if (end < size &&
                (text.at(end - 1) == QLatin1Char('\r') || text.at(end - 1).isHighSurrogate())) {
                ++length;
            }
            insert_for_display(QStringView(text).mid(m_pending_start, length));
        }
        m_pending_start += length;
        if (m_pending_start >= size) {
            m_pending.pop_front();
            m_pending_start = 0;
        }
    }
    if (m_pending.empty()) {
        m_slice_timer->stop();
        show_hidden_note();
        emit showing_finished();
    }
}

void output_pane::show_hidden_note() {
    if (m_hidden == 0) {
        return;
    }
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    // The note replaces the one an earlier append left, so there is only ever one.
    if (cursor.block().userState() == note_state) {
        cursor.select(QTextCursor::BlockUnderCursor);
        cursor.removeSelectedText();
    }
    insert_note(cursor, tr("[… %n more character(s) not shown here; Save Output keeps everything]",
                           "", static_cast<int>(std::min<qsizetype>(m_hidden, INT_MAX))));
}

void output_pane::insert_for_display(QStringView a_text) {
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    qsizetype run_start = 0;
    const auto flush = [&](qsizetype a_end) {
        if (a_end > run_start) {
            cursor.insertText(a_text.mid(run_start, a_end - run_start).toString());
            m_shown += a_end - run_start;
        }
        run_start = a_end;
    };
    for (qsizetype index = 0; index < a_text.size(); ++index) {
        const QChar unit = a_text.at(index);
        if (m_line_hidden > 0) {
            if (!is_break(unit)) {
                ++m_line_hidden;
                continue;
            }
            // The end of a line shown only in part: say how much of it is not shown.
            insert_note(cursor, tr("[… %n more character(s) on this line]", "",
                                   static_cast<int>(std::min<qsizetype>(m_line_hidden, INT_MAX))));
            m_line_hidden = 0;
            run_start = index;
        }
        if (is_break(unit)) {
            m_column = 0;
            continue;
        }
        if (m_column >= line_display_limit && !unit.isLowSurrogate()) {
            flush(index);
            m_line_hidden = 1;
            continue;
        }
        if (m_column > 0 && m_column % display_line_limit == 0 && !unit.isLowSurrogate()) {
            flush(index);
            cursor.insertBlock();
            cursor.block().setUserState(continuation_state);
        }
        ++m_column;
    }
    if (m_line_hidden == 0) {
        flush(a_text.size());
    }
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
    if (start == 0 && end >= document()->characterCount() - 1) {
        mime->setText(exact_text());
        return mime;
    }
    QString text;
    for (QTextBlock block = document()->findBlock(start); block.isValid(); block = block.next()) {
        if (block.position() > end) {
            break;
        }
        if (block.userState() == note_state) {
            continue;
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
    menu->addAction(tr("Copy &All"), this,
                    [this] { QApplication::clipboard()->setText(exact_text()); });
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
    bool written = file.open(QIODevice::WriteOnly);
    for (auto part = m_exact.begin(); written && part != m_exact.end(); ++part) {
        const auto* bytes = std::get_if<QByteArray>(&*part);
        const QByteArray utf8 = bytes != nullptr ? *bytes : std::get<QString>(*part).toUtf8();
        written = file.write(utf8) == utf8.size();
    }
    if (!written || !file.commit()) {
        if (a_error != nullptr) {
            *a_error = tr("%1 could not be written: %2").arg(a_path, file.errorString());
        }
        return false;
    }
    return true;
}

} // namespace qiro_plugin::debugger

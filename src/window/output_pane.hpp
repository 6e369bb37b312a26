#pragma once
// A read-only output pane that stays live with tens of megabytes and lines of megabytes.

#include <QByteArray>
#include <QPlainTextEdit>
#include <QString>

#include <deque>
#include <variant>
#include <vector>

class QTimer;

namespace qiro_plugin::debugger {

// Keeps the exact text it was given and shows it in the plain-text view. Small appends are
// inserted at once; large ones are inserted in slices from the event loop. Laying out a very
// long line stalls the view for seconds, so for display only a long line is broken into
// blocks, and shows at most line_display_limit units; the pane shows at most
// display_limit units in all. A note in the pane says what is not shown. Copying the whole
// pane and saving it always give the exact text.
class output_pane : public QPlainTextEdit {
    Q_OBJECT

public:
    // Lines longer than this many UTF-16 units are shown broken into several blocks.
    static constexpr qsizetype display_line_limit = 4096;
    // What one line shows at most, and what the whole pane shows at most.
    static constexpr qsizetype line_display_limit = 64 * 1024;
    static constexpr qsizetype display_limit = 4 * 1024 * 1024;

    explicit output_pane(QWidget* a_parent = nullptr);

    // Appends the text and one line break: CR LF to the view (one paragraph break), "\n" to
    // the exact text.
    void append_line(QString a_text);
    // The same for text in UTF-8, which the caller has checked: converted slice by slice as it
    // is shown, so that tens of megabytes never stall the window in one go.
    void append_utf8_line(QByteArray a_text);
    // Empties the pane and forgets what was still waiting to be shown.
    void clear_text();

    // Everything appended since the last clear, exactly.
    QString exact_text() const;
    // True while part of the text still waits to be shown.
    bool is_showing() const { return !m_pending.empty(); }
    // Writes the exact text as UTF-8; false with a_error set when the file cannot be written.
    bool save_to_file(const QString& a_path, QString* a_error = nullptr) const;

signals:
    void showing_finished();

protected:
    QMimeData* createMimeDataFromSelection() const override;
    void contextMenuEvent(QContextMenuEvent* a_event) override;

private:
    // One piece of the exact text, as it came: UTF-16 or UTF-8.
    using piece = std::variant<QString, QByteArray>;

    void append_piece(piece a_text);
    void show_slice();
    void insert_for_display(QStringView a_text);
    void show_hidden_note();

    // The exact text in the pieces it came in; Qt's strings share them with m_pending.
    std::vector<piece> m_exact;
    std::deque<piece> m_pending;
    qsizetype m_pending_start = 0;
    // Units since the last line break shown, to know where a long line must be broken.
    qsizetype m_column = 0;
    qsizetype m_line_hidden = 0;
    qsizetype m_shown = 0;
    qsizetype m_hidden = 0;
    QTimer* m_slice_timer = nullptr;
};

} // namespace qiro_plugin::debugger

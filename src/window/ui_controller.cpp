#include "window/ui_controller.hpp"

#include "core/localized_texts.hpp"
#include "core/run_verdict.hpp"
#include "core/script_instance_factory.hpp"
#include "diagnosis/analyze.hpp"
#include "platform/command_runner.hpp"
#include "platform/localized_string.hpp"
#include "text/string_encode.hpp"
#include "ui_main_window.h"
#include "window/alert_box.hpp"
#include "window/diagnosis_list.hpp"
#include "window/output_pane.hpp"
#include "window/qt_text.hpp"
#include "window/sandbox_toggle.hpp"

#include <QApplication>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QLabel>
#include <QMainWindow>
#include <QStatusBar>
#include <QTextCursor>

#include <cstring>
#include <mutex>
#include <optional>
#include <vector>

namespace qiro_plugin::debugger {

namespace {

// Appends at the very end as the user would type it; "\r\n" becomes exactly one paragraph
// break, where appendPlainText would add a second one. The pane shows very large or very
// long-lined output in slices, so the window stays live.
void append_line(QPlainTextEdit* a_pane, const utf16_string& a_text) {
    // A straight copy of the code units: tens of megabytes cost a copy, and nothing, not even
    // a leading byte-order mark, is dropped on the way.
    static_cast<output_pane*>(a_pane)->append_line(QString(
        reinterpret_cast<const QChar*>(a_text.data()), static_cast<qsizetype>(a_text.size())));
}

// Output as the interpreter wrote it: checked whole before anything is appended, as the
// conversion would be, and copied for the pane in parts with the event loop turning between
// them, so that tens of megabytes never hold the window for long. The pane converts it as it
// shows it.
void append_utf8_line(QPlainTextEdit* a_pane, const std::string& a_text) {
    constexpr std::size_t part = 4 * 1024 * 1024;
    // The text ends at its first zero byte, as the conversion reads it.
    const std::size_t length = std::strlen(a_text.c_str());
    QByteArray copy(static_cast<qsizetype>(length), Qt::Uninitialized);
    for (std::size_t done = 0; done < length;) {
        std::size_t end = std::min(length, done + part);
        while (end < length && (static_cast<unsigned char>(a_text[end]) & 0xC0) == 0x80) {
            ++end;
        }
        string_encode::check_utf8(std::string_view(a_text).substr(done, end - done));
        std::memcpy(copy.data() + done, a_text.data() + done, end - done);
        done = end;
        if (done < length) {
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        }
    }
    static_cast<output_pane*>(a_pane)->append_utf8_line(std::move(copy));
}

// Closing the only window ends the application; it is never refused.
class main_window_frame : public QMainWindow {
public:
    using QMainWindow::QMainWindow;

protected:
    void closeEvent(QCloseEvent* a_event) override {
        a_event->accept();
        QCoreApplication::quit();
    }
};

} // namespace

struct ui_controller::impl {
    explicit impl(ui_controller& a_owner) : m_runner(a_owner, a_owner) {}

    Ui::main_window m_ui;
    std::unique_ptr<main_window_frame> m_window = std::make_unique<main_window_frame>();
    debug_runner m_runner;
    run_options m_options;
    // The plug-in whose run the status line and the diagnosis list show.
    std::optional<plugin_entry> m_shown_plugin;
};

ui_controller& ui_controller::getInstance() {
    static std::mutex creation_lock;
    static ui_controller* instance = nullptr;
    std::lock_guard lock(creation_lock);
    if (instance == nullptr) {
        // Lives until the process ends, as the window it owns does.
        instance = new ui_controller();
    }
    return *instance;
}

ui_controller::ui_controller() : p_impl(std::make_unique<impl>(*this)) {
    p_impl->m_ui.setupUi(p_impl->m_window.get());
    m_self_application = qobject_cast<QApplication*>(QCoreApplication::instance());
    m_self_window = p_impl->m_window.get();
    m_warning_text_view = p_impl->m_ui.m_warning_text_view;
    m_progress = p_impl->m_ui.m_progress;
    m_hyoki_text_field = p_impl->m_ui.m_hyoki_text_field;
    m_std_output_text_view = p_impl->m_ui.m_std_output_text_view;
    m_std_error_output_text_view = p_impl->m_ui.m_std_error_output_text_view;
    m_loaded_plusins_popup_button = p_impl->m_ui.m_loaded_plusins_popup_button;
    m_run_debug_button = p_impl->m_ui.m_run_debug_button;
    m_reading_text_field = p_impl->m_ui.m_reading_text_field;
    // The request's reading holds what its buffer holds, in UTF-16 units as QLineEdit counts.
    m_reading_text_field->setMaxLength(static_cast<int>(QIRO_PLUGIN_REQUEST_STRING_CAPACITY));

    // While a plug-in runs the window keeps painting and the busy indicator keeps moving;
    // clicks and keys wait until the run has ended.
    utility::set_run_command_wait_hook(
        [] { QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); });

    // The findings of each run, under the panes.
    m_diagnosis_list = new diagnosis_list(m_self_window);
    p_impl->m_ui.bottom_area_layout->addWidget(m_diagnosis_list);
    connect(m_diagnosis_list, &diagnosis_list::probe_policy_changed, this,
            [this](probe_policy a_policy) { p_impl->m_options.probes = a_policy; });

    m_self_window->installEventFilter(this);
    connect(m_run_debug_button, &QPushButton::clicked, this, &ui_controller::run_debug);
    connect(m_hyoki_text_field, &QLineEdit::returnPressed, this, &ui_controller::run_debug);
    connect(p_impl->m_ui.m_reload_button, &QPushButton::clicked, this, &ui_controller::reload);
    connect(m_loaded_plusins_popup_button, &QComboBox::activated, this, [this](int a_index) {
        m_menu_model.select(static_cast<std::size_t>(a_index));
        forget_other_plugins_run();
    });
    // Beside the other run controls, so the status line keeps the window's whole width.
    p_impl->m_ui.entry_row->addWidget(new sandbox_toggle(p_impl->m_options));
    // A summary longer than the window is wide is still there to read whole.
    QStatusBar* status = m_self_window->statusBar();
    connect(status, &QStatusBar::messageChanged, status, &QWidget::setToolTip);
    awake_from_nib();
}

ui_controller::~ui_controller() = default;

bool ui_controller::eventFilter(QObject* a_watched, QEvent* a_event) {
    // A translator installed after the window was made renames its controls at once.
    if (a_watched == m_self_window && a_event->type() == QEvent::LanguageChange) {
        p_impl->m_ui.retranslateUi(m_self_window);
    }
    return QObject::eventFilter(a_watched, a_event);
}

QMainWindow* ui_controller::window() const {
    return m_self_window;
}

const Ui::main_window& ui_controller::form() const {
    return p_impl->m_ui;
}

debug_runner& ui_controller::runner() {
    return p_impl->m_runner;
}

run_options& ui_controller::options() {
    return p_impl->m_options;
}

run_report ui_controller::run(run_request a_request) {
    a_request.options = p_impl->m_options;
    p_impl->m_shown_plugin = a_request.plugin;
    return p_impl->m_runner.run(a_request);
}

void ui_controller::awake_from_nib() {
    m_warning_text_view->setReadOnly(true);
    QPalette notice_palette = m_warning_text_view->palette();
    notice_palette.setColor(QPalette::Base, m_self_window->palette().color(QPalette::Window));
    m_warning_text_view->setPalette(notice_palette);

    // Interpreter output reads best as the terminal shows it: fixed pitch, tabs four wide.
    const QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    for (QPlainTextEdit* pane : {m_std_output_text_view, m_std_error_output_text_view}) {
        pane->setReadOnly(true);
        pane->setFont(fixed);
        pane->setTabStopDistance(QFontMetricsF(fixed).horizontalAdvance(QLatin1Char(' ')) * 4);
    }
    clear_std_output_text();
    clear_std_error_output_text();

    QSizePolicy keep_place = m_progress->sizePolicy();
    keep_place.setRetainSizeWhenHidden(true);
    m_progress->setSizePolicy(keep_place);
    m_progress->setVisible(false);
    // The moving bar says what it stands for.
    m_progress_label = new QLabel(tr("Running…"), m_self_window);
    m_progress_label->setSizePolicy(keep_place);
    p_impl->m_ui.hyoki_row->insertWidget(p_impl->m_ui.hyoki_row->indexOf(m_progress),
                                         m_progress_label);
    m_progress_label->setVisible(false);
    m_progress->setAccessibleName(m_progress_label->text());

    const QSize initial = m_self_window->size();
    m_self_window->setMinimumSize(initial);
    m_self_window->setMaximumSize(initial * 2);

    // Until the first reload has listed the folder there is nothing to choose or run.
    fill_menu();
}

void ui_controller::reload() {
    // The alert is modal: it waits until the menu and the Run button show what was found, so
    // that no stale choice sits behind it.
    struct held_alerts : alert_sink {
        std::vector<std::string> m_keys;
        void show_alert(const std::string& a_key) override { m_keys.push_back(a_key); }
    } held;
    reload_plugins(m_menu_model, held);
    fill_menu();
    for (const auto& key : held.m_keys) {
        show_alert(key);
    }
}

void ui_controller::fill_menu() {
    const QSignalBlocker quiet(m_loaded_plusins_popup_button);
    m_loaded_plusins_popup_button->clear();
    for (const auto& title : m_menu_model.item_titles()) {
        m_loaded_plusins_popup_button->addItem(to_qstring(title));
    }
    if (const auto selected = m_menu_model.selected_index()) {
        m_loaded_plusins_popup_button->setCurrentIndex(static_cast<int>(*selected));
    }
    m_loaded_plusins_popup_button->setEnabled(m_menu_model.is_menu_enabled());
    m_run_debug_button->setEnabled(m_menu_model.is_run_enabled());
    forget_other_plugins_run();
}

void ui_controller::forget_shown_run() {
    p_impl->m_shown_plugin.reset();
    m_self_window->statusBar()->clearMessage();
    m_diagnosis_list->show_findings({});
    m_diagnosis_list->show_live_std_error({});
}

void ui_controller::forget_other_plugins_run() {
    if (p_impl->m_shown_plugin && p_impl->m_shown_plugin != m_menu_model.selected_plugin()) {
        forget_shown_run();
    }
}

void ui_controller::run_debug() {
    const auto plugin = m_menu_model.selected_plugin();
    if (!plugin) {
        return;
    }
    // An empty reading leaves the request exactly as the plug-in manager fills it.
    const run_report report = run(processing_request(*plugin, to_utf16(m_hyoki_text_field->text()),
                                                     to_utf16(m_reading_text_field->text())));
    m_diagnosis_list->show_findings(report.findings);
    show_run_summary(report, to_qstring(plugin->second));
    emit run_finished(report, *plugin);
}

void ui_controller::show_run_summary(const run_report& a_report, const QString& a_file_name) {
    const auto verdict =
        judge_run(a_report, diagnosis::entry_kind::processing, to_utf16(a_file_name));
    if (verdict.what == run_verdict::kind::alerted) {
        // The alert says why; a summary of an earlier run would only mislead.
        m_self_window->statusBar()->clearMessage();
        return;
    }
    QString summary = to_qstring(verdict_text(verdict, installed_text_language()));
    if (!verdict.hint.empty()) {
        summary += QLatin1Char(' ') + to_qstring(verdict.hint);
    }
    if (a_report.sandbox != utility::sandbox_mode::off && !a_report.sandbox_unavailable) {
        summary += QLatin1Char(' ') + (a_report.sandbox == utility::sandbox_mode::nonet
                                           ? tr("(sandboxed, no network)")
                                           : tr("(sandboxed)"));
    }
    if (const auto finding = diagnosis::summarize(a_report.findings); !finding.empty()) {
        // What went wrong comes first: the line may be cut at the window's edge.
        summary = verdict.severity == run_verdict::level::success
                      ? summary + QLatin1Char(' ') + QString::fromStdString(finding)
                      : QString::fromStdString(finding) + QStringLiteral(" — ") + summary;
    }
    m_self_window->statusBar()->showMessage(summary);
}

std::shared_ptr<abstract_qiro_plugin_instance>
ui_controller::get_script_instance_path(const utf16_string& a_folder, const utf16_string& a_name) {
    return debugger::get_script_instance_path(a_folder, a_name, *this);
}

void ui_controller::add_std_output_text(const utf16_string& a_text) {
    append_line(m_std_output_text_view, a_text);
}

void ui_controller::add_std_error_output_text(const utf16_string& a_text) {
    append_line(m_std_error_output_text_view, a_text);
}

void ui_controller::add_std_output_utf8(const std::string& a_text) {
    append_utf8_line(m_std_output_text_view, a_text);
}

void ui_controller::add_std_error_output_utf8(const std::string& a_text) {
    append_utf8_line(m_std_error_output_text_view, a_text);
}

void ui_controller::clear_std_output_text() {
    static_cast<output_pane*>(m_std_output_text_view)->clear_text();
}

void ui_controller::clear_std_error_output_text() {
    static_cast<output_pane*>(m_std_error_output_text_view)->clear_text();
}

void ui_controller::start_progress() {
    // Nothing of the previous run stays on show as if it were this one's.
    m_self_window->statusBar()->clearMessage();
    m_diagnosis_list->show_findings({});
    m_diagnosis_list->show_live_std_error({});
    m_progress->setRange(0, 0);
    m_progress_label->setVisible(true);
    m_progress->setVisible(true);
    emit busy_changed(true);
    // Paint the indicator now: the run blocks this thread until its commands end.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void ui_controller::stop_progress() {
    m_progress->setVisible(false);
    m_progress_label->setVisible(false);
    emit busy_changed(false);
}

void ui_controller::show_std_error_so_far(const std::string& a_last_lines) {
    m_diagnosis_list->show_live_std_error(QString::fromStdString(a_last_lines));
}

void ui_controller::show_alert(const std::string& a_key) {
    show_alert_box(m_self_window, to_qstring(utility::localized_string(a_key)));
}

} // namespace qiro_plugin::debugger

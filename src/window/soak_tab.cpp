#include "window/soak_tab.hpp"

#include "cases/case_file.hpp"
#include "soak/soak_engine.hpp"
#include "text/string_encode.hpp"
#include "ui_main_window.h"
#include "window/ui_controller.hpp"
#include "window/workbench.hpp"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <QStatusBar>
#include <QTabWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <atomic>
#include <thread>

namespace qiro_plugin::debugger {

namespace {

QString from_utf8(const std::string& a_text) {
    return QString::fromUtf8(a_text.data(), static_cast<qsizetype>(a_text.size()));
}

std::string plugin_path(const plugin_entry& a_plugin) {
    return (std::filesystem::path(string_encode::WideCharToMultiByteFilePath(a_plugin.first.c_str())) /
            string_encode::WideCharToMultiByteFilePath(a_plugin.second.c_str()))
        .string();
}

// The item of the corpus menu that asks for a file.
constexpr int choose_file_item = 2;

} // namespace

struct soak_tab::impl {
    plugin_source m_selected;
    std::thread m_thread;
    std::atomic<bool> m_stop{false};
    // The plug-in of the last soak and what it gave; set on the window's thread once the soak's
    // thread has ended.
    std::optional<plugin_entry> m_plugin;
    std::shared_ptr<soak::soak_report> m_report;
    std::shared_ptr<soak::soak_report> m_running;
};

soak_tab::soak_tab(plugin_source a_selected, QWidget* a_parent)
    : QWidget(a_parent), p_impl(std::make_unique<impl>()) {
    p_impl->m_selected = std::move(a_selected);
    setObjectName(QStringLiteral("soak_tab"));
    m_corpus = new QComboBox(this);
    m_corpus->setObjectName(QStringLiteral("soak_corpus"));
    m_corpus->addItem(tr("edge (built in)"), QStringLiteral("edge"));
    m_corpus->addItem(tr("skk (SKK-JISYO.L)"), QStringLiteral("skk"));
    m_corpus->addItem(tr("File…"));
    m_corpus->setToolTip(tr("The written forms to run: edge cases that once broke real programs, "
                            "every written form of the SKK dictionary, or a file of one form per "
                            "line (an optional TAB and reading)."));
    m_limit = new QSpinBox(this);
    m_limit->setRange(0, 1000000);
    m_limit->setSpecialValueText(tr("all"));
    m_limit->setPrefix(tr("Limit: "));
    m_limit->setToolTip(tr("Run a sample of this many inputs, the same each time."));
    m_fast_check = new QCheckBox(tr("Fast"), this);
    m_fast_check->setChecked(true);
    m_fast_check->setToolTip(tr("Load the plug-in once and fork each input's run from it; a "
                                "sample and every failure run again faithfully."));
    m_start_button = new QPushButton(tr("Soak"), this);
    m_stop_button = new QPushButton(tr("Stop"), this);
    m_stop_button->setEnabled(false);
    m_progress = new QProgressBar(this);
    m_progress->setValue(0);
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("soak_status"));
    m_status->setWordWrap(true);
    m_counts = new QLabel(this);
    m_counts->setObjectName(QStringLiteral("soak_counts"));
    m_counts->setWordWrap(true);
    m_failures = new QTreeWidget(this);
    m_failures->setObjectName(QStringLiteral("soak_failures"));
    m_failures->setHeaderLabels({tr("Failure"), tr("Inputs"), tr("Shortest input"), tr("Message")});
    m_failures->setRootIsDecorated(false);
    m_failures->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_open_button = new QPushButton(tr("Open as Run"), this);
    m_save_button = new QPushButton(tr("Save as Case"), this);
    m_open_button->setEnabled(false);
    m_save_button->setEnabled(false);

    auto* controls = new QHBoxLayout;
    controls->addWidget(m_corpus, 1);
    controls->addWidget(m_limit);
    controls->addWidget(m_fast_check);
    controls->addWidget(m_start_button);
    controls->addWidget(m_stop_button);
    auto* actions = new QHBoxLayout;
    actions->addWidget(m_status, 1);
    actions->addWidget(m_open_button);
    actions->addWidget(m_save_button);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(controls);
    layout->addWidget(m_progress);
    layout->addWidget(m_counts);
    layout->addWidget(m_failures, 1);
    layout->addLayout(actions);

    connect(m_corpus, &QComboBox::activated, this, &soak_tab::choose_corpus);
    connect(m_start_button, &QPushButton::clicked, this, &soak_tab::start);
    connect(m_stop_button, &QPushButton::clicked, this, &soak_tab::stop);
    connect(m_open_button, &QPushButton::clicked, this, &soak_tab::open_selected_failure);
    connect(m_save_button, &QPushButton::clicked, this, [this] {
        if (const QString error = save_selected_failure(); !error.isEmpty()) {
            QMessageBox::warning(this, tr("Save as Case"), error);
        }
    });
    connect(m_failures, &QTreeWidget::itemDoubleClicked, this, &soak_tab::open_selected_failure);
    connect(m_failures, &QTreeWidget::itemSelectionChanged, this, [this] {
        const bool chosen = m_failures->currentItem() != nullptr && !is_running();
        m_open_button->setEnabled(chosen);
        m_save_button->setEnabled(chosen);
    });
    // The application's end does not wait for the window's destruction: the soak ends first.
    if (qApp != nullptr) {
        connect(qApp, &QCoreApplication::aboutToQuit, this, &soak_tab::wait);
    }
}

soak_tab::~soak_tab() {
    wait();
}

void soak_tab::wait() {
    if (p_impl->m_thread.joinable()) {
        p_impl->m_stop = true;
        p_impl->m_thread.join();
    }
}

bool soak_tab::is_running() const {
    return p_impl->m_running != nullptr;
}

std::optional<plugin_entry> soak_tab::soaked_plugin() const {
    return p_impl->m_plugin;
}

void soak_tab::set_corpus_file(const QString& a_path) {
    const int found = m_corpus->findData(a_path);
    if (found >= 0) {
        m_corpus->setCurrentIndex(found);
        return;
    }
    m_corpus->addItem(a_path, a_path);
    m_corpus->setCurrentIndex(m_corpus->count() - 1);
}

void soak_tab::choose_corpus(int a_index) {
    if (a_index != choose_file_item) {
        return;
    }
    const QString file = QFileDialog::getOpenFileName(this, tr("Corpus of Written Forms"));
    if (file.isEmpty()) {
        m_corpus->setCurrentIndex(0);
        return;
    }
    set_corpus_file(file);
}

void soak_tab::start() {
    if (is_running()) {
        return;
    }
    const auto plugin = p_impl->m_selected ? p_impl->m_selected() : std::nullopt;
    const QString corpus = m_corpus->currentData().toString();
    if (!plugin || corpus.isEmpty()) {
        m_status->setText(plugin ? tr("Choose a corpus first.") : tr("Choose a plug-in first."));
        return;
    }
    // A thread that ended on its own is joined here, before the next one takes its place.
    wait();
    p_impl->m_stop = false;
    p_impl->m_plugin = plugin;
    p_impl->m_report.reset();
    m_failures->clear();
    m_counts->clear();
    m_progress->setRange(0, 0);
    m_status->setText(tr("Soaking %1…").arg(QString::fromStdU16String(plugin->second)));
    m_start_button->setEnabled(false);
    m_stop_button->setEnabled(true);
    m_open_button->setEnabled(false);
    m_save_button->setEnabled(false);

    auto report = std::make_shared<soak::soak_report>();
    p_impl->m_running = report;
    soak::soak_options options;
    options.jobs = 0;
    options.fast = m_fast_check->isChecked();
    options.stop = &p_impl->m_stop;
    // Called on the soak's thread: the window learns of it through its event queue.
    options.on_progress = [this](std::size_t a_done, std::size_t a_total) {
        QMetaObject::invokeMethod(
            this, [this, a_done, a_total] { show_progress(a_done, a_total); },
            Qt::QueuedConnection);
    };
    const std::string name = corpus.toStdString();
    const auto limit = m_limit->value() > 0
                           ? std::optional<std::size_t>(static_cast<std::size_t>(m_limit->value()))
                           : std::nullopt;
    p_impl->m_thread = std::thread([this, report, options, name, limit, plugin = *plugin] {
        QString error;
        try {
            *report = soak::run_soak(plugin, soak::sample_inputs(soak::load_corpus(name), limit, 1),
                                     options);
        } catch (const std::exception& a_error) {
            error = QString::fromUtf8(a_error.what());
        }
        QMetaObject::invokeMethod(
            this, [this, error] { show_report(error); }, Qt::QueuedConnection);
    });
}

void soak_tab::stop() {
    // The soak's own loop ends the commands running now and starts no further one.
    p_impl->m_stop = true;
}

void soak_tab::show_progress(std::size_t a_done, std::size_t a_total) {
    if (!is_running()) {
        return;
    }
    m_progress->setRange(0, static_cast<int>(a_total));
    m_progress->setValue(static_cast<int>(a_done));
    m_progress->setFormat(QStringLiteral("%v / %m"));
}

void soak_tab::show_report(const QString& a_error) {
    wait();
    const auto report = std::exchange(p_impl->m_running, nullptr);
    m_start_button->setEnabled(true);
    m_stop_button->setEnabled(false);
    if (!report || !a_error.isEmpty()) {
        m_progress->setRange(0, 1);
        m_progress->setValue(0);
        m_status->setText(a_error);
        emit finished(0);
        return;
    }
    p_impl->m_report = report;
    m_progress->setRange(0, static_cast<int>(report->inputs.size()));
    m_progress->setValue(static_cast<int>(report->done));
    QStringList counts;
    for (const auto& [kind, count] : report->counts) {
        counts << QStringLiteral("%1: %2").arg(from_utf8(kind)).arg(count);
    }
    m_counts->setText(counts.join(QStringLiteral(", ")));
    for (const auto& failure : report->failures) {
        auto* item = new QTreeWidgetItem(m_failures);
        item->setText(0, from_utf8(failure.code));
        item->setText(1, QString::number(failure.count));
        item->setText(2, from_utf8(report->inputs[failure.shortest].written_form));
        item->setText(3, from_utf8(failure.message));
        QStringList lines;
        for (const auto& line : failure.diagnosis_lines) {
            lines << from_utf8(line);
        }
        item->setToolTip(3, lines.join(QLatin1Char('\n')));
    }
    QStringList notes;
    if (report->interrupted) {
        notes << tr("Stopped after %1 of %2 inputs.").arg(report->done).arg(report->inputs.size());
    } else {
        notes << tr("%n input(s) in %1 s.", nullptr, static_cast<int>(report->done))
                     .arg(report->wall_seconds, 0, 'f', 1);
    }
    if (!report->fallback_reason.empty()) {
        notes << tr("Fast mode off, ran faithfully: %1").arg(from_utf8(report->fallback_reason));
    }
    if (!report->differing.empty()) {
        notes << tr("%n fast run(s) differ from their faithful runs.", nullptr,
                    static_cast<int>(report->differing.size()));
    }
    m_status->setText(notes.join(QLatin1Char(' ')));
    emit finished(static_cast<int>(report->failures.size()));
}

void soak_tab::open_selected_failure() {
    const int row = m_failures->indexOfTopLevelItem(m_failures->currentItem());
    const auto& report = p_impl->m_report;
    if (row < 0 || !report || static_cast<std::size_t>(row) >= report->failures.size()) {
        return;
    }
    const auto& input = report->inputs[report->failures[static_cast<std::size_t>(row)].shortest];
    emit run_requested(from_utf8(input.written_form), from_utf8(input.reading));
}

QString soak_tab::save_selected_failure() {
    const int row = m_failures->indexOfTopLevelItem(m_failures->currentItem());
    const auto& report = p_impl->m_report;
    if (row < 0 || !report || !p_impl->m_plugin) {
        return tr("Choose a failure first.");
    }
    std::string cases_path;
    try {
        cases_path = cases::cases_path_for(plugin_path(*p_impl->m_plugin)).string();
    } catch (const std::exception& error) {
        return QString::fromUtf8(error.what());
    }
    const std::string error =
        soak::save_failure_cases(*report, cases_path, static_cast<std::size_t>(row));
    if (!error.empty()) {
        return from_utf8(error);
    }
    m_status->setText(tr("Saved as a case in %1.").arg(from_utf8(cases_path)));
    emit case_saved();
    return {};
}

soak_tab* add_soak_tab(ui_controller& a_controller, workbench& a_bench,
                       std::function<void()> a_cases_reload) {
    auto* soak =
        new soak_tab([&a_controller] { return a_controller.menu_model().selected_plugin(); });
    const Ui::main_window& form = a_controller.form();
    form.m_result_tabs->addTab(soak, soak_tab::tr("Soak"));
    // The input runs as the author would run it by hand: the plug-in it failed with chosen in the
    // menu, then the window's own Run, in the panes.
    QObject::connect(
        soak, &soak_tab::run_requested, soak,
        [&a_controller, &a_bench, soak](const QString& a_written_form, const QString& a_reading) {
            const auto plugin = soak->soaked_plugin();
            const Ui::main_window& window = a_controller.form();
            if (!plugin) {
                return;
            }
            if (a_controller.menu_model().selected_plugin() != plugin) {
                a_bench.select_plugin(QString::fromStdU16String(plugin->second));
            }
            if (a_controller.menu_model().selected_plugin() != plugin) {
                a_controller.window()->statusBar()->showMessage(
                    soak_tab::tr("%1 is no longer in the plug-in menu.")
                        .arg(QString::fromStdU16String(plugin->second)));
                return;
            }
            window.m_hyoki_text_field->setText(a_written_form);
            window.m_reading_text_field->setText(a_reading);
            window.m_result_tabs->setCurrentWidget(window.output_tab);
            window.m_run_debug_button->click();
        });
    if (a_cases_reload) {
        QObject::connect(soak, &soak_tab::case_saved, soak, std::move(a_cases_reload));
    }
    return soak;
}

} // namespace qiro_plugin::debugger

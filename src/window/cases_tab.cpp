#include "window/cases_tab.hpp"

#include "cases/case_snapshot.hpp"
#include "core/coverage_companion.hpp"
#include "core/editor_command.hpp"
#include "coverage/coverage_writers.hpp"
#include "platform/command_runner.hpp"
#include "text/string_encode.hpp"

#include <QAction>
#include <QCheckBox>
#include <QColor>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QUrl>
#include <QVBoxLayout>

#include <atomic>
#include <map>
#include <utility>

namespace qiro_plugin::debugger {

namespace {

constexpr int result_column = 2;

QString from_utf8(const std::string& a_text) {
    return QString::fromUtf8(a_text.data(), static_cast<qsizetype>(a_text.size()));
}

std::filesystem::path path_of(const plugin_entry& a_plugin) {
    const auto text = [](const utf16_string& a_text) {
        try {
            return string_encode::WideCharToMultiByteFilePath(a_text.c_str());
        } catch (const std::exception&) {
            return std::string();
        }
    };
    return std::filesystem::path(text(a_plugin.first)) / text(a_plugin.second);
}

QString kind_text(const cases::test_case& a_case) {
    switch (a_case.kind) {
    case cases::case_kind::processing:
        return from_utf8(a_case.written_form);
    case cases::case_kind::callback:
        return cases_tab::tr("callback: %1").arg(from_utf8(a_case.candidate));
    case cases::case_kind::preference:
        return cases_tab::tr("preference");
    }
    return {};
}

} // namespace

struct cases_tab::impl {
    plugin_source m_selected;
    std::unique_ptr<cases::cases_file> m_file;
    std::map<std::size_t, cases::case_outcome> m_outcomes;
    bool m_running = false;
    // Set by Stop: no further case starts, and the running ones end at once.
    std::atomic<bool> m_stop = false;
    // What the last run with coverage reached of the plug-in.
    std::optional<coverage::file_coverage> m_coverage;
    std::unique_ptr<QTemporaryDir> m_report_folder;
    // genhtml while it makes the report, and whether the report opens once made.
    QProcess* m_genhtml = nullptr;
    bool m_open_when_made = false;
};

cases_tab::cases_tab(plugin_source a_selected, QWidget* a_parent)
    : QWidget(a_parent), p_impl(std::make_unique<impl>()) {
    p_impl->m_selected = std::move(a_selected);
    setObjectName(QStringLiteral("cases_tab"));
    m_list = new QTreeWidget(this);
    m_list->setObjectName(QStringLiteral("case_list"));
    m_list->setHeaderLabels({tr("Case"), tr("Input"), tr("Result")});
    m_list->setRootIsDecorated(false);
    m_list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_detail = new QPlainTextEdit(this);
    m_detail->setObjectName(QStringLiteral("case_detail"));
    m_detail->setReadOnly(true);
    m_status = new QLabel(this);
    m_run_all_button = new QPushButton(tr("Run &all"), this);
    m_run_selected_button = new QPushButton(tr("Run selec&ted"), this);

    m_coverage_check = new QCheckBox(tr("Co&verage"), this);
    m_coverage_check->setObjectName(QStringLiteral("coverage_check"));
    m_coverage_check->setToolTip(tr("Run each case under its language's coverage tool and show "
                                    "which lines of the plug-in the cases reach."));
    m_coverage_summary = new QLabel(this);
    m_coverage_summary->setObjectName(QStringLiteral("coverage_summary"));
    // Both ways to look at the coverage sit behind one button, so that the tab's controls
    // leave letters enough for the window's own mnemonics.
    m_coverage_button = new QPushButton(tr("&Coverage report"), this);
    m_coverage_button->setObjectName(QStringLiteral("coverage_report"));
    auto* coverage_menu = new QMenu(m_coverage_button);
    m_open_uncovered = coverage_menu->addAction(tr("&First Line Not Reached"));
    m_open_uncovered->setObjectName(QStringLiteral("open_uncovered"));
    m_open_report = coverage_menu->addAction(tr("&HTML Report"));
    m_open_report->setObjectName(QStringLiteral("open_coverage_report"));
    m_coverage_button->setMenu(coverage_menu);
    m_open_uncovered->setEnabled(false);
    m_open_report->setEnabled(false);
    m_coverage_button->setEnabled(false);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_run_all_button);
    buttons->addWidget(m_run_selected_button);
    buttons->addWidget(m_coverage_check);
    buttons->addWidget(m_status, 1);
    auto* coverage_row = new QHBoxLayout;
    coverage_row->addWidget(m_coverage_summary, 1);
    coverage_row->addWidget(m_coverage_button);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(buttons);
    layout->addLayout(coverage_row);
    layout->addWidget(m_list, 2);
    layout->addWidget(m_detail, 1);

    connect(m_run_all_button, &QPushButton::clicked, this, &cases_tab::run_all);
    connect(m_run_selected_button, &QPushButton::clicked, this, &cases_tab::run_selected);
    connect(m_open_uncovered, &QAction::triggered, this, &cases_tab::open_first_line_not_reached);
    connect(m_open_report, &QAction::triggered, this, &cases_tab::open_html_report);
    connect(m_list, &QTreeWidget::itemSelectionChanged, this, &cases_tab::show_detail);
    reload();
}

cases_tab::~cases_tab() {
    // Ended before its folder goes, so that it writes nothing there afterwards.
    if (auto* genhtml = p_impl->m_genhtml) {
        genhtml->disconnect(this);
        genhtml->kill();
        genhtml->waitForFinished(5000);
    }
}

void cases_tab::reload() {
    if (p_impl->m_running) {
        return;
    }
    m_list->clear();
    m_detail->clear();
    p_impl->m_outcomes.clear();
    p_impl->m_file.reset();
    p_impl->m_coverage.reset();
    m_coverage_summary->clear();
    m_open_uncovered->setEnabled(false);
    m_open_report->setEnabled(false);
    m_coverage_button->setEnabled(false);
    const auto plugin = p_impl->m_selected ? p_impl->m_selected() : std::nullopt;
    if (!plugin) {
        m_status->setText(tr("No plug-in selected."));
        m_run_all_button->setEnabled(false);
        m_run_selected_button->setEnabled(false);
        return;
    }
    const auto path = cases::cases_path_for(path_of(*plugin));
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        m_status->setText(tr("No cases yet: save a run as a case, or write %1.")
                              .arg(QString::fromStdString(path.filename().string())));
        m_run_all_button->setEnabled(false);
        m_run_selected_button->setEnabled(false);
        return;
    }
    p_impl->m_file = std::make_unique<cases::cases_file>(cases::read_cases_file(path, *plugin));
    for (const auto& the_case : p_impl->m_file->cases) {
        new QTreeWidgetItem(m_list, {from_utf8(the_case.name), kind_text(the_case), tr("not run")});
    }
    QString problems;
    for (const auto& problem : p_impl->m_file->problems) {
        problems += tr("%1:%2:%3: %4\n")
                        .arg(QString::fromStdString(path.filename().string()))
                        .arg(problem.line)
                        .arg(problem.column)
                        .arg(from_utf8(problem.message));
    }
    m_detail->setPlainText(problems);
    m_status->setText(problems.isEmpty() ? tr("%n case(s).", nullptr,
                                              static_cast<int>(m_list->topLevelItemCount()))
                                         : tr("The cases file has problems: see below."));
    m_run_all_button->setEnabled(!p_impl->m_file->cases.empty());
    m_run_selected_button->setEnabled(!p_impl->m_file->cases.empty());
}

void cases_tab::run_all() {
    reload();
    if (!p_impl->m_file) {
        return;
    }
    std::vector<std::size_t> all(p_impl->m_file->cases.size());
    for (std::size_t index = 0; index < all.size(); ++index) {
        all[index] = index;
    }
    run(all);
}

void cases_tab::run_selected() {
    if (!p_impl->m_file) {
        return;
    }
    std::vector<std::size_t> chosen;
    for (auto* item : m_list->selectedItems()) {
        chosen.push_back(static_cast<std::size_t>(m_list->indexOfTopLevelItem(item)));
    }
    if (chosen.empty() && m_list->currentItem() != nullptr) {
        chosen.push_back(
            static_cast<std::size_t>(m_list->indexOfTopLevelItem(m_list->currentItem())));
    }
    run(chosen);
}

void cases_tab::run(const std::vector<std::size_t>& a_indexes) {
    if (p_impl->m_running || a_indexes.empty()) {
        return;
    }
    p_impl->m_running = true;
    p_impl->m_stop = false;
    m_run_all_button->setEnabled(false);
    m_run_selected_button->setEnabled(false);
    m_status->setText(tr("Stop (Esc) ends the running cases."));
    emit running_changed(true);
    std::vector<cases::case_job> jobs;
    for (const auto index : a_indexes) {
        jobs.push_back({p_impl->m_file.get(), &p_impl->m_file->cases.at(index)});
        m_list->topLevelItem(static_cast<int>(index))->setText(result_column, tr("running…"));
    }
    int passed = 0;
    int failed = 0;
    int stopped = 0;
    cases::run_options options;
    options.stop = &p_impl->m_stop;
    options.on_done = [&](std::size_t a_job, const cases::case_outcome& a_outcome) {
        const std::size_t index = a_indexes[a_job];
        auto* item = m_list->topLevelItem(static_cast<int>(index));
        // A case that Stop ended, or kept from starting, did not fail: it did not finish.
        const bool ended_by_stop =
            p_impl->m_stop && (a_outcome.skipped || a_outcome.run.report.timed_out_after_s);
        if (ended_by_stop) {
            item->setText(result_column, tr("stopped"));
            item->setForeground(result_column, QColor(128, 128, 128));
            ++stopped;
        } else {
            item->setText(result_column, a_outcome.check.passed ? tr("pass") : tr("FAIL"));
            item->setForeground(result_column,
                                a_outcome.check.passed ? QColor(0, 128, 0) : QColor(192, 0, 0));
            (a_outcome.check.passed ? passed : failed) += 1;
        }
        p_impl->m_outcomes[index] = a_outcome;
    };
    // The cases run on worker threads; this thread keeps the window live meanwhile. The
    // window's Stop takes its clicks and keys now, and holds the others until the end.
    options.on_wait = [this] {
        if (p_impl->m_stop) {
            utility::stop_running_commands(); // a command that started after Stop
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents);
    };
    std::optional<coverage_collection> measured;
    if (m_coverage_check->isChecked()) {
        measured.emplace();
        options.companions = [&measured] {
            return std::vector<std::shared_ptr<entry_companion>>{measured->companion()};
        };
    }
    cases::run_cases(jobs, options);
    if (measured) {
        show_coverage(*measured);
    }
    p_impl->m_running = false;
    m_run_all_button->setEnabled(true);
    m_run_selected_button->setEnabled(true);
    m_status->setText(
        stopped > 0 ? tr("%1 passed, %2 failed, %3 stopped").arg(passed).arg(failed).arg(stopped)
                    : tr("%1 passed, %2 failed").arg(passed).arg(failed));
    emit running_changed(false);
    show_detail();
    emit cases_finished(passed, failed);
}

void cases_tab::stop() {
    if (!p_impl->m_running) {
        return;
    }
    p_impl->m_stop = true;
    utility::stop_running_commands();
}

void cases_tab::show_coverage(const coverage_collection& a_measured) {
    const auto files = a_measured.files();
    p_impl->m_coverage.reset();
    if (files.size() == 1) {
        p_impl->m_coverage = files.front();
        const auto counts = coverage::summarize(files.front());
        QString line =
            tr("%1: %2 of %3 lines (%4 %)")
                .arg(QFile::decodeName(path_of(p_impl->m_file->plugin).filename().string().c_str()))
                .arg(counts.lines_hit)
                .arg(counts.lines_found)
                .arg(coverage::whole_percent(counts.lines_hit, counts.lines_found));
        if (counts.branches_found > 0) {
            line += tr(", %1 of %2 branches").arg(counts.branches_hit).arg(counts.branches_found);
        }
        m_coverage_summary->setText(line);
    } else {
        // Nothing measured: the runs were refused (the tool is missing) or left no data.
        const auto problems = a_measured.problems();
        m_coverage_summary->setText(problems.empty() ? tr("No coverage: see the cases' results.")
                                                     : from_utf8(problems.front()));
    }
    m_open_uncovered->setEnabled(first_line_not_reached() > 0);
    m_open_report->setEnabled(p_impl->m_coverage.has_value());
    m_coverage_button->setEnabled(m_open_uncovered->isEnabled() || m_open_report->isEnabled());
}

unsigned cases_tab::first_line_not_reached() const {
    return p_impl->m_coverage ? coverage::first_line_not_reached(*p_impl->m_coverage) : 0;
}

void cases_tab::open_first_line_not_reached() {
    const unsigned line = first_line_not_reached();
    if (line == 0) {
        return;
    }
    const std::string file = p_impl->m_coverage->path;
    const auto command = editor_command(file, line);
    if (!command.empty()) {
        QStringList arguments;
        for (std::size_t index = 1; index < command.size(); ++index) {
            arguments << from_utf8(command[index]);
        }
        if (QProcess::startDetached(from_utf8(command.front()), arguments)) {
            return;
        }
    }
    QDesktopServices::openUrl(QUrl::fromLocalFile(from_utf8(file)));
}

void cases_tab::make_html_report() {
    if (p_impl->m_genhtml != nullptr) {
        return;
    }
    if (!p_impl->m_coverage) {
        html_report_done({}, tr("No coverage: see the cases' results."));
        return;
    }
    if (!p_impl->m_report_folder) {
        p_impl->m_report_folder = std::make_unique<QTemporaryDir>();
    }
    const QString folder = p_impl->m_report_folder->path();
    const QString tracefile = folder + QStringLiteral("/lcov.info");
    QFile file(tracefile);
    const std::string text = coverage::lcov_tracefile({*p_impl->m_coverage});
    if (!p_impl->m_report_folder->isValid() || !file.open(QIODevice::WriteOnly) ||
        file.write(text.data(), static_cast<qsizetype>(text.size())) !=
            static_cast<qsizetype>(text.size())) {
        html_report_done({}, tr("The coverage report could not be written."));
        return;
    }
    file.close();
    QDir(folder + QStringLiteral("/html")).removeRecursively();
    auto* genhtml = new QProcess(this);
    p_impl->m_genhtml = genhtml;
    m_open_report->setEnabled(false);
    m_status->setText(tr("Making the HTML report…"));
    genhtml->setProcessChannelMode(QProcess::MergedChannels);
    connect(genhtml, &QProcess::errorOccurred, this, [this](QProcess::ProcessError a_error) {
        if (a_error == QProcess::FailedToStart) {
            html_report_done({}, tr("genhtml is missing: install the Debian package lcov."));
        }
    });
    connect(genhtml, &QProcess::finished, this,
            [this, genhtml, folder](int a_code, QProcess::ExitStatus a_status) {
                if (a_status == QProcess::NormalExit && a_code == 0) {
                    html_report_done(folder + QStringLiteral("/html/index.html"), {});
                } else {
                    html_report_done({}, tr("genhtml failed: %1")
                                             .arg(QString::fromLocal8Bit(genhtml->readAll())
                                                      .trimmed()));
                }
            });
    genhtml->start(QStringLiteral("genhtml"),
                   {QStringLiteral("--branch-coverage"), QStringLiteral("--quiet"),
                    QStringLiteral("--output-directory"), folder + QStringLiteral("/html"),
                    tracefile});
}

void cases_tab::html_report_done(const QString& a_index, const QString& a_status) {
    if (auto* genhtml = std::exchange(p_impl->m_genhtml, nullptr)) {
        genhtml->disconnect(this);
        genhtml->deleteLater();
    }
    m_status->setText(a_status);
    m_open_report->setEnabled(p_impl->m_coverage.has_value());
    const bool open = std::exchange(p_impl->m_open_when_made, false);
    emit html_report_made(a_index);
    if (open && !a_index.isEmpty()) {
        QDesktopServices::openUrl(QUrl::fromLocalFile(a_index));
    }
}

void cases_tab::open_html_report() {
    p_impl->m_open_when_made = true;
    make_html_report();
}

void cases_tab::show_detail() {
    auto* item = m_list->currentItem();
    if (item == nullptr || !p_impl->m_file) {
        return;
    }
    const auto index = static_cast<std::size_t>(m_list->indexOfTopLevelItem(item));
    const auto found = p_impl->m_outcomes.find(index);
    if (found == p_impl->m_outcomes.end()) {
        m_detail->clear();
        return;
    }
    const auto& outcome = found->second;
    QString text;
    if (outcome.check.passed) {
        text = tr("Passed.\n");
    }
    for (const auto& problem : outcome.check.problems) {
        text += from_utf8(problem) + QLatin1Char('\n');
    }
    if (!outcome.check.diff.empty()) {
        text += tr("\nCandidates (- expected, + actual):\n");
        for (const auto& line : outcome.check.diff) {
            text += from_utf8(line) + QLatin1Char('\n');
        }
    }
    if (!outcome.run.std_error_pane.empty() && !outcome.check.passed) {
        text += tr("\nStandard error:\n") + from_utf8(outcome.run.std_error_pane);
    }
    m_detail->setPlainText(text);
}

QString cases_tab::save_as_case(const QString& a_name, const cases::test_case& a_inputs,
                                const cases::case_run& a_run) {
    const auto plugin = p_impl->m_selected ? p_impl->m_selected() : std::nullopt;
    if (!plugin) {
        return tr("No plug-in selected.");
    }
    cases::test_case named = a_inputs;
    named.name = a_name.toStdString();
    const auto error =
        cases::append_case(cases::cases_path_for(path_of(*plugin)), std::move(named), a_run);
    reload();
    return from_utf8(error);
}

} // namespace qiro_plugin::debugger

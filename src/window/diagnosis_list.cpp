#include "window/diagnosis_list.hpp"

#include "core/editor_command.hpp"
#include "core/live_std_error.hpp"

#include <QAction>
#include <QActionGroup>
#include <QDesktopServices>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QProcess>
#include <QStyle>
#include <QTextCursor>
#include <QTreeWidget>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>

namespace qiro_plugin::debugger {

namespace {

constexpr int file_role = Qt::UserRole;
constexpr int line_role = Qt::UserRole + 1;

QIcon severity_icon(const QWidget& a_widget, diagnosis::severity a_level) {
    switch (a_level) {
    case diagnosis::severity::error:
        return a_widget.style()->standardIcon(QStyle::SP_MessageBoxCritical);
    case diagnosis::severity::warning:
        return a_widget.style()->standardIcon(QStyle::SP_MessageBoxWarning);
    case diagnosis::severity::note:
        break;
    }
    return a_widget.style()->standardIcon(QStyle::SP_MessageBoxInformation);
}

QString place_of(const diagnosis::finding& a_finding) {
    if (!a_finding.file) {
        return {};
    }
    QString place = QString::fromStdString(*a_finding.file).section(QLatin1Char('/'), -1);
    if (a_finding.line) {
        place += QLatin1Char(':') + QString::number(*a_finding.line);
        if (a_finding.column) {
            place += QLatin1Char(':') + QString::number(*a_finding.column);
        }
    }
    return place;
}

} // namespace

diagnosis_list::diagnosis_list(QWidget* a_parent) : QWidget(a_parent) {
    m_tree = new QTreeWidget(this);
    m_tree->setObjectName(QStringLiteral("diagnosis_tree"));
    m_tree->setColumnCount(2);
    m_tree->setHeaderLabels({tr("Diagnosis"), tr("Place")});
    m_tree->setRootIsDecorated(false);
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_tree->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    m_tree->setWordWrap(true);

    m_probe_menu = new QMenu(tr("Pro&be the Plug-in"), this);
    m_probe_menu->setObjectName(QStringLiteral("probe_policy"));
    m_probe_menu->setToolTipsVisible(true);
    m_probe_menu->menuAction()->setToolTip(tr("A probe runs the plug-in a second time to see what "
                                              "its entry returned and which candidates the "
                                              "bridge drops."));
    m_probe = new QActionGroup(this);
    // In the order of probe_policy.
    for (const QString& text :
         {tr("After a &Failed or Empty Run"), tr("After &Every Run"), tr("&Never")}) {
        QAction* choice = m_probe_menu->addAction(text);
        choice->setCheckable(true);
        m_probe->addAction(choice);
    }
    m_probe->actions().front()->setChecked(true);

    // What a slow plug-in reports while it runs, in the place of the list, which is empty
    // until the run ends; the panes get the whole of it at the end.
    m_live = new QPlainTextEdit(this);
    m_live->setObjectName(QStringLiteral("live_std_error"));
    m_live->setReadOnly(true);
    m_live->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_live->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_live->setMaximumBlockCount(static_cast<int>(live_std_error_lines));
    m_live->setVisible(false);
    m_live_label = new QLabel(tr("standard error so far, last lines"), this);
    m_live_label->setVisible(false);

    auto* label = new QLabel(tr("Dia&gnosis:"), this);
    label->setBuddy(m_tree);
    auto* heading = new QHBoxLayout;
    heading->addWidget(label);
    heading->addWidget(m_live_label, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addLayout(heading);
    layout->addWidget(m_tree, 1);
    layout->addWidget(m_live, 1);

    connect(m_probe, &QActionGroup::triggered, this,
            [this] { emit probe_policy_changed(policy()); });
    connect(m_tree, &QTreeWidget::itemDoubleClicked, this,
            [this](QTreeWidgetItem* a_item) { open_place(a_item); });
}

probe_policy diagnosis_list::policy() const {
    return static_cast<probe_policy>(m_probe->actions().indexOf(m_probe->checkedAction()));
}

void diagnosis_list::show_findings(const std::vector<diagnosis::finding>& a_findings) {
    m_tree->clear();
    for (const auto& finding : a_findings) {
        auto* item = new QTreeWidgetItem(m_tree);
        item->setIcon(0, severity_icon(*this, finding.level));
        item->setText(0, QString::fromStdString(finding.message));
        item->setText(1, place_of(finding));
        const QString hint = QString::fromStdString(finding.hint);
        item->setToolTip(0, hint);
        item->setToolTip(1, hint);
        if (finding.file) {
            item->setData(0, file_role, QString::fromStdString(*finding.file));
            item->setData(0, line_role, finding.line ? static_cast<int>(*finding.line) : 0);
        }
    }
    show_live_or_findings();
}

int diagnosis_list::height_for_rows(int a_rows) const {
    const int row = std::max(m_tree->fontMetrics().lineSpacing(),
                             style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, m_tree)) +
                    4;
    return layout()->itemAt(0)->sizeHint().height() + layout()->spacing() +
           m_tree->header()->sizeHint().height() + a_rows * row + 2 * m_tree->frameWidth();
}

void diagnosis_list::show_live_std_error(const QString& a_last_lines) {
    if (a_last_lines != m_live->toPlainText()) {
        m_live->setPlainText(a_last_lines);
        m_live->moveCursor(QTextCursor::End);
    }
    show_live_or_findings();
}

// The findings, once there are any, matter more than the last lines; the stopped run's
// finding tells what it wrote.
void diagnosis_list::show_live_or_findings() {
    const bool live = !m_live->document()->isEmpty() && m_tree->topLevelItemCount() == 0;
    m_live->setVisible(live);
    m_live_label->setVisible(live);
    m_tree->setVisible(!live);
}

void diagnosis_list::open_place(QTreeWidgetItem* a_item) {
    const QString file = a_item->data(0, file_role).toString();
    if (file.isEmpty()) {
        return;
    }
    const int line = a_item->data(0, line_role).toInt();
    const auto command = line > 0
                             ? editor_command(file.toStdString(), static_cast<std::uint32_t>(line))
                             : std::vector<std::string>{};
    if (!command.empty()) {
        QStringList arguments;
        for (std::size_t index = 1; index < command.size(); ++index) {
            arguments << QString::fromStdString(command[index]);
        }
        if (QProcess::startDetached(QString::fromStdString(command.front()), arguments)) {
            return;
        }
    }
    QDesktopServices::openUrl(QUrl::fromLocalFile(file));
}

} // namespace qiro_plugin::debugger

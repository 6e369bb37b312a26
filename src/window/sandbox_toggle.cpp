#include "window/sandbox_toggle.hpp"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QSettings>

namespace qiro_plugin::debugger {

namespace {

const QString settings_key = QStringLiteral("run/sandbox");

} // namespace

sandbox_toggle::sandbox_toggle(run_options& a_options, QWidget* a_parent)
    : QWidget(a_parent), m_options(a_options), m_sandbox(new QCheckBox(tr("Sandbo&x"), this)),
      m_no_network(new QCheckBox(tr("No networ&k"), this)) {
    m_sandbox->setToolTip(tr("Run plug-ins inside bubblewrap: the system and the plug-in's "
                             "folder read-only, the rest of your home folder out of reach."));
    m_no_network->setToolTip(tr("Cut the network inside the sandbox."));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_sandbox);
    layout->addWidget(m_no_network);

    const auto saved =
        utility::sandbox_mode_from_name(QSettings().value(settings_key).toString().toStdString());
    const auto mode = saved.value_or(utility::sandbox_mode::off);
    m_sandbox->setChecked(mode != utility::sandbox_mode::off);
    m_no_network->setChecked(mode == utility::sandbox_mode::nonet);
    apply();
    connect(m_sandbox, &QCheckBox::toggled, this, &sandbox_toggle::apply);
    connect(m_no_network, &QCheckBox::toggled, this, &sandbox_toggle::apply);
}

void sandbox_toggle::apply() {
    m_no_network->setEnabled(m_sandbox->isChecked());
    const auto mode = !m_sandbox->isChecked()     ? utility::sandbox_mode::off
                      : m_no_network->isChecked() ? utility::sandbox_mode::nonet
                                                  : utility::sandbox_mode::on;
    m_options.sandbox = mode;
    QSettings().setValue(settings_key, QString::fromLatin1(utility::sandbox_mode_name(mode)));
}

} // namespace qiro_plugin::debugger
